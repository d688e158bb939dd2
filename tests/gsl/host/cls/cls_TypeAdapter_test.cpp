#include "cls_TypeAdapter.h"

#include "HostObjects.h"
#include "Records.h"

#include <gtest/gtest.h>

namespace {

/// A class whose constructor takes owners, like the arrays of objects.
class Owned {
public:
  static constexpr unsigned int TypeId() { return 0x7F100003u; }

  Owned(const cls_ReadVisitor& visitor, const cls_Uid* first, const cls_Uid* second)
      : uid(visitor.GetUid()), hasOwners(first != nullptr || second != nullptr) {}

  cls_Uid uid;
  bool hasOwners;
};

} // namespace

TEST(ClsTypeAdapter, KeepsTheNameAndNumbersOfTheClass) {
  const cls_TypeAdapter<TestNode> adapter("a name", 203, 7u);
  EXPECT_STREQ(adapter.Name(), "a name");
  EXPECT_EQ(adapter.Number(), 203);
  EXPECT_EQ(adapter.Argument(), 7u);
  EXPECT_EQ(adapter.TypeId(), TestNode::kTypeId);
}

TEST(ClsTypeAdapter, CreatesAnObjectFromItsRecord) {
  const TestNode node(42);
  const gsl_RecordStore store = Written(node);
  cls_Load load(store);
  const cls_TypeAdapter<TestNode> adapter("TestNode", 1, 1u);
  const std::unique_ptr<TestNode> read(
      static_cast<TestNode*>(adapter.Create(cls_ReadVisitor(load, 0))));
  EXPECT_EQ(read->value, 42);
  EXPECT_EQ(read->uid, node.uid);
}

TEST(ClsTypeAdapter, ObjectThatTakesOwnersReceivesNullOwners) {
  const gsl_RecordStore store =
      Recorded(Owned::TypeId(), cls_Uid(3, 4), [](const cls_WriteVisitor&) {});
  cls_Load load(store);
  const cls_TypeAdapter<Owned> adapter("Owned", 1, 1u);
  const std::unique_ptr<Owned> read(static_cast<Owned*>(adapter.Create(cls_ReadVisitor(load, 0))));
  EXPECT_EQ(read->uid, cls_Uid(3, 4));
  EXPECT_FALSE(read->hasOwners);
}
