#ifndef RECORD_BORDER_H
#define RECORD_BORDER_H

#include "ModelSamples.h"
#include "SameContents.h"
#include "gsl_RecordError.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

/// What every storage of records promises. A storage is a type with
///
///   void Write(const std::function<void(gsl_RecordWriter&)>&);   stores what the call writes
///   const gsl_RecordReader& Read();                              what is stored
///   kName                                                        its name in the test
///
/// and INSTANTIATE_TYPED_TEST_SUITE_P runs the suite over it.
template <class Storage>
class RecordBorder : public testing::Test {
protected:
  using Work = std::function<void(gsl_RecordWriter&)>;

  const gsl_RecordReader& Stored(const Work& work) {
    m_storage.Write(work);
    return m_storage.Read();
  }

  /// Writes the same into a store in memory and compares.
  void ExpectAsInAStore(const Work& work) {
    gsl_RecordStore store;
    work(store);
    store.Finish();
    EXPECT_TRUE(SameContents(Stored(work), store));
  }

  static std::vector<gsl_RecordField> FieldsOf(const gsl_RecordReader& reader,
                                               gsl_RecordIndex record) {
    std::vector<gsl_RecordField> fields;
    for (const gsl_RecordField& field : reader.Fields(record))
      fields.push_back(field);
    return fields;
  }

  Storage m_storage;
};

TYPED_TEST_SUITE_P(RecordBorder);

struct NamesOfStorages {
  template <class Storage>
  static std::string GetName(int) {
    return Storage::kName;
  }
};

TYPED_TEST_P(RecordBorder, NothingWrittenIsNothingRead) {
  EXPECT_EQ(this->Stored([](gsl_RecordWriter&) {}).RootCount(), 0u);
}

TYPED_TEST_P(RecordBorder, EveryKindOfFieldComesBackInWriteOrder) {
  using Kind = gsl_RecordKind;
  const gsl_RecordReader& read = this->Stored([](gsl_RecordWriter& to) {
    const gsl_RecordIndex root = to.AddRoot(0x7F000001u, {5, ~std::uint64_t{0}});
    to.AddInteger(root, {"i", 7}, std::numeric_limits<int>::min());
    to.AddDouble(root, {"d", -1}, -0.0);
    to.AddBoolean(root, {"b", 0}, true);
    to.AddString(root, {"s", 0}, std::string_view("a\0b\xff", 4));
    const gsl_RecordIndex shared = to.AddRecord(root, {"shared", 0}, true, 10, {3, 4});
    const gsl_RecordIndex own = to.AddRecord(root, {"own", 0}, false, 9, {1, 2});
    to.AddReference(own, {"r", 0}, shared);
    to.AddNull(root, {"n", 0}, 0xFFFFFFFFu);
  });
  ASSERT_EQ(read.RootCount(), 1u);
  EXPECT_EQ(read.TypeId(read.Root(0)), 0x7F000001u);
  EXPECT_EQ(read.Identity(read.Root(0)), (gsl_RecordIdentity{5, ~std::uint64_t{0}}));
  const std::vector<gsl_RecordField> fields = this->FieldsOf(read, read.Root(0));
  ASSERT_EQ(fields.size(), 7u);
  EXPECT_EQ(fields[0].name, "i");
  EXPECT_EQ(fields[0].index, 7);
  EXPECT_EQ(fields[0].integer, std::numeric_limits<int>::min());
  EXPECT_EQ(fields[1].kind, Kind::Double);
  EXPECT_TRUE(std::signbit(fields[1].real));
  EXPECT_TRUE(fields[2].boolean);
  EXPECT_EQ(fields[3].text, std::string_view("a\0b\xff", 4));
  EXPECT_EQ(fields[4].kind, Kind::Object);
  EXPECT_EQ(read.TypeId(fields[4].link), 10u);
  EXPECT_EQ(read.Identity(fields[4].link), (gsl_RecordIdentity{3, 4}));
  EXPECT_EQ(fields[5].kind, Kind::Record);
  EXPECT_EQ(read.TypeId(fields[5].link), 9u);
  EXPECT_EQ(fields[6].kind, Kind::Null);
  EXPECT_EQ(fields[6].link, 0xFFFFFFFFu);
  const std::vector<gsl_RecordField> inner = this->FieldsOf(read, fields[5].link);
  ASSERT_EQ(inner.size(), 1u);
  EXPECT_EQ(inner[0].kind, Kind::Reference);
  EXPECT_EQ(inner[0].link, fields[4].link);
  EXPECT_EQ(inner[0].object, fields[4].object);
}

