#include "cls_WriteVisitor.h"

#include "HostObjects.h"
#include "Records.h"
#include "cls_ListReader.h"
#include "cls_ListWriter.h"
#include "cls_MetadataRegistrar.h"
#include "cls_RecordException.h"
#include "gsl_RecordError.h"
#include "gsl_RecordWriter.h"

#include <gtest/gtest.h>

namespace {

const cls_FieldHandle kFirst(0, "first");
const cls_FieldHandle kSecond(1, "second");

TestHolder<TestNode> Held(int value) {
  return TestHolder<TestNode>::Adopt(new TestNode(value));
}

/// Writes both holders as objects of one record.
void WritePair(const cls_WriteVisitor& to, const TestHolder<TestNode>& a,
               const TestHolder<TestNode>& b) {
  to.StartWrite(1, cls_Uid());
  a.Get()->DBWrite(cls_WriteVisitor(to, kFirst, a));
  b.Get()->DBWrite(cls_WriteVisitor(to, kSecond, b));
}

/// Writes to a store. The test sets how many attempts to end a root fail.
class FailingWriter final : public gsl_RecordWriter {
public:
  gsl_RecordIndex AddRoot(std::uint32_t typeId, const gsl_RecordIdentity& identity) override {
    if (isOpen) Finish();
    isOpen = true;
    return store.AddRoot(typeId, identity);
  }
  void NameRoot(std::string_view name) override { store.NameRoot(name); }
  void NameClass(std::uint32_t typeId, std::string_view name) override {
    store.NameClass(typeId, name);
  }
  gsl_RecordIndex AddRecord(gsl_RecordIndex owner, const gsl_RecordPlace& place, bool isShared,
                            std::uint32_t typeId, const gsl_RecordIdentity& identity) override {
    return store.AddRecord(owner, place, isShared, typeId, identity);
  }
  void AddInteger(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                  std::int32_t value) override {
    store.AddInteger(owner, place, value);
  }
  void AddDouble(gsl_RecordIndex owner, const gsl_RecordPlace& place, double value) override {
    store.AddDouble(owner, place, value);
  }
  void AddBoolean(gsl_RecordIndex owner, const gsl_RecordPlace& place, bool value) override {
    store.AddBoolean(owner, place, value);
  }
  void AddString(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                 std::string_view value) override {
    store.AddString(owner, place, value);
  }
  void AddReference(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                    gsl_RecordIndex target) override {
    store.AddReference(owner, place, target);
  }
  void AddNull(gsl_RecordIndex owner, const gsl_RecordPlace& place, std::uint32_t typeId) override {
    store.AddNull(owner, place, typeId);
  }
  void SetCollection(gsl_RecordIndex record, gsl_RecordCollection collection) override {
    store.SetCollection(record, collection);
  }
  void SetUnsigneds(gsl_RecordIndex record, const std::uint32_t* values,
                    std::size_t count) override {
    store.SetUnsigneds(record, values, count);
  }
  void SetDoubles(gsl_RecordIndex record, const double* values, std::size_t rows,
                  std::size_t columns) override {
    store.SetDoubles(record, values, rows, columns);
  }
  void Finish() override {
    if (failures > 0) {
      --failures;
      throw gsl_RecordError("full");
    }
    store.Finish();
    isOpen = false;
  }
  void TakeBack(gsl_RecordIndex root) override {
    store.TakeBack(root);
    isOpen = false;
  }

  gsl_RecordStore store;
  int failures = 0;

private:
  bool isOpen = false;
};

} // namespace

TEST(ClsWriteVisitor, RootThatCannotEndStaysOpenForTheNextRoot) {
  FailingWriter writer;
  cls_Save save(writer);
  writer.failures = 1;
  TestNode(1).DBWrite(cls_WriteVisitor(save));
  EXPECT_EQ(writer.failures, 0);
  TestNode(2).DBWrite(cls_WriteVisitor(save));
  EXPECT_EQ(writer.store.RootCount(), 2u);
  EXPECT_EQ(ReadBack<TestNode>(writer.store, 0).value, 1);
  EXPECT_EQ(ReadBack<TestNode>(writer.store, 1).value, 2);
}

