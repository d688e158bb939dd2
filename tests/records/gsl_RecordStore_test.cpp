#include "gsl_RecordStore.h"

#include "Records.h"
#include "gsl_RecordError.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
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
void Fill(gsl_RecordWriter& to, int number) {
  const gsl_RecordIndex root = to.AddRoot(1, {2, 3});
  to.AddInteger(root, {"number", 0}, number);
  to.AddString(root, {"text", 1}, "some text");
  to.SetUnsigneds(to.AddRecord(root, {"list", 2}, false, 4, {}),
                  std::vector<std::uint32_t>{1, 2}.data(), 2);
  to.SetDoubles(to.AddRecord(root, {"matrix", 3}, true, 5, {}),
                std::vector<double>{0.5, 1.5}.data(), 1, 2);
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
  const gsl_RecordIndex own = store.AddRecord(root, {"own", 0}, false, 9, {1, 2});
  const gsl_RecordIndex shared = store.AddRecord(root, {"shared", 0}, true, 10, {3, 4});
  store.AddReference(own, {"r", 0}, shared);
  store.AddNull(root, {"n", 0}, 0xFFFFFFFFu);

  EXPECT_EQ(store.TypeId(root), 0x7F000001u);
  EXPECT_EQ(store.Identity(shared), (gsl_RecordIdentity{3, 4}));
  const std::vector<gsl_RecordField> fields = FieldsOf(store, root);
  ASSERT_EQ(fields.size(), 7u);
  EXPECT_EQ(fields[0].name, "i");
  EXPECT_EQ(fields[0].index, 7);
  EXPECT_EQ(fields[0].integer, std::numeric_limits<int>::min());
  EXPECT_EQ(fields[1].kind, Kind::Double);
  EXPECT_TRUE(std::signbit(fields[1].real));
  EXPECT_TRUE(fields[2].boolean);
  EXPECT_EQ(fields[3].text, std::string_view("a\0b", 3));
  EXPECT_EQ(fields[4].kind, Kind::Record);
  EXPECT_EQ(fields[4].link, own);
  EXPECT_EQ(fields[5].kind, Kind::Object);
  EXPECT_EQ(fields[5].link, shared);
  EXPECT_EQ(fields[6].kind, Kind::Null);
  EXPECT_EQ(fields[6].link, 0xFFFFFFFFu);
  const std::vector<gsl_RecordField> inner = FieldsOf(store, own);
  ASSERT_EQ(inner.size(), 1u);
  EXPECT_EQ(inner[0].kind, Kind::Reference);
  EXPECT_EQ(inner[0].link, shared);
}

TEST(GslRecordStore, ArraysComeBackAndAreEmptyForAnotherCollection) {
  gsl_RecordStore store;
  Fill(store, 1);
  std::vector<std::uint32_t> unsigneds = {9};
  std::vector<double> doubles = {9.0};
  std::size_t rows = 9;
  std::size_t columns = 9;
  store.ReadUnsigneds(1, unsigneds);
  EXPECT_EQ(unsigneds, (std::vector<std::uint32_t>{1, 2}));
  store.ReadDoubles(2, doubles, rows, columns);
  EXPECT_EQ(doubles, (std::vector<double>{0.5, 1.5}));
  EXPECT_EQ(rows, 1u);
  EXPECT_EQ(columns, 2u);
  store.ReadUnsigneds(2, unsigneds);
  EXPECT_TRUE(unsigneds.empty());
  store.ReadDoubles(1, doubles, rows, columns);
  EXPECT_TRUE(doubles.empty());
  EXPECT_EQ(rows + columns, 0u);
}

TEST(GslRecordStore, FieldWithoutANameIsRefusedAndNothingIsStored) {
  gsl_RecordStore store;
  const gsl_RecordIndex root = store.AddRoot(1, {});
  EXPECT_THROW(store.AddInteger(root, {"", 0}, 1), gsl_RecordError);
  EXPECT_THROW(store.AddString(root, {"", 0}, "text"), gsl_RecordError);
  EXPECT_THROW(store.AddRecord(root, {"", 0}, false, 1, {}), gsl_RecordError);
  EXPECT_TRUE(FieldsOf(store, root).empty());
  EXPECT_EQ(store.RecordCount(), 1u);
  store.AddString(root, {"s", 0}, "after");
  EXPECT_EQ(FieldsOf(store, root)[0].text, "after");
}

TEST(GslRecordStore, RootThatIsTakenBackLeavesTheStoreAsItWas) {
  gsl_RecordStore store;
  Fill(store, 1);
  gsl_RecordStore expected;
  Fill(expected, 1);
  const std::size_t records = store.RecordCount();
  Fill(store, 2);
  Fill(store, 3);
  store.TakeBack(static_cast<gsl_RecordIndex>(records));
  EXPECT_TRUE(SameRecords(store, expected));
  Fill(store, 4);
  Fill(expected, 4);
  EXPECT_TRUE(SameRecords(store, expected));
}

TEST(GslRecordStore, WhatAnEarlierRecordGotAfterTheRootGoesWithIt) {
  gsl_RecordStore store;
  const gsl_RecordIndex first = store.AddRoot(1, {});
  const gsl_RecordIndex bare = store.AddRecord(first, {"bare", 0}, false, 2, {});
  store.AddInteger(first, {"kept", 0}, 1);
  const gsl_RecordIndex second = store.AddRoot(3, {});
  store.AddInteger(first, {"late", 0}, 2);
  store.AddInteger(second, {"other", 0}, 3);
  store.AddInteger(first, {"later", 0}, 4);
  store.AddInteger(bare, {"late", 0}, 5);
  const std::uint32_t one = 1;
  store.SetUnsigneds(bare, &one, 1);
  store.TakeBack(second);
  EXPECT_EQ(store.RootCount(), 1u);
  EXPECT_EQ(store.Unsigneds(bare).count, 0u);
  EXPECT_TRUE(FieldsOf(store, bare).empty());
  ASSERT_EQ(FieldsOf(store, first).size(), 2u);
  EXPECT_EQ(FieldsOf(store, first)[1].name, "kept");
  // Both records take further fields.
  store.AddInteger(first, {"next", 0}, 6);
  store.AddInteger(bare, {"next", 0}, 7);
  EXPECT_EQ(FieldsOf(store, first)[2].integer, 6);
  EXPECT_EQ(FieldsOf(store, bare)[0].integer, 7);
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
