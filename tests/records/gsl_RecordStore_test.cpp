#include "gsl_RecordStore.h"

#include "OneFailingAllocation.h"
#include "Records.h"
#include "gsl_RecordError.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <new>
#include <string>
#include <utility>

namespace {

using Kind = gsl_RecordKind;

std::vector<gsl_RecordField> FieldsOf(const gsl_RecordReader& reader, gsl_RecordIndex record) {
  std::vector<gsl_RecordField> fields;
  for (const gsl_RecordField& field : reader.Fields(record))
    fields.push_back(field);
  return fields;
}

/// A store with one root that holds a number, a text and both kinds of array.
gsl_RecordIndex Fill(gsl_RecordWriter& to, int number) {
  const gsl_RecordIndex root = to.AddRoot(1, {2, 3});
  to.AddInteger(root, {"number", 0}, number);
  to.AddString(root, {"text", 1}, "some text");
  to.SetUnsigneds(to.AddRecord(root, {"list", 2}, false, 4, {}),
                  std::vector<std::uint32_t>{1, 2}.data(), 2);
  to.SetDoubles(to.AddRecord(root, {"matrix", 3}, true, 5, {}),
                std::vector<double>{0.5, 1.5}.data(), 1, 2);
  return root;
}

} // namespace

TEST(GslRecordStore, EmptyStoreHasNothing) {
  const gsl_RecordStore store;
  EXPECT_EQ(store.RootCount(), 0u);
  EXPECT_EQ(store.RecordCount(), 0u);
}

TEST(GslRecordStore, EveryKindOfFieldComesBackInWriteOrder) {
  gsl_RecordStore store;
  const gsl_RecordIndex root = store.AddRoot(0x7F000001u, {5, 6});
  store.AddInteger(root, {"i", 7}, std::numeric_limits<int>::min());
  store.AddDouble(root, {"d", -1}, -0.0);
  store.AddBoolean(root, {"b", 0}, true);
  store.AddString(root, {"s", 0}, std::string_view("a\0b", 3));
  const gsl_RecordIndex shared = store.AddRecord(root, {"shared", 0}, true, 10, {3, 4});
  const gsl_RecordIndex own = store.AddRecord(root, {"own", 0}, false, 9, {1, 2});
  store.AddReference(own, {"r", 0}, shared);
  store.AddNull(root, {"n", 0}, 0xFFFFFFFFu);

  EXPECT_EQ(store.TypeId(store.Root(0)), 0x7F000001u);
  const std::vector<gsl_RecordField> fields = FieldsOf(store, store.Root(0));
  ASSERT_EQ(fields.size(), 7u);
  EXPECT_EQ(fields[0].name, "i");
  EXPECT_EQ(fields[0].index, 7);
  EXPECT_EQ(fields[0].integer, std::numeric_limits<int>::min());
  EXPECT_EQ(fields[1].kind, Kind::Double);
  EXPECT_TRUE(std::signbit(fields[1].real));
  EXPECT_TRUE(fields[2].boolean);
  EXPECT_EQ(fields[3].text, std::string_view("a\0b", 3));
  EXPECT_EQ(fields[4].kind, Kind::Object);
  EXPECT_EQ(store.TypeId(fields[4].link), 10u);
  EXPECT_EQ(store.Identity(fields[4].link), (gsl_RecordIdentity{3, 4}));
  EXPECT_EQ(fields[5].kind, Kind::Record);
  EXPECT_EQ(store.TypeId(fields[5].link), 9u);
  EXPECT_EQ(fields[6].kind, Kind::Null);
  EXPECT_EQ(fields[6].link, 0xFFFFFFFFu);
  const std::vector<gsl_RecordField> inner = FieldsOf(store, fields[5].link);
  ASSERT_EQ(inner.size(), 1u);
  EXPECT_EQ(inner[0].kind, Kind::Reference);
  EXPECT_EQ(inner[0].link, fields[4].link);
  EXPECT_EQ(inner[0].object, fields[4].object);
}