TYPED_TEST_P(RecordBorder, DoublesKeepTheirBits) {
  const std::uint64_t bits[] = {0,
                                0x8000000000000000u,
                                1,
                                0x000FFFFFFFFFFFFFu,
                                0x7FEFFFFFFFFFFFFFu,
                                0x7FF0000000000000u,
                                0xFFF0000000000000u,
                                0x7FF8000000000000u,
                                0x7FF0000000000001u,
                                0xFFFFFFFFFFFFFFFFu,
                                0x3FB999999999999Au};
  std::vector<double> values;
  for (const std::uint64_t word : bits) {
    values.emplace_back();
    std::memcpy(&values.back(), &word, sizeof word);
  }
  this->ExpectAsInAStore([&](gsl_RecordWriter& to) {
    const gsl_RecordIndex root = to.AddRoot(1, {});
    for (const double value : values)
      to.AddDouble(root, {"value", 0}, value);
    to.SetDoubles(to.AddRecord(root, {"matrix", 0}, false, 1, {}), values.data(), 1, values.size());
    to.SetDoubles(to.AddRecord(root, {"flat", 0}, false, 1, {}), nullptr, 0, 7);
    to.SetDoubles(to.AddRecord(root, {"none", 0}, false, 1, {}), nullptr, 0, 0);
  });
}

TYPED_TEST_P(RecordBorder, ArraysComeBackAndAreEmptyForAnotherCollection) {
  const gsl_RecordReader& read = this->Stored([](gsl_RecordWriter& to) {
    const gsl_RecordIndex root = to.AddRoot(1, {2, 3});
    const std::uint32_t numbers[] = {0, 0xFFFFFFFFu};
    to.SetUnsigneds(to.AddRecord(root, {"list", 2}, false, 4, {}), numbers, 2);
    const double values[] = {0.5, 1.5};
    to.SetDoubles(to.AddRecord(root, {"matrix", 3}, true, 5, {}), values, 1, 2);
    to.SetUnsigneds(to.AddRecord(root, {"empty", 2}, false, 4, {}), nullptr, 0);
  });
  std::vector<std::uint32_t> unsigneds = {9};
  std::vector<double> doubles = {9.0};
  std::size_t rows = 9;
  std::size_t columns = 9;
  const std::vector<gsl_RecordField> fields = this->FieldsOf(read, read.Root(0));
  ASSERT_EQ(fields.size(), 3u);
  read.ReadUnsigneds(fields[0].link, unsigneds);
  EXPECT_EQ(unsigneds, (std::vector<std::uint32_t>{0, 0xFFFFFFFFu}));
  read.ReadDoubles(fields[1].link, doubles, rows, columns);
  EXPECT_EQ(doubles, (std::vector<double>{0.5, 1.5}));
  EXPECT_EQ(rows, 1u);
  EXPECT_EQ(columns, 2u);
  read.ReadUnsigneds(fields[1].link, unsigneds);
  EXPECT_TRUE(unsigneds.empty());
  read.ReadDoubles(fields[0].link, doubles, rows, columns);
  EXPECT_TRUE(doubles.empty());
  EXPECT_EQ(rows + columns, 0u);
  unsigneds = {9};
  read.ReadUnsigneds(fields[2].link, unsigneds);
  EXPECT_TRUE(unsigneds.empty());
  EXPECT_EQ(read.Collection(fields[2].link), gsl_RecordCollection::Unsigneds);
}

