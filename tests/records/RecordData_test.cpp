#include "RecordData.h"

#include "OneFailingAllocation.h"
#include "Records.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

// The data of a store is private: what it does with equal records shows in the store.

namespace {

std::vector<gsl_RecordField> FieldsOf(const gsl_RecordReader& reader, gsl_RecordIndex record) {
  std::vector<gsl_RecordField> fields;
  for (const gsl_RecordField& field : reader.Fields(record))
    fields.push_back(field);
  return fields;
}

using Bytes = std::vector<unsigned char>;

constexpr gsl_RecordIndex kNoRoot = 0xFFFFFFFFu;

gsl_RecordStore Decoded(const Bytes& bytes) {
  return gsl_RecordStore::FromBytes(bytes.data(), bytes.size());
}

/// Writes a root with a name, classes, texts and identities of its own, records that are equal or
/// refer to a shared object, and serials that do not ascend. The last records are open.
void WriteSample(gsl_RecordStore& store, std::uint32_t number, gsl_RecordIndex& root) {
  const std::string own = "of the sample with the number " + std::to_string(number);
  root = store.AddRoot(1, {7, 100 - number});
  store.NameRoot("first name " + own);
  store.NameRoot("root " + own);
  store.NameClass(100 + number, "class " + own);
  store.AddString(root, {"text", 0}, own);
  store.AddInteger(root, {own.c_str(), 0}, 1);
  const gsl_RecordIndex list = store.AddRecord(root, {"list", 0}, false, 2, {});
  store.SetCollection(list, gsl_RecordCollection::Objects);
  for (std::uint32_t i = 0; i < 40; ++i) {
    const std::uint32_t value = 100 * number + i % 30;
    const gsl_RecordIndex entry = store.AddRecord(list, {nullptr, -1}, false, 100 + number, {});
    store.SetUnsigneds(entry, &value, 1);
  }
  for (const std::uint64_t serial : {5u, 3u, 4u, 3u})
    store.AddDouble(store.AddRecord(root, {"point", 0}, false, 6, {8 + number, serial}), {"x", 0},
                    1);
  const gsl_RecordIndex owner = store.AddRecord(root, {"owner", 0}, false, 4, {});
  const gsl_RecordIndex object = store.AddRecord(owner, {"object", 0}, true, 5, {9, number});
  store.AddDouble(object, {"x", 0}, 0.5);
  const gsl_RecordIndex other = store.AddRecord(root, {"other", 0}, false, 4, {});
  store.AddReference(other, {"object", 0}, object);
  gsl_RecordIndex inner = store.AddRecord(root, {"inner", 0}, false, 4, {});
  for (int level = 0; level < 4; ++level) {
    inner = store.AddRecord(inner, {"inner", 0}, level == 2, 4, {});
    store.AddString(inner, {"text", 0}, own);
  }
}

gsl_RecordStore FirstSample() {
  gsl_RecordStore store;
  gsl_RecordIndex root = kNoRoot;
  WriteSample(store, 1, root);
  store.Finish();
  return store;
}

/// Adds an object whose fields "a" and "b" each have a record of their own with the same object of
/// the level below.
gsl_RecordIndex AddLevels(gsl_RecordStore& store, gsl_RecordIndex owner, int levels) {
  const gsl_RecordIndex object = store.AddRecord(owner, {"o", 0}, true, 2, {});
  if (levels == 0) return object;
  const gsl_RecordIndex a = store.AddRecord(object, {"a", 0}, false, 3, {});
  const gsl_RecordIndex below = AddLevels(store, a, levels - 1);
  store.AddReference(store.AddRecord(object, {"b", 0}, false, 3, {}), {"o", 0}, below);
  return object;
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

TEST(RecordData, SerialsOfTwoClassesAreKeptApart) {
  gsl_RecordStore store;
  const auto add = [&](std::uint32_t typeId, std::uint64_t serial) {
    store.AddRoot(typeId, {4, serial});
    store.Finish();
  };
  add(1, 5);
  add(1, 6);
  add(2, 5);
  add(1, 5);
  EXPECT_EQ(store.RecordCount(), 3u);
  EXPECT_EQ(store.Root(3), store.Root(0));
}

TEST(RecordData, RecordsOfOneSerialAreCompared) {
  // A run of one serial in ascending order, longer and shorter than what is kept of it.
  for (const int different : {1, 2, 3, 4, 5, 9}) {
    gsl_RecordStore store;
    for (std::uint64_t serial = 1; serial <= 3; ++serial) {
      for (int n = 0; n < 2 * different; ++n)
        store.AddInteger(store.AddRoot(1, {4, serial}), {"x", 0}, n % different);
    }
    EXPECT_EQ(store.RecordCount(), static_cast<std::size_t>(3 * different));
    for (std::size_t i = 0; i < store.RootCount(); ++i) {
      EXPECT_EQ(FieldsOf(store, store.Root(i))[0].integer, static_cast<int>(i) % different) << i;
    }
  }
}

TEST(RecordData, SerialOfARecordThatWasTakenBackIsNewAgain) {
  gsl_RecordStore store;
  const auto add = [&](std::uint64_t serial, int value) {
    const gsl_RecordIndex root = store.AddRoot(1, {4, serial});
    store.AddInteger(root, {"x", 0}, value);
    store.Finish();
    return root;
  };
  add(5, 1);
  const gsl_RecordIndex gone = add(7, 1);
  add(7, 2);
  store.TakeBack(gone);
  EXPECT_EQ(store.RecordCount(), 1u);
  // An equal record from before is found, and no record of the serial that is gone.
  add(5, 1);
  EXPECT_EQ(store.RecordCount(), 1u);
  add(7, 2);
  add(7, 1);
  add(7, 2);
  EXPECT_EQ(store.RecordCount(), 3u);
  EXPECT_EQ(store.Root(4), store.Root(2));
  EXPECT_EQ(FieldsOf(store, store.Root(3))[0].integer, 1);
  // Only the last of the records of one serial is taken back.
  store.TakeBack(add(7, 3));
  add(7, 4);
  EXPECT_EQ(store.RecordCount(), 4u);
  EXPECT_EQ(FieldsOf(store, store.Root(5))[0].integer, 4);
}

TEST(RecordData, SerialsAfterARootThatWasTakenBackAreKnown) {
  gsl_RecordStore store;
  const auto add = [&](std::uint32_t typeId, std::uint64_t serial) {
    const gsl_RecordIndex root = store.AddRoot(typeId, {4, serial});
    store.Finish();
    return root;
  };
  add(1, 5);
  // A serial that does not ascend makes the store look at all serials up to this record.
  store.TakeBack(add(1, 3));
  // The record at the place of the record that is gone.
  add(2, 1);
  add(2, 2);
  add(2, 1);
  EXPECT_EQ(store.RecordCount(), 3u);
  EXPECT_EQ(store.Root(3), store.Root(1));
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

TEST(RecordData, StoreIsAsBeforeWhenARootIsTakenBackAfterAFailedAllocation) {
  for (const bool isRead : {false, true}) {
    const Bytes before = FirstSample().ToBytes();
    const auto start = [&] { return isRead ? Decoded(before) : FirstSample(); };
    gsl_RecordStore whole = start();
    gsl_RecordIndex root = kNoRoot;
    WriteSample(whole, 2, root);
    const Bytes after = whole.ToBytes();
    long failures = 0;
    for (bool hasFailed = true; hasFailed; failures += hasFailed ? 1 : 0) {
      gsl_RecordStore store = start();
      root = kNoRoot;
      hasFailed = false;
      try {
        const OneFailingAllocation failure(failures);
        WriteSample(store, 2, root);
        store.Finish();
      } catch (const std::bad_alloc&) {
        hasFailed = true;
      }
      if (!hasFailed) continue;
      bool hasAllocated = false;
      {
        const OneFailingAllocation first(0);
        if (root != kNoRoot) store.TakeBack(root);
        hasAllocated = first.HasFailed();
      }
      EXPECT_FALSE(hasAllocated);
      ASSERT_EQ(store.ToBytes(), before) << failures;
      ASSERT_EQ(store.FindRoot("first name of the sample with the number 2"), 1u) << failures;
      WriteSample(store, 2, root);
      ASSERT_EQ(store.ToBytes(), after) << failures;
    }
    EXPECT_GT(failures, 20);
  }
}

TEST(RecordData, RootThatCouldNotEndEndsLater) {
  const auto write = [](gsl_RecordStore& store) {
    const gsl_RecordIndex root = store.AddRoot(1, {1, 2});
    const gsl_RecordIndex child = store.AddRecord(root, {"child", 0}, false, 2, {});
    store.AddInteger(store.AddRecord(child, {"object", 0}, true, 3, {}), {"x", 0}, 1);
  };
  gsl_RecordStore whole;
  write(whole);
  const Bytes expected = whole.ToBytes();
  bool hasFailed = true;
  long failures = 0;
  for (; hasFailed; failures += hasFailed ? 1 : 0) {
    gsl_RecordStore store;
    write(store);
    hasFailed = false;
    try {
      const OneFailingAllocation failure(failures);
      store.Finish();
    } catch (const std::bad_alloc&) {
      hasFailed = true;
    }
    ASSERT_EQ(store.ToBytes(), expected) << failures;
  }
  EXPECT_GT(failures, 3);
}

TEST(RecordData, WhatIsWrittenIsReadHoweverManyPlacesReferToAnOwner) {
  // The object of level i has 2^(i + 2) - 3 records when every record that refers to the object
  // below is stored as the one that owns it.
  constexpr int kLevels = 33;
  gsl_RecordStore store;
  const gsl_RecordIndex root = store.AddRoot(1, {});
  AddLevels(store, root, kLevels);
  const Bytes bytes = store.ToBytes();
  // The root, the objects, each record "a"; and "b" where it would be too many, from level 30 on.
  EXPECT_EQ(store.RecordCount(), 1u + 34u + 33u + 4u);
  const gsl_RecordStore read = Decoded(bytes);
  EXPECT_EQ(read.ToBytes(), bytes);
  EXPECT_TRUE(SameRecords(read, store));
  // What is taken back counts no more.
  store.TakeBack(root);
  AddLevels(store, store.AddRoot(1, {}), kLevels);
  EXPECT_EQ(store.ToBytes(), bytes);
}

TEST(RecordData, RecordsOfManyShapesHaveTheirClassesWhenTheyAreRead) {
  // One byte keeps the shape of a record that was read, where it has room for it.
  constexpr std::uint32_t kShapes = 600;
  gsl_RecordStore written;
  for (std::uint32_t i = 0; i < 2 * kShapes; ++i)
    written.AddRoot(1000 + i % kShapes, {1, i + 1});
  const std::vector<unsigned char> bytes = written.ToBytes();
  gsl_RecordStore read = gsl_RecordStore::FromBytes(bytes.data(), bytes.size());
  ASSERT_EQ(read.RootCount(), 2 * kShapes);
  for (std::uint32_t i = 0; i < 2 * kShapes; ++i)
    ASSERT_EQ(read.TypeId(read.Root(i)), 1000 + i % kShapes) << i;
  // What is written later, or is taken back, changes nothing of this.
  const gsl_RecordIndex further = read.AddRoot(5, {1, 9999});
  EXPECT_EQ(read.TypeId(read.Root(2 * kShapes)), 5u);
  read.TakeBack(further);
  ASSERT_EQ(read.RootCount(), 2 * kShapes);
  EXPECT_EQ(read.TypeId(read.Root(254)), 1254u);
  EXPECT_EQ(read.TypeId(read.Root(255)), 1255u);
  EXPECT_EQ(read.TypeId(read.Root(599)), 1599u);
}