TEST(GslRecordStore, ShapeHasTheNamesTheNumbersAndTheKindsOfItsFields) {
  gsl_RecordStore store;
  const gsl_RecordIndex root = store.AddRoot(6, {});
  store.AddInteger(root, {"i", 7}, 1);
  store.AddString(root, {"s", -1}, "text");
  store.Finish();
  gsl_RecordCollection collection = gsl_RecordCollection::Objects;
  std::vector<gsl_RecordField> fields(5);
  EXPECT_EQ(store.ReadShape(0, collection, fields), 6u);
  EXPECT_EQ(collection, gsl_RecordCollection::None);
  ASSERT_EQ(fields.size(), 2u);
  EXPECT_EQ(fields[0].name, "i");
  EXPECT_EQ(fields[0].index, 7);
  EXPECT_EQ(fields[0].kind, Kind::Integer);
  EXPECT_EQ(fields[1].name, "s");
  EXPECT_EQ(fields[1].index, -1);
  EXPECT_EQ(fields[1].kind, Kind::String);
}

TEST(GslRecordStore, ArraysComeBackAndAreEmptyForAnotherCollection) {
  gsl_RecordStore store;
  Fill(store, 1);
  std::vector<std::uint32_t> unsigneds = {9};
  std::vector<double> doubles = {9.0};
  std::size_t rows = 9;
  std::size_t columns = 9;
  const std::vector<gsl_RecordField> fields = FieldsOf(store, store.Root(0));
  const gsl_RecordIndex list = fields[2].link;
  const gsl_RecordIndex matrix = fields[3].link;
  store.ReadUnsigneds(list, unsigneds);
  EXPECT_EQ(unsigneds, (std::vector<std::uint32_t>{1, 2}));
  store.ReadDoubles(matrix, doubles, rows, columns);
  EXPECT_EQ(doubles, (std::vector<double>{0.5, 1.5}));
  EXPECT_EQ(rows, 1u);
  EXPECT_EQ(columns, 2u);
  store.ReadUnsigneds(matrix, unsigneds);
  EXPECT_TRUE(unsigneds.empty());
  store.ReadDoubles(list, doubles, rows, columns);
  EXPECT_TRUE(doubles.empty());
  EXPECT_EQ(rows + columns, 0u);
}

TEST(GslRecordStore, HeaderAgreesWithTheSingleCalls) {
  gsl_RecordStore store;
  Fill(store, 1);
  store.AddRoot(0xFFFFFFFFu, {});
  const gsl_RecordIndex list = store.AddRoot(7, {~std::uint64_t{0}, ~std::uint64_t{0}});
  store.SetCollection(list, gsl_RecordCollection::Objects);
  store.AddNull(list, {}, 3);
  store.Finish();
  ASSERT_EQ(store.RecordCount(), 5u);
  for (gsl_RecordIndex record = 0; record < 5; ++record) {
    const gsl_RecordReader::Header header = store.ReadHeader(record);
    EXPECT_EQ(header.typeId, store.TypeId(record)) << record;
    EXPECT_EQ(header.collection, store.Collection(record)) << record;
    EXPECT_EQ(header.identity, store.Identity(record)) << record;
    EXPECT_EQ(header.firstField, store.FirstField(record)) << record;
  }
  EXPECT_EQ(store.ReadHeader(store.Root(1)).firstField, gsl_RecordReader::kEnd);
  EXPECT_NE(store.ReadHeader(store.Root(2)).firstField, gsl_RecordReader::kEnd);
}

TEST(GslRecordStore, FieldWithoutANameIsRefusedAndNothingIsStored) {
  gsl_RecordStore store;
  const gsl_RecordIndex root = store.AddRoot(1, {});
  EXPECT_THROW(store.AddInteger(root, {"", 0}, 1), gsl_RecordError);
  EXPECT_THROW(store.AddString(root, {"", 0}, "text"), gsl_RecordError);
  EXPECT_THROW(store.AddRecord(root, {"", 0}, false, 1, {}), gsl_RecordError);
  EXPECT_THROW(store.AddInteger(root, {nullptr, 0}, 1), gsl_RecordError);
  store.AddString(root, {"s", 0}, "after");
  EXPECT_EQ(store.RecordCount(), 1u);
  ASSERT_EQ(FieldsOf(store, store.Root(0)).size(), 1u);
  EXPECT_EQ(FieldsOf(store, store.Root(0))[0].text, "after");
}