TEST(ClsWriteVisitor, RootThatCannotEndTwiceIsReportedAndTakenBack) {
  const TestHolder<TestNode> shared = Held(4);
  FailingWriter writer;
  cls_Save save(writer);
  TestNode(1).DBWrite(cls_WriteVisitor(save));
  writer.failures = 2;
  WritePair(cls_WriteVisitor(save), shared, shared);
  EXPECT_THROW(TestNode(2).DBWrite(cls_WriteVisitor(save)), gsl_RecordError);
  EXPECT_EQ(writer.store.RootCount(), 1u);
  // The next root differs from the roots that failed, and its objects are new.
  WritePair(cls_WriteVisitor(save), shared, shared);
  EXPECT_EQ(writer.store.RootCount(), 2u);
  EXPECT_EQ(TextOf(writer.store).find("reference"), TextOf(writer.store).rfind("reference"));
}

TEST(ClsWriteVisitor, NextRootOfAVisitorTakesBackTheOneThatCannotEnd) {
  FailingWriter writer;
  cls_Save save(writer);
  TestNode(1).DBWrite(cls_WriteVisitor(save));
  try {
    const cls_WriteVisitor roots(save);
    TestNode(2).DBWrite(roots);
    writer.failures = 1;
    TestNode(3).DBWrite(roots);
    ADD_FAILURE() << "accepted";
  } catch (const gsl_RecordError&) {
  }
  EXPECT_EQ(writer.failures, 0);
  EXPECT_EQ(writer.store.RootCount(), 1u);
  EXPECT_EQ(ReadBack<TestNode>(writer.store, 0).value, 1);
}

TEST(ClsWriteVisitor, SharedObjectIsStoredOnce) {
  const TestHolder<TestNode> shared = Held(4);
  const TestHolder<TestNode> same(shared);
  gsl_RecordStore store;
  {
    cls_Save save(store);
    WritePair(cls_WriteVisitor(save), shared, same);
  }
  EXPECT_EQ(TextOf(store), "0x00000001\n"
                           "  0 first object 0x7F100001\n"
                           "    -1 value integer 4\n"
                           "    -1 next null 0x7F100001\n"
                           "  1 second reference 0x7F100001\n");
}

TEST(ClsWriteVisitor, StartWriteDeclinesTheSharedObjectOfTheSameSave) {
  const TestHolder<TestNode> shared = Held(4);
  gsl_RecordStore store;
  cls_Save save(store);
  const cls_WriteVisitor root(save);
  EXPECT_NE(root.StartWrite(1, cls_Uid()), 0);
  const cls_WriteVisitor first(root, kFirst, shared);
  EXPECT_NE(first.StartWrite(TestNode::kTypeId, shared.Get()->uid), 0);
  const cls_WriteVisitor second(root, kSecond, shared);
  EXPECT_EQ(second.StartWrite(TestNode::kTypeId, shared.Get()->uid), 0);
}

TEST(ClsWriteVisitor, AnotherSaveWritesTheObjectAgain) {
  const TestHolder<TestNode> shared = Held(4);
  gsl_RecordStore store;
  for (int i = 0; i < 2; ++i) {
    cls_Save save(store);
    const cls_WriteVisitor root(save);
    root.StartWrite(1, cls_Uid());
    EXPECT_NE(cls_WriteVisitor(root, kFirst, shared).StartWrite(2, shared.Get()->uid), 0);
  }
}

TEST(ClsWriteVisitor, TwoObjectsThatCarryOneUidAreBothStored) {
  TestHolder<TestNode> a = Held(1);
  TestHolder<TestNode> b = Held(2);
  b.Edit()->uid = a.Get()->uid;
  gsl_RecordStore store;
  cls_Save save(store);
  WritePair(cls_WriteVisitor(save), a, b);
  EXPECT_EQ(TextOf(store), "0x00000001\n"
                           "  0 first object 0x7F100001\n"
                           "    -1 value integer 1\n"
                           "    -1 next null 0x7F100001\n"
                           "  1 second object 0x7F100001\n"
                           "    -1 value integer 2\n"
                           "    -1 next null 0x7F100001\n");
}

