#include "cls_ClassRegistrar.h"

#include "Records.h"
#include "cls_ReadVisitor.h"
#include "cls_RecordException.h"

#include <gtest/gtest.h>

#include <string>

namespace {

template <unsigned int Id>
class Numbered {
public:
  static constexpr unsigned int TypeId() { return Id; }
  explicit Numbered(const cls_ReadVisitor&) {}
};

void* Same(void* object) {
  return object;
}

template <unsigned int Id>
cls_ClassMetadata& Add(cls_ClassRegistrar& registrar, const char* name) {
  return registrar.AddClassMD(new cls_TypeAdapter<Numbered<Id>>(name, 203, 1u));
}

} // namespace

TEST(ClsClassRegistrar, KeepsTheOrder) {
  cls_ClassRegistrar registrar;
  Add<2>(registrar, "second");
  Add<1>(registrar, "first");
  ASSERT_EQ(registrar.ClassCount(), 2u);
  EXPECT_STREQ(registrar.Class(0).Name(), "second");
  EXPECT_STREQ(registrar.Class(1).Name(), "first");
  EXPECT_EQ(registrar.FindClass(1), &registrar.Class(1));
  EXPECT_EQ(registrar.FindClass(9), nullptr);
}

TEST(ClsClassRegistrar, RegisteringAgainKeepsThePlaceAndForgetsTheDeclarations) {
  cls_ClassRegistrar registrar;
  Add<1>(registrar, "first").AddAttribute("a", cls_DoubleAttribute, 1, cls_NoCollection);
  Add<2>(registrar, "second");
  Add<1>(registrar, "again");
  ASSERT_EQ(registrar.ClassCount(), 2u);
  EXPECT_STREQ(registrar.Class(0).Name(), "again");
  EXPECT_TRUE(registrar.Class(0).Attributes().empty());
}

TEST(ClsClassRegistrar, ClassIsItselfAlsoUnregistered) {
  const cls_ClassRegistrar registrar;
  EXPECT_TRUE(registrar.InheritanceCheck(5, 5));
  EXPECT_FALSE(registrar.InheritanceCheck(5, 6));
}

TEST(ClsClassRegistrar, InheritanceGoesThroughEveryBase) {
  cls_ClassRegistrar registrar;
  Add<1>(registrar, "leaf").AddBase(2, &Same).AddBase(3, &Same);
  Add<3>(registrar, "middle").AddBase(4, &Same);
  EXPECT_TRUE(registrar.InheritanceCheck(1, 2));
  EXPECT_TRUE(registrar.InheritanceCheck(1, 4));
  EXPECT_FALSE(registrar.InheritanceCheck(4, 1));
  EXPECT_FALSE(registrar.InheritanceCheck(2, 3));
}

TEST(ClsClassRegistrar, BasesDeclaredInACircleEnd) {
  cls_ClassRegistrar registrar;
  Add<1>(registrar, "a").AddBase(2, &Same);
  Add<2>(registrar, "b").AddBase(1, &Same);
  EXPECT_TRUE(registrar.InheritanceCheck(1, 2));
  EXPECT_FALSE(registrar.InheritanceCheck(1, 3));
}

TEST(ClsClassRegistrar, CreatesRegisteredClassesThatDeriveFromTheWantedOne) {
  cls_ClassRegistrar registrar;
  Add<1>(registrar, "wanted");
  Add<2>(registrar, "another");
  const auto create = [&](unsigned int typeId) -> std::string {
    const gsl_RecordStore store = Recorded(typeId, cls_Uid(5, 6), [](const cls_WriteVisitor&) {});
    cls_Load load(store);
    try {
      delete static_cast<Numbered<1>*>(registrar.Create(cls_ReadVisitor(load, 0), 1));
    } catch (const cls_RecordException& e) {
      EXPECT_EQ(e.Uid(), cls_Uid(5, 6));
      return e.what();
    }
    return "created";
  };
  EXPECT_EQ(create(1), "created");
  EXPECT_EQ(create(2), "A record is of another class than is wanted");
  EXPECT_EQ(create(3), "A record is of an unknown class");
}
