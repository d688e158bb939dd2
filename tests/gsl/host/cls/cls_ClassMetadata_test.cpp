#include "cls_ClassMetadata.h"

#include "HostObjects.h"

#include <gtest/gtest.h>

namespace {

void Destroy(void*) {}

void* Same(void* object) {
  return object;
}

cls_ClassMetadata& AddNode(cls_ClassRegistrar& registrar) {
  return registrar.AddClassMD(new cls_TypeAdapter<TestNode>("TestNode", 203, 1u));
}

} // namespace

TEST(ClsClassMetadata, NewClassHasDeclaredNothing) {
  cls_ClassRegistrar registrar;
  const cls_ClassMetadata& metadata = AddNode(registrar);
  EXPECT_EQ(metadata.TypeId(), TestNode::kTypeId);
  EXPECT_STREQ(metadata.Name(), "TestNode");
  EXPECT_EQ(metadata.Dtor(), nullptr);
  EXPECT_TRUE(metadata.Attributes().empty());
  EXPECT_TRUE(metadata.Bases().empty());
  EXPECT_EQ(metadata.Flags(), 0);
}

TEST(ClsClassMetadata, DeclarationsAreChainedAndKeepTheirOrder) {
  cls_ClassRegistrar registrar;
  cls_ClassMetadata& metadata = AddNode(registrar);
  metadata.AddDtor(&Destroy)
      .AddAttribute("a", cls_DoubleAttribute, 1, cls_NoCollection)
      .AddBase(5, &Same)
      .AddAttribute("b", cls_ObjectAttribute, 0x00230001u, cls_UnsignedList);
  EXPECT_EQ(metadata.Dtor(), &Destroy);
  ASSERT_EQ(metadata.Attributes().size(), 2u);
  EXPECT_STREQ(metadata.Attributes()[0].name, "a");
  EXPECT_EQ(metadata.Attributes()[0].type, cls_DoubleAttribute);
  EXPECT_STREQ(metadata.Attributes()[1].name, "b");
  EXPECT_EQ(metadata.Attributes()[1].type, cls_ObjectAttribute);
  EXPECT_EQ(metadata.Attributes()[1].argument, 0x00230001u);
  EXPECT_EQ(metadata.Attributes()[1].collection, cls_UnsignedList);
  ASSERT_EQ(metadata.Bases().size(), 1u);
  EXPECT_EQ(metadata.Bases()[0].typeId, 5u);
  EXPECT_EQ(metadata.Bases()[0].convert, &Same);
}