TEST(ClsWriteVisitor, EmbeddedRecordsOfOneUidAreNeverDeclined) {
  const TestNode node(3);
  gsl_RecordStore store;
  cls_Save save(store);
  const cls_WriteVisitor root(save);
  root.StartWrite(1, node.uid);
  node.DBWrite(cls_WriteVisitor(root, kFirst));
  node.DBWrite(cls_WriteVisitor(root, kSecond));
  TestNode changed(node);
  changed.value = 4;
  changed.DBWrite(cls_WriteVisitor(root, {2, "third"}));
  EXPECT_EQ(TextOf(store), "0x00000001\n"
                           "  0 first record 0x7F100001\n"
                           "    -1 value integer 3\n"
                           "    -1 next null 0x7F100001\n"
                           "  1 second record 0x7F100001\n"
                           "    -1 value integer 3\n"
                           "    -1 next null 0x7F100001\n"
                           "  2 third record 0x7F100001\n"
                           "    -1 value integer 4\n"
                           "    -1 next null 0x7F100001\n");
  // Equal records are stored once, all the same.
  EXPECT_EQ(store.RecordCount(), 3u);
}

TEST(ClsWriteVisitor, RootHasTheNameThatItIsWrittenUnder) {
  gsl_RecordStore store;
  cls_Save save(store);
  TestNode(1).DBWrite(cls_WriteVisitor(save, "one"));
  TestNode(2).DBWrite(cls_WriteVisitor(save));
  EXPECT_THROW(TestNode(3).DBWrite(cls_WriteVisitor(save, "one")), gsl_RecordError);
  EXPECT_THROW(cls_WriteVisitor(save, ""), cls_RecordException);
  TestNode(4).DBWrite(cls_WriteVisitor(save, "four"));
  EXPECT_EQ(store.RootCount(), 3u);
  cls_Load load(store);
  EXPECT_EQ(TestNode(cls_ReadVisitor(load, "one")).value, 1);
  EXPECT_EQ(TestNode(cls_ReadVisitor(load, "four")).value, 4);
  EXPECT_EQ(TestNode(cls_ReadVisitor(load, 1)).value, 2);
  EXPECT_THROW(cls_ReadVisitor(load, "none"), cls_RecordException);
}

TEST(ClsWriteVisitor, RecordsNameTheClassesThatTheRegistrarKnows) {
  omi_Singleton<cls_MetadataRegistrar>::Instance().initClassMetadata(
      &TestDerivedNode::InitializeMetadata, 3);
  gsl_RecordStore store;
  cls_Save save(store);
  TestDerivedNode(1).DBWrite(cls_WriteVisitor(save));
  TestNode(1).DBWrite(cls_WriteVisitor(save));
  EXPECT_EQ(store.ClassName(TestDerivedNode::kTypeId), "TestDerivedNode");
  EXPECT_EQ(store.ClassName(TestNode::kTypeId), "");
}

TEST(ClsWriteVisitor, SaveKeepsSharedObjectsAliveUntilItEnds) {
  TestHolder<TestNode> shared = Held(4);
  gsl_RecordStore store;
  {
    cls_Save save(store);
    WritePair(cls_WriteVisitor(save), shared, shared);
    EXPECT_EQ(shared.Owners(), 2);
  }
  EXPECT_EQ(shared.Owners(), 1);
}

TEST(ClsWriteVisitor, ObjectAtTheAddressOfAnotherIsStoredToo) {
  gsl_RecordStore store;
  cls_Save save(store);
  const cls_WriteVisitor root(save);
  root.StartWrite(1, cls_Uid());
  const cls_Uid uid(1, 1);
  for (int i = 0; i < 100; ++i) {
    TestHolder<TestNode> temporary = Held(i);
    temporary.Edit()->uid = uid;
    temporary.Get()->DBWrite(cls_WriteVisitor(root, kFirst, temporary));
  }
  EXPECT_EQ(store.RecordCount(), 101u);
}