TEST(GslRecordStore, RootThatIsTakenBackLeavesTheStoreAsItWas) {
  gsl_RecordStore store;
  Fill(store, 1);
  gsl_RecordStore expected;
  Fill(expected, 1);
  const gsl_RecordIndex second = Fill(store, 2);
  Fill(store, 3);
  store.TakeBack(second);
  EXPECT_TRUE(SameRecords(store, expected));
  Fill(store, 4);
  Fill(expected, 4);
  EXPECT_TRUE(SameRecords(store, expected));
}

TEST(GslRecordStore, RecordThatEndedTakesNoFurtherFields) {
  const auto expectEnded = [](gsl_RecordStore& store, gsl_RecordIndex record) {
    const std::string why = "A record that has ended takes no further fields";
    try {
      store.AddInteger(record, {"late", 0}, 1);
      ADD_FAILURE() << "taken";
    } catch (const gsl_RecordError& error) {
      EXPECT_EQ(error.what(), why);
    }
  };
  gsl_RecordStore store;
  expectEnded(store, 0);
  const gsl_RecordIndex first = store.AddRoot(1, {});
  const gsl_RecordIndex child = store.AddRecord(first, {"child", 0}, false, 2, {});
  const gsl_RecordIndex inner = store.AddRecord(child, {"inner", 0}, false, 2, {});
  store.AddInteger(child, {"next", 0}, 2);
  expectEnded(store, inner);
  store.AddInteger(first, {"next", 0}, 3);
  expectEnded(store, child);
  store.AddRoot(3, {});
  expectEnded(store, first);
  store.Finish();
  expectEnded(store, 3);
}

TEST(GslRecordStore, RootsAreFoundByNumberAndByName) {
  gsl_RecordStore store;
  store.AddRoot(1, {});
  store.AddRoot(2, {});
  store.NameRoot("axis");
  store.AddRoot(3, {});
  store.NameRoot("first name");
  store.NameRoot("plane");
  EXPECT_EQ(store.RootName(0), "");
  EXPECT_EQ(store.RootName(1), "axis");
  EXPECT_EQ(store.FindRoot("axis"), 1u);
  EXPECT_EQ(store.FindRoot("plane"), 2u);
  EXPECT_EQ(store.FindRoot("first name"), 3u);
  EXPECT_EQ(store.FindRoot(""), 3u);
  const gsl_RecordIndex other = store.AddRoot(4, {});
  EXPECT_THROW(store.NameRoot("axis"), gsl_RecordError);
  EXPECT_THROW(store.NameRoot(""), gsl_RecordError);
  store.NameRoot("other");
  store.TakeBack(other);
  EXPECT_EQ(store.FindRoot("other"), 3u);
  store.AddRoot(5, {});
  EXPECT_NO_THROW(store.NameRoot("other"));
}

TEST(GslRecordStore, ClassHasItsLastName) {
  gsl_RecordStore store;
  store.AddRoot(1, {});
  store.NameClass(1, "old");
  store.NameClass(1, "new");
  EXPECT_EQ(store.ClassName(1), "new");
  EXPECT_EQ(store.ClassName(2), "");
}

TEST(GslRecordStore, NameThatFindsNoMemoryIsNotGiven) {
  const std::string before(100, 'b');
  const std::string name(100, 'n');
  bool hasFailed = true;
  long failures = 0;
  for (; hasFailed; failures += hasFailed ? 1 : 0) {
    gsl_RecordStore store;
    const gsl_RecordIndex root = store.AddRoot(1, {});
    store.NameRoot(before);
    hasFailed = false;
    try {
      const OneFailingAllocation failure(failures);
      store.NameRoot(name);
    } catch (const std::bad_alloc&) {
      hasFailed = true;
    }
    EXPECT_EQ(store.RootName(0), hasFailed ? before : name);
    EXPECT_EQ(store.FindRoot(before), hasFailed ? 0u : 1u);
    EXPECT_EQ(store.FindRoot(name), hasFailed ? 1u : 0u);
    store.TakeBack(root);
    store.AddRoot(1, {});
    EXPECT_NO_THROW(store.NameRoot(name));
    EXPECT_NO_THROW(store.NameRoot(before));
  }
  EXPECT_GT(failures, 1);
}

