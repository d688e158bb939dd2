#include "cls_ClassRegistrar.h"

#include "cls_MetadataRegistrar.h"
#include "cls_ReadVisitor.h"

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

void InitializeThird(cls_ClassRegistrar& registrar) {
  Add<3>(registrar, "third");
}

[[noreturn]] void Fail(cls_ClassRegistrar&) {
  throw 1;
}

} // namespace

TEST(ClsClassRegistrar, KeepsTheOrderAndTheDeclarations) {
  cls_ClassRegistrar registrar;
  Add<2>(registrar, "second")
      .AddDtor([](void*) {})
      .AddAttribute("a", cls_DoubleAttribute, 1, cls_NoCollection)
      .AddAttribute("b", cls_ObjectAttribute, 0x00230001u, cls_UnsignedList);
  Add<1>(registrar, "first");
  ASSERT_EQ(registrar.ClassCount(), 2u);
  const cls_ClassMetadata& second = registrar.Class(0);
  EXPECT_STREQ(second.Name(), "second");
  EXPECT_EQ(second.Adapter().Number(), 203);
  EXPECT_EQ(second.Adapter().Argument(), 1u);
  EXPECT_NE(second.Dtor(), nullptr);
  ASSERT_EQ(second.Attributes().size(), 2u);
  EXPECT_STREQ(second.Attributes()[1].name, "b");
  EXPECT_EQ(second.Attributes()[1].type, cls_ObjectAttribute);
  EXPECT_EQ(second.Attributes()[1].argument, 0x00230001u);
  EXPECT_EQ(second.Attributes()[1].collection, cls_UnsignedList);
  EXPECT_EQ(registrar.Class(1).Dtor(), nullptr);
  EXPECT_EQ(registrar.FindClass(1), &registrar.Class(1));
  EXPECT_EQ(registrar.FindClass(9), nullptr);
}

TEST(ClsClassRegistrar, RegisteringAgainKeepsThePlaceAndStartsAnew) {
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

TEST(ClsMetadataRegistrar, KeepsTheFlagsWithTheClass) {
  cls_MetadataRegistrar registrar;
  registrar.initClassMetadata(&InitializeThird, 7);
  EXPECT_EQ(registrar.ClassRegistrar().Class(0).Flags(), 7);
  EXPECT_THROW(registrar.initClassMetadata(&Fail, 5), int);
  Add<4>(registrar.ClassRegistrar(), "directly");
  EXPECT_EQ(registrar.ClassRegistrar().Class(1).Flags(), 0);
}

TEST(ClsMetadataRegistrar, TheProcessHasOne) {
  EXPECT_EQ(&omi_Singleton<cls_MetadataRegistrar>::Instance(),
            &omi_Singleton<cls_MetadataRegistrar>::Instance());
}