TEST(ClsWriteVisitor, RecordMustBeStartedFirst) {
  gsl_RecordStore store;
  cls_Save save(store);
  const cls_WriteVisitor root(save);
  EXPECT_THROW(root.WriteInteger(kFirst, 1), cls_RecordException);
  EXPECT_THROW(root.WriteDouble(kFirst, 1.0), cls_RecordException);
  EXPECT_THROW(root.WriteBoolean(kFirst, true), cls_RecordException);
  EXPECT_THROW(root.WriteString(kFirst, "a"), cls_RecordException);
  EXPECT_THROW(root.WriteNullObject(kFirst, 1), cls_RecordException);
  EXPECT_THROW(root.CheckCollectionType(1), cls_RecordException);
  EXPECT_THROW(cls_WriteVisitor(root, kFirst), cls_RecordException);
  EXPECT_EQ(store.RecordCount(), 0u);
}

TEST(ClsWriteVisitor, PlaceTakesOneRecord) {
  gsl_RecordStore store;
  cls_Save save(store);
  const cls_WriteVisitor root(save);
  root.StartWrite(1, cls_Uid());
  const cls_WriteVisitor child(root, kFirst);
  EXPECT_NE(child.StartWrite(2, cls_Uid()), 0);
  EXPECT_THROW(child.StartWrite(2, cls_Uid()), cls_RecordException);
}

TEST(ClsWriteVisitor, RootVisitorWritesSeveralRoots) {
  gsl_RecordStore store;
  cls_Save save(store);
  const cls_WriteVisitor root(save);
  for (int i = 0; i < 3; ++i)
    TestNode(i).DBWrite(root);
  ASSERT_EQ(store.RootCount(), 3u);
  EXPECT_EQ(ReadBack<TestNode>(store, 2).value, 2);
}

TEST(ClsWriteVisitor, NestingAtTheLimitIsWrittenAndReadAndNoDeeper) {
  for (const unsigned int depth : {cls_WriteVisitor::kMostNesting, 1001u}) {
    TestHolder<TestNode> chain = Held(0);
    for (unsigned int i = 1; i < depth; ++i) {
      TestHolder<TestNode> outer = Held(static_cast<int>(i));
      outer.Edit()->next = chain;
      chain = outer;
    }
    TestNode top(-1);
    top.next = chain;
    gsl_RecordStore store;
    cls_Save save(store);
    if (depth == cls_WriteVisitor::kMostNesting) {
      top.DBWrite(cls_WriteVisitor(save));
      EXPECT_EQ(ReadBack<TestNode>(store).next.Get()->value, static_cast<int>(depth) - 1);
    } else {
      EXPECT_THROW(top.DBWrite(cls_WriteVisitor(save)), cls_RecordException);
      EXPECT_EQ(store.RecordCount(), 0u);
    }
  }
}

TEST(ClsWriteVisitor, FailedRootIsTakenBackWithItsSharedObjects) {
  const TestHolder<TestNode> shared = Held(4);
  gsl_RecordStore store;
  cls_Save save(store);
  TestNode(7).DBWrite(cls_WriteVisitor(save));
  const std::vector<unsigned char> before = store.ToBytes();
  try {
    const cls_WriteVisitor root(save);
    WritePair(root, shared, shared);
    root.WriteString({-1, "text"}, "a");
    throw cls_RecordException("the host gives up");
  } catch (const cls_RecordException&) {
  }
  EXPECT_EQ(store.ToBytes(), before);
  // A record that was taken back counts as not written.
  WritePair(cls_WriteVisitor(save), shared, shared);
  EXPECT_EQ(ReadBack<TestNode>(store).value, 7);
  EXPECT_EQ(store.RootCount(), 2u);
  EXPECT_EQ(store.RecordCount(), 3u);
}

