#include "gsl_TransformIntObj.h"

#include "VirtualSlot.h"
#include "nex_CommandException.h"
#include "omu_PrimTuple.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace {

const cow_String kPath = "assembly.instances[0].transform";

/// Twelve different entries above a fourth row that no result may show.
gsl_Matrix Numbered() {
  gsl_Matrix m;
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c)
      m.m[r][c] = r == 3 ? -99.0 : 10.0 * (r + 1) + c;
  }
  m.isIdentity = -1;
  return m;
}

std::unique_ptr<omu_PrimTuple> MatrixOf(omu_InterfaceObj& object) {
  auto* const tuple = dynamic_cast<omu_PrimTuple*>(object.CallMethod("matrix", omu_PrimTuple()));
  EXPECT_NE(tuple, nullptr);
  return std::unique_ptr<omu_PrimTuple>(tuple);
}

std::string MessageOf(omu_InterfaceObj& object, const cow_String& method,
                      const omu_PrimTuple& arguments) {
  try {
    delete object.CallMethod(method, arguments);
  } catch (const nex_CommandException& e) {
    return e.what();
  }
  return "nothing was thrown";
}

TEST(GslTransformIntObj, MatrixOfTheIdentityHasUnitAxes) {
  gsl_TransformIntObj object(omu_Shortcut(kPath), gsl_Matrix(), "");
  const std::unique_ptr<omu_PrimTuple> tuple = MatrixOf(object);
  EXPECT_STREQ(tuple->AsString().CStr(),
               "(1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0)");
}

TEST(GslTransformIntObj, MatrixIsColumnByColumnWithoutTheFourthRow) {
  gsl_TransformIntObj object(omu_Shortcut(kPath), Numbered(), "");
  const std::unique_ptr<omu_PrimTuple> tuple = MatrixOf(object);
  ASSERT_EQ(tuple->Count(), 12u);
  EXPECT_EQ(tuple->Kind(), 40);
  const double expected[12] = {10.0, 20.0, 30.0, 11.0, 21.0, 31.0,
                               12.0, 22.0, 32.0, 13.0, 23.0, 33.0};
  for (std::size_t i = 0; i < 12; ++i)
    EXPECT_EQ(tuple->Number(i), expected[i]) << i;
}

TEST(GslTransformIntObj, MatrixIsReturnedAsItIsAndNotSnapped) {
  gsl_Matrix nearlyIdentity;
  nearlyIdentity.SetTranslation({1e-6, 0.0, 0.0});
  gsl_TransformIntObj object(omu_Shortcut(kPath), nearlyIdentity, "");
  EXPECT_EQ(MatrixOf(object)->Number(9), 1e-6);
}

TEST(GslTransformIntObj, HoldsACopyOfTheMatrixAndTheText) {
  gsl_Matrix m = Numbered();
  const cow_String text("left wheel");
  const gsl_TransformIntObj object(omu_Shortcut(kPath), m, text);
  m.FillIdentity();
  EXPECT_EQ(object.GetMatrix().m[0][1], 11.0);
  EXPECT_TRUE(object.GetText().SharesWith(text));
}

TEST(GslTransformIntObj, EveryCallReturnsATupleOfItsOwn) {
  gsl_TransformIntObj object(omu_Shortcut(kPath), Numbered(), "");
  const std::unique_ptr<omu_PrimTuple> first = MatrixOf(object);
  const std::unique_ptr<omu_PrimTuple> second = MatrixOf(object);
  EXPECT_NE(first.get(), second.get());
  EXPECT_TRUE(*first == *second);
}

TEST(GslTransformIntObj, CopyHasTypeMatrixTextAndResults) {
  const omu_Shortcut shortcut(kPath);
  const cow_String text("left wheel");
  gsl_TransformIntObj object(shortcut, Numbered(), text);
  const omu_InterfaceObj& base = object;
  const std::unique_ptr<omu_InterfaceObj> copy(base.Copy());
  auto* const derived = dynamic_cast<gsl_TransformIntObj*>(copy.get());
  ASSERT_NE(derived, nullptr);
  EXPECT_EQ(copy->TypeString(), cow_String("Transform"));
  EXPECT_TRUE(derived->GetMatrix() == object.GetMatrix());
  EXPECT_EQ(derived->GetMatrix().m[3][3], -99.0);
  EXPECT_TRUE(derived->GetText().SharesWith(text));
  EXPECT_TRUE(derived->BaseShortcut().SharesWith(shortcut));
  EXPECT_TRUE(*MatrixOf(*copy) == *MatrixOf(object));
}

