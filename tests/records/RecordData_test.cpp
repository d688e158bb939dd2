#include "RecordData.h"

#include "Records.h"

#include <gtest/gtest.h>

#include <vector>

// The data of a store is private: what it does with equal records shows in the store.

namespace {

std::vector<gsl_RecordField> FieldsOf(const gsl_RecordReader& reader, gsl_RecordIndex record) {
  std::vector<gsl_RecordField> fields;
  for (const gsl_RecordField& field : reader.Fields(record))
    fields.push_back(field);
  return fields;
}

} // namespace

TEST(RecordData, EqualRecordsAreStoredOnce) {
  gsl_RecordStore store;
  const auto addDot = [&](gsl_RecordIndex root, const char* name, std::uint64_t serial, double x) {
    const gsl_RecordIndex dot = store.AddRecord(root, {name, 0}, false, 5, {1, serial});
    const gsl_RecordIndex point = store.AddRecord(dot, {"point", 0}, false, 1, {1, serial + 1});
    store.AddDouble(point, {"x", 0}, x);
    store.AddInteger(dot, {"id", 0}, 7);
  };
  const gsl_RecordIndex root = store.AddRoot(9, {});
  addDot(root, "a", 10, 0.0);
  addDot(root, "b", 20, 0.0);
  addDot(root, "equal to a", 10, 0.0);
  addDot(root, "of a's identity", 10, -0.0);
  addDot(root, "equal to b", 20, 0.0);
  // Four different dots and their points: a, b, and a changed copy of a.
  EXPECT_EQ(store.RecordCount(), 7u);
  const std::vector<gsl_RecordField> fields = FieldsOf(store, store.Root(0));
  ASSERT_EQ(fields.size(), 5u);
  EXPECT_EQ(fields[2].link, fields[0].link);
  EXPECT_NE(fields[3].link, fields[0].link);
  EXPECT_EQ(fields[4].link, fields[1].link);
  EXPECT_EQ(store.Identity(fields[3].link), store.Identity(fields[0].link));
}

TEST(RecordData, RecordsOfOneIdentityAndDifferentClassOrFieldsStayTwo) {
  gsl_RecordStore store;
  const gsl_RecordIdentity identity = {1, 2};
  for (const std::uint32_t typeId : {1u, 2u}) {
    for (const char* name : {"x", "y"}) {
      for (const int value : {1, 2, 1})
        store.AddInteger(store.AddRoot(typeId, identity), {name, 0}, value);
    }
  }
  EXPECT_EQ(store.RootCount(), 12u);
  EXPECT_EQ(store.RecordCount(), 8u);
  EXPECT_EQ(store.Root(2), store.Root(0));
}

TEST(RecordData, EqualRecordsAreFoundInAnyOrderOfSerials) {
  gsl_RecordStore store;
  const std::uint64_t serials[] = {5, 9, 7, 8, 9, 5, 6, 7, 3, 3, 10, 10};
  const std::uint64_t prefixes[] = {4, 4, 6, 4};
  for (int n = 0; n < 3; ++n) {
    for (const std::uint64_t prefix : prefixes) {
      for (const std::uint64_t serial : serials)
        store.AddInteger(store.AddRoot(1, {prefix, serial}), {"x", 0}, 1);
    }
  }
  // 3, 5, 6, 7, 8, 9 and 10 under either prefix.
  EXPECT_EQ(store.RecordCount(), 14u);
  for (std::size_t i = 0; i < store.RootCount(); ++i)
    EXPECT_EQ(store.Identity(store.Root(i)).serial, serials[i % 12]) << i;
}

TEST(RecordData, EqualRecordWithoutAnIdentityIsFound) {
  gsl_RecordStore store;
  for (int i = 0; i < 1000; ++i) {
    const std::uint32_t value = static_cast<std::uint32_t>(i % 10);
    const gsl_RecordIndex root = store.AddRoot(1, {1, static_cast<std::uint64_t>(i)});
    store.SetUnsigneds(store.AddRecord(root, {"list", 0}, false, 2, {}), &value, 1);
  }
  EXPECT_EQ(store.RecordCount(), 1010u);
}

TEST(RecordData, HolderOfASharedObjectEqualsOneThatRefersToIt) {
  gsl_RecordStore store;
  const auto add = [&](bool owns, gsl_RecordIndex target) {
    const gsl_RecordIndex root = store.AddRoot(1, {1, 1});
    if (!owns) {
      store.AddReference(root, {"end", 0}, target);
      return target;
    }
    const gsl_RecordIndex object = store.AddRecord(root, {"end", 0}, true, 2, {1, 2});
    store.AddInteger(object, {"x", 0}, 4);
    return object;
  };
  const gsl_RecordIndex object = add(true, 0);
  add(false, object);
  EXPECT_EQ(store.Root(1), store.Root(0));
  EXPECT_EQ(store.RecordCount(), 2u);
  // Another object has one record with the first, and stays another object.
  add(true, 0);
  EXPECT_NE(store.Root(2), store.Root(0));
  EXPECT_EQ(store.RecordCount(), 3u);
  const gsl_RecordField first = FieldsOf(store, store.Root(0))[0];
  const gsl_RecordField third = FieldsOf(store, store.Root(2))[0];
  EXPECT_EQ(first.link, third.link);
  EXPECT_NE(first.object, third.object);
  EXPECT_TRUE(SameRecords(
      gsl_RecordStore::FromBytes(store.ToBytes().data(), store.ToBytes().size()), store));
}

TEST(RecordData, RecordThatIsTakenBackIsNotFoundAgain) {
  gsl_RecordStore store;
  const auto add = [&](std::uint64_t serial) {
    const gsl_RecordIndex root = store.AddRoot(1, {1, serial});
    store.AddRecord(root, {"anonymous", 0}, false, 2, {});
    return root;
  };
  add(5);
  add(3);
  const gsl_RecordIndex gone = add(4);
  store.TakeBack(gone);
  EXPECT_EQ(store.RecordCount(), 3u);
  add(4);
  add(3);
  EXPECT_EQ(store.RecordCount(), 4u);
  EXPECT_EQ(store.Root(3), store.Root(1));
}