TEST(ClsWriteVisitor, FailedRootsLeaveNoMemoryAllocated) {
  gsl_RecordStore store;
  cls_Save save(store);
  const std::vector<unsigned int> unsigneds(100, 1);
  const std::vector<double> doubles(100, 1.0);
  std::size_t afterOne = 0;
  for (int i = 0; i < 1000; ++i) {
    try {
      const cls_WriteVisitor root(save);
      root.StartWrite(1, cls_Uid());
      root.WriteString(kFirst, std::string(1000, 'a').c_str());
      for (const int collection : {57, 82}) {
        const cls_WriteVisitor child(root, kSecond);
        child.StartWrite(cls_kCollectionTypeId, cls_Uid());
        if (collection == 57) child.WriteUnsigneds(unsigneds.data(), 100);
        if (collection == 82) child.WriteDoubles(doubles.data(), 10, 10);
      }
      throw cls_RecordException("the host gives up");
    } catch (const cls_RecordException&) {
    }
    if (i == 0) afterOne = store.MemoryUse();
  }
  EXPECT_EQ(store.MemoryUse(), afterOne);
}

TEST(ClsWriteVisitor, SharedObjectIsIdentifiedByAddressTypeAndUid) {
  const TestHolder<TestNode> shared = Held(4);
  const cls_Uid uid = shared.Get()->uid;
  gsl_RecordStore store;
  cls_Save save(store);
  const cls_WriteVisitor root(save);
  root.StartWrite(1, cls_Uid());
  EXPECT_NE(cls_WriteVisitor(root, kFirst, shared).StartWrite(2, uid), 0);
  EXPECT_NE(cls_WriteVisitor(root, kFirst, shared).StartWrite(3, uid), 0);
  EXPECT_NE(cls_WriteVisitor(root, kFirst, shared).StartWrite(2, cls_Uid(1, 1)), 0);
  EXPECT_EQ(cls_WriteVisitor(root, kFirst, shared).StartWrite(2, uid), 0);
  EXPECT_EQ(cls_WriteVisitor(root, kFirst, shared).StartWrite(3, uid), 0);
}

TEST(ClsWriteVisitor, RecordIsOfOneCollectionType) {
  gsl_RecordStore store;
  cls_Save save(store);
  const cls_WriteVisitor root(save);
  root.StartWrite(cls_kCollectionTypeId, cls_Uid());
  EXPECT_THROW(root.CheckCollectionType(2), cls_RecordException);
  root.CheckCollectionType(57);
  root.CheckCollectionType(57);
  EXPECT_THROW(root.CheckCollectionType(82), cls_RecordException);
  const unsigned int values[] = {1, 2};
  root.WriteUnsigneds(values, 2);
  EXPECT_THROW(root.WriteUnsigneds(values, 2), cls_RecordException);
  EXPECT_THROW(root.WriteDoubles(nullptr, 0, 0), cls_RecordException);
}

TEST(ClsListWriter, KeepsTheOrderAndTheNullEntries) {
  gsl_RecordStore store;
  {
    cls_Save save(store);
    const cls_WriteVisitor root(save);
    root.StartWrite(cls_kCollectionTypeId, cls_Uid());
    std::unique_ptr<cls_ListWriter> list(root.GetListWriter());
    cls_WriteRequestListObj first(*list);
    TestNode(1).DBWrite(cls_WriteVisitor(first));
    list->WriteNull(TestNode::kTypeId);
    cls_WriteRequestListObj third(*list);
    TestNode(3).DBWrite(cls_WriteVisitor(third));
    EXPECT_TRUE(list->Finish());
  }
  EXPECT_EQ(TextOf(store), "0x00230001 of 1\n"
                           "  record 0x7F100001\n"
                           "    -1 value integer 1\n"
                           "    -1 next null 0x7F100001\n"
                           "  null 0x7F100001\n"
                           "  record 0x7F100001\n"
                           "    -1 value integer 3\n"
                           "    -1 next null 0x7F100001\n");
  cls_Load load(store);
  const cls_ReadVisitor root(load, 0);
  std::unique_ptr<cls_ListReader> list(root.GetListReader());
  std::string values;
  while (list->HasNext()) {
    const std::unique_ptr<TestNode> node(list->ReadObject<TestNode>());
    values += node == nullptr ? " null" : " " + std::to_string(node->value);
  }
  EXPECT_EQ(values, " 1 null 3");
  EXPECT_THROW(static_cast<void>(list->ReadObject<TestNode>()), cls_RecordException);
}