TEST(GslTransformIntObj, CopiesShareTheShortcutByCount) {
  const omu_Shortcut shortcut(kPath);
  EXPECT_EQ(shortcut.Owners(), 1u);
  const gsl_TransformIntObj object(shortcut, gsl_Matrix(), "");
  EXPECT_EQ(shortcut.Owners(), 2u);
  {
    const gsl_TransformIntObj copy(object);
    const std::unique_ptr<gsl_TransformIntObj> another(object.Copy());
    EXPECT_EQ(shortcut.Owners(), 4u);
  }
  EXPECT_EQ(shortcut.Owners(), 2u);
}

TEST(GslTransformIntObj, AssignmentTakesMatrixTextAndShortcut) {
  const gsl_TransformIntObj object(omu_Shortcut(kPath), Numbered(), "left wheel");
  gsl_TransformIntObj other(omu_Shortcut(), gsl_Matrix(), "");
  other = object;
  EXPECT_EQ(other.GetMatrix().m[0][1], 11.0);
  EXPECT_TRUE(other.GetText().SharesWith(object.GetText()));
  EXPECT_TRUE(other == object);
}

TEST(GslTransformIntObj, ScriptHostFindsTheTypeAndItsMethodsByName) {
  const gsl_TransformIntObj object(omu_Shortcut(kPath), gsl_Matrix(), "");
  const omu_TypeDescription* const type = omu_TypeDescription::Find("Transform");
  ASSERT_NE(type, nullptr);
  EXPECT_STREQ(type->Name(), gsl_TransformIntObj::TypeName());
  ASSERT_EQ(type->MethodNames().size(), 1u);
  EXPECT_EQ(type->MethodNames()[0], cow_String("matrix"));
  EXPECT_TRUE(type->MemberNames().empty());
  EXPECT_EQ(object.TypeString(), cow_String("Transform"));
  EXPECT_TRUE(object.IsMethod("matrix"));
  EXPECT_FALSE(object.IsMethod("Matrix"));
  EXPECT_EQ(object.MethodList().size(), 1u);
  EXPECT_TRUE(object.MemberList().empty());
}

TEST(GslTransformIntObj, UnknownMethodIsAClearError) {
  gsl_TransformIntObj object(omu_Shortcut(kPath), gsl_Matrix(), "");
  EXPECT_EQ(MessageOf(object, "inverse", omu_PrimTuple()),
            "'Transform' object has no method 'inverse'");
}

TEST(GslTransformIntObj, ArgumentsAreAClearError) {
  gsl_TransformIntObj object(omu_Shortcut(kPath), gsl_Matrix(), "");
  omu_PrimTuple arguments;
  arguments.Put(1.0);
  EXPECT_EQ(MessageOf(object, "matrix", arguments),
            "Transform.matrix takes no arguments (1 given)");
}

TEST(GslTransformIntObj, StaleObjectIsAClearError) {
  gsl_TransformIntObj object(omu_Shortcut(kPath), gsl_Matrix(), "");
  object.SetStale();
  EXPECT_EQ(MessageOf(object, "matrix", omu_PrimTuple()),
            "<Transform object at assembly.instances[0].transform> is stale: what it stood for is "
            "gone");
}

TEST(GslTransformIntObj, UnknownMemberIsAClearError) {
  gsl_TransformIntObj object(omu_Shortcut(kPath), gsl_Matrix(), "");
  EXPECT_THROW(static_cast<void>(object.GetMember("origin")), nex_CommandException);
  EXPECT_THROW(object.SetMember("origin", omu_PrimTuple()), nex_CommandException);
  EXPECT_THROW(object.DeleteMember("origin"), nex_CommandException);
}

/// A class with the slots of the base class and another copy operation.
class PlainObject : public omu_InterfaceObj {
public:
  using omu_InterfaceObj::omu_InterfaceObj;
  PlainObject* Copy() const override { return new PlainObject(*this); }
};

const void* OperationInSlot(const omu_InterfaceObj& object, int slot) {
  const void* const* table = nullptr;
  std::memcpy(&table, static_cast<const void*>(&object), sizeof table);
  return table[slot];
}

TEST(GslTransformIntObj, OverridesTheDestructorAndTheCopySlotAlone) {
  const gsl_TransformIntObj object(omu_Shortcut(kPath), gsl_Matrix(), "");
  const PlainObject plain{omu_Shortcut(kPath)};
  const int copySlot = VirtualSlot(&omu_InterfaceObj::Copy);
  // The destructor takes slots 0 and 1.
  for (int slot = 2; slot <= VirtualSlot(&omu_InterfaceObj::ComparePath); ++slot) {
    if (slot == copySlot) continue;
    EXPECT_EQ(OperationInSlot(object, slot), OperationInSlot(plain, slot)) << slot;
  }
  EXPECT_NE(OperationInSlot(object, copySlot), OperationInSlot(plain, copySlot));
}

} // namespace