TYPED_TEST_P(RecordBorder, FieldWithoutANameIsRefusedAndNothingIsStored) {
  this->ExpectAsInAStore([](gsl_RecordWriter& to) {
    const gsl_RecordIndex root = to.AddRoot(1, {});
    EXPECT_THROW(to.AddInteger(root, {"", 0}, 1), gsl_RecordError);
    EXPECT_THROW(to.AddString(root, {"", 0}, "text"), gsl_RecordError);
    EXPECT_THROW(to.AddRecord(root, {"", 0}, false, 1, {}), gsl_RecordError);
    EXPECT_THROW(to.AddInteger(root, {nullptr, 0}, 1), gsl_RecordError);
    EXPECT_THROW(to.AddReference(root, {"r", 0}, root), gsl_RecordError);
    to.AddString(root, {"s", 0}, "after");
  });
}

TYPED_TEST_P(RecordBorder, RootThatIsTakenBackLeavesNothing) {
  const gsl_RecordReader& read = this->Stored([](gsl_RecordWriter& to) {
    const auto fill = [&](int number) {
      const gsl_RecordIndex root = to.AddRoot(1, {});
      to.AddInteger(root, {"number", 0}, number);
      to.AddRecord(root, {"own", 0}, true, 2, {});
      return root;
    };
    fill(1);
    const gsl_RecordIndex second = fill(2);
    to.NameRoot("second");
    fill(3);
    to.TakeBack(second);
    fill(4);
    to.NameRoot("second");
  });
  ASSERT_EQ(read.RootCount(), 2u);
  EXPECT_EQ(this->FieldsOf(read, read.Root(0))[0].integer, 1);
  EXPECT_EQ(this->FieldsOf(read, read.Root(1))[0].integer, 4);
  EXPECT_EQ(read.FindRoot("second"), 1u);
}

TYPED_TEST_P(RecordBorder, RecordThatEndedTakesNoFurtherFields) {
  this->Stored([](gsl_RecordWriter& to) {
    const auto expectEnded = [&](gsl_RecordIndex record) {
      try {
        to.AddInteger(record, {"late", 0}, 1);
        ADD_FAILURE() << "taken";
      } catch (const gsl_RecordError& error) {
        EXPECT_STREQ(error.what(), "A record that has ended takes no further fields");
      }
    };
    const gsl_RecordIndex first = to.AddRoot(1, {});
    const gsl_RecordIndex child = to.AddRecord(first, {"child", 0}, false, 2, {});
    const gsl_RecordIndex inner = to.AddRecord(child, {"inner", 0}, false, 2, {});
    to.AddInteger(child, {"next", 0}, 2);
    expectEnded(inner);
    to.AddInteger(first, {"next", 0}, 3);
    expectEnded(child);
    const gsl_RecordIndex last = to.AddRoot(3, {});
    expectEnded(first);
    to.Finish();
    expectEnded(last);
  });
}

TYPED_TEST_P(RecordBorder, RootsAreFoundByNumberAndByName) {
  const gsl_RecordReader& read = this->Stored([](gsl_RecordWriter& to) {
    EXPECT_THROW(to.NameRoot("nothing"), gsl_RecordError);
    to.AddRoot(1, {});
    to.AddRoot(2, {});
    to.NameRoot("axis");
    to.AddRoot(3, {});
    to.NameRoot("first name");
    to.NameRoot("plane");
    const gsl_RecordIndex other = to.AddRoot(4, {});
    EXPECT_THROW(to.NameRoot("axis"), gsl_RecordError);
    EXPECT_THROW(to.NameRoot(""), gsl_RecordError);
    to.NameRoot("other");
    to.TakeBack(other);
  });
  ASSERT_EQ(read.RootCount(), 3u);
  EXPECT_EQ(read.RootName(0), "");
  EXPECT_EQ(read.RootName(1), "axis");
  EXPECT_EQ(read.FindRoot("axis"), 1u);
  EXPECT_EQ(read.FindRoot("plane"), 2u);
  EXPECT_EQ(read.FindRoot("first name"), 3u);
  EXPECT_EQ(read.FindRoot("other"), 3u);
  EXPECT_EQ(read.FindRoot(""), 3u);
}