TEST(GslRecordStore, ClassNameThatFindsNoMemoryIsNotGiven) {
  const std::string name(100, 'n');
  bool hasFailed = true;
  long failures = 0;
  for (; hasFailed; failures += hasFailed ? 1 : 0) {
    gsl_RecordStore store;
    const gsl_RecordIndex root = store.AddRoot(1, {});
    hasFailed = false;
    try {
      const OneFailingAllocation failure(failures);
      store.NameClass(1, name);
    } catch (const std::bad_alloc&) {
      hasFailed = true;
    }
    EXPECT_EQ(store.ClassName(1), hasFailed ? "" : name);
    store.TakeBack(root);
    EXPECT_EQ(store.ClassName(1), "");
    store.NameClass(1, name);
    EXPECT_EQ(store.ClassName(1), name);
  }
  EXPECT_GT(failures, 1);
}

TEST(GslRecordStore, StoreThatWasReadTakesFurtherRoots) {
  gsl_RecordStore source;
  Fill(source, 1);
  const std::vector<unsigned char> bytes = source.ToBytes();
  gsl_RecordStore store = gsl_RecordStore::FromBytes(bytes.data(), bytes.size());
  const gsl_RecordIndex root = Fill(store, 1);
  EXPECT_EQ(store.RootCount(), 2u);
  // The second root owns its shared matrix, so that it is not the first.
  EXPECT_EQ(store.RecordCount(), 4u);
  Fill(source, 1);
  EXPECT_TRUE(SameRecords(store, source));
  store.TakeBack(root);
  EXPECT_EQ(store.ToBytes(), bytes);
}

TEST(GslRecordStore, ClearedStoreIsLikeANewOne) {
  gsl_RecordStore store;
  Fill(store, 1);
  store.Clear();
  EXPECT_EQ(store.RecordCount(), 0u);
  EXPECT_EQ(store.ToBytes(), gsl_RecordStore().ToBytes());
  Fill(store, 2);
  gsl_RecordStore expected;
  Fill(expected, 2);
  EXPECT_EQ(store.ToBytes(), expected.ToBytes());
}

TEST(GslRecordStore, MovedStoreKeepsItsNames) {
  gsl_RecordStore source;
  Fill(source, 1);
  gsl_RecordStore store = std::move(source);
  Fill(store, 2);
  gsl_RecordStore expected;
  Fill(expected, 1);
  Fill(expected, 2);
  EXPECT_EQ(store.ToBytes(), expected.ToBytes());
}

TEST(GslRecordStore, RootsOfOneClassThatFollowOneAnotherAreCounted) {
  constexpr std::uint32_t kClasses[] = {7, 7, 7, 8, 7, 7};
  constexpr std::size_t kAlike[] = {3, 2, 1, 1, 2, 1};
  gsl_RecordStore store;
  for (std::uint32_t i = 0; i < 6; ++i) {
    // Two shapes of one class are one class.
    const gsl_RecordIndex root = store.AddRoot(kClasses[i], {1, i + 1});
    if (i % 2 == 0) store.AddInteger(root, {"n", 0}, 5);
  }
  for (std::size_t i = 0; i < 6; ++i)
    EXPECT_EQ(store.RootsOfOneClass(i), kAlike[i]) << i;
  const std::vector<unsigned char> bytes = store.ToBytes();
  const gsl_RecordStore read = gsl_RecordStore::FromBytes(bytes.data(), bytes.size());
  for (std::size_t i = 0; i < 6; ++i)
    EXPECT_EQ(read.RootsOfOneClass(i), kAlike[i]) << i;
}