TYPED_TEST_P(RecordBorder, ClassHasItsLastName) {
  const gsl_RecordReader& read = this->Stored([](gsl_RecordWriter& to) {
    to.AddRoot(1, {});
    to.NameClass(1, "old");
    to.NameClass(1, "new");
    to.AddRoot(2, {});
  });
  EXPECT_EQ(read.ClassName(1), "new");
  EXPECT_EQ(read.ClassName(2), "");
}

TYPED_TEST_P(RecordBorder, HeaderAgreesWithTheSingleCalls) {
  const gsl_RecordReader& read = this->Stored([](gsl_RecordWriter& to) {
    to.AddRoot(0xFFFFFFFFu, {});
    const gsl_RecordIndex list = to.AddRoot(7, {~std::uint64_t{0}, 1});
    to.SetCollection(list, gsl_RecordCollection::Objects);
    to.AddNull(list, {}, 3);
  });
  for (std::size_t i = 0; i < 2; ++i) {
    const gsl_RecordReader::Header header = read.ReadHeader(read.Root(i));
    EXPECT_EQ(header.typeId, read.TypeId(read.Root(i)));
    EXPECT_EQ(header.collection, read.Collection(read.Root(i)));
    EXPECT_EQ(header.identity, read.Identity(read.Root(i)));
    EXPECT_EQ(header.firstField, read.FirstField(read.Root(i)));
    EXPECT_EQ(header.firstField == gsl_RecordReader::kEnd, i == 0);
  }
}

TYPED_TEST_P(RecordBorder, ObjectsOfSeveralRootsAreSharedAndMayFormARing) {
  this->ExpectAsInAStore([](gsl_RecordWriter& to) {
    const gsl_RecordIndex first = to.AddRoot(1, {});
    const gsl_RecordIndex object = to.AddRecord(first, {"object", 0}, true, 2, {1, 1});
    const gsl_RecordIndex inner = to.AddRecord(object, {"inner", 0}, true, 2, {1, 1});
    to.AddReference(inner, {"back", 0}, object);
    to.AddInteger(object, {"after", 0}, 1);
    const gsl_RecordIndex second = to.AddRoot(1, {});
    to.AddReference(second, {"object", 0}, object);
    const gsl_RecordIndex list = to.AddRecord(second, {"list", 0}, false, 3, {});
    to.SetCollection(list, gsl_RecordCollection::Objects);
    to.AddReference(list, {}, inner);
    to.AddRecord(list, {}, true, 2, {1, 1});
    to.AddNull(list, {}, 2);
  });
}

TYPED_TEST_P(RecordBorder, DeepRecordsCostNoStack) {
  this->ExpectAsInAStore([](gsl_RecordWriter& to) {
    gsl_RecordIndex record = to.AddRoot(1, {});
    for (int level = 0; level < 20000; ++level)
      record = to.AddRecord(record, {"inner", -1}, level % 2 == 0, 1, {});
  });
}

REGISTER_TYPED_TEST_SUITE_P(RecordBorder, NothingWrittenIsNothingRead,
                            EveryKindOfFieldComesBackInWriteOrder, DoublesKeepTheirBits,
                            ArraysComeBackAndAreEmptyForAnotherCollection,
                            FieldWithoutANameIsRefusedAndNothingIsStored,
                            RootThatIsTakenBackLeavesNothing, RecordThatEndedTakesNoFurtherFields,
                            RootsAreFoundByNumberAndByName, ClassHasItsLastName,
                            HeaderAgreesWithTheSingleCalls,
                            ObjectsOfSeveralRootsAreSharedAndMayFormARing, DeepRecordsCostNoStack);

#endif
