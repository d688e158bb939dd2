#include "cls_ReadRun.h"

#include "ForwardingReader.h"
#include "RawRecords.h"
#include "Records.h"
#include "cls_RecordException.h"
#include "cls_xp1DArrayListUint.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace {

constexpr cls_ReadRun::Field kRows[] = {{"_number", cls_IntegerAttribute},
                                        {"_real", cls_DoubleAttribute},
                                        {"_name", cls_EnumerationAttribute},
                                        {"_flag", cls_BooleanAttribute},
                                        {"_part", cls_ObjectAttribute}};
constexpr cls_ReadRun::Fields kFields = {kRows, 5};
constexpr cls_ReadRun::Field kPartRows[] = {{"_x", cls_DoubleAttribute}};
constexpr cls_ReadRun::Fields kPartFields = {kPartRows, 1};
constexpr unsigned int kPartType = 12;
constexpr int kNames = 0;

void WritePart(const cls_WriteVisitor& to, unsigned int typeId = kPartType) {
  const cls_WriteVisitor part(to, {-1, "_part"});
  part.StartWrite(typeId, cls_Uid(5, 300));
  part.WriteDouble({-1, "_x"}, -2.5);
}

/// Writes the fields of the run, and one that is not in the run.
gsl_RecordStore Sample(unsigned int partType = kPartType) {
  return Recorded(10, cls_Uid(3, 4), [partType](const cls_WriteVisitor& to) {
    to.WriteInteger({-1, "_number"}, -300);
    to.WriteDouble({-1, "_real"}, 0.5);
    to.WriteString({-1, "_name"}, "second");
    to.WriteBoolean({-1, "_flag"}, true);
    WritePart(to, partType);
    to.WriteInteger({-1, "_more"}, 9);
  });
}

int LengthOf(const cow_String& text) {
  return static_cast<int>(text.Length());
}

/// Takes the fields before the part.
void TakePlain(cls_ReadRun& run) {
  EXPECT_EQ(run.TakeInteger(), -300);
  EXPECT_EQ(run.TakeDouble(), 0.5);
  EXPECT_EQ(run.TakeNamed(&kNames, LengthOf), 6);
  EXPECT_TRUE(run.TakeBoolean());
}

constexpr cls_ReadRun::Field kListRows[] = {{"_ids", cls_ObjectAttribute},
                                            {"_more", cls_IntegerAttribute}};
constexpr cls_ReadRun::Fields kListFields = {kListRows, 2};

/// A record with a list, and an integer after the list.
gsl_RecordStore WithList(const std::function<void(const cls_WriteVisitor&)>& writeList) {
  return Recorded(10, cls_Uid(3, 4), [&](const cls_WriteVisitor& to) {
    writeList(cls_WriteVisitor(to, {-1, "_ids"}));
    to.WriteInteger({-1, "_more"}, 9);
  });
}

/// Whether a run takes the list; what follows is then taken too.
bool TakesList(const gsl_RecordStore& store, cls_xp1DArrayListUint& list) {
  cls_Load load(store);
  const cls_ReadVisitor visitor(load, 0);
  cls_ReadRun run(visitor, kListFields);
  EXPECT_TRUE(run.Fits());
  if (!run.TakeUnsigneds(list)) {
    // Nothing was taken.
    run.TakeObject([](const cls_ReadVisitor& owner) {
      EXPECT_FALSE(cls_ReadVisitor(owner, {-1, "_ids"}).IsAbsent());
    });
    EXPECT_EQ(run.TakeInteger(), 9);
    return false;
  }
  EXPECT_EQ(run.TakeInteger(), 9);
  return true;
}

/// The record of WithList, so many records deep. Each of those has one field, the next record.
gsl_RecordStore WithListBelow(std::uint32_t above) {
  const RawRecords inner = RawCopy(WithList([](const cls_WriteVisitor& to) {
    const unsigned int id = 7;
    to.StartWrite(cls_kCollectionTypeId, cls_Uid());
    to.WriteUnsigneds(&id, 1);
  }));
  RawRecord outer;
  outer.typeId = 10;
  RawRecords records(above, outer);
  records.insert(records.end(), inner.begin(), inner.end());
  for (std::uint32_t i = 0; i < above; ++i) {
    RawField field;
    field.name = "_part";
    field.kind = gsl_RecordKind::Record;
    field.link = i + 1;
    records[i].fields.push_back(field);
  }
  for (std::size_t i = above; i < records.size(); ++i) {
    records[i].isRoot = false;
    for (RawField& field : records[i].fields) {
      if (field.kind == gsl_RecordKind::Record) field.link += above;
    }
  }
  records.front().isRoot = true;
  const std::vector<unsigned char> bytes = RawBytes(records);
  return gsl_RecordStore::FromBytes(bytes.data(), bytes.size());
}

bool TakesListBelow(const cls_ReadVisitor& owner, unsigned int above) {
  if (above > 0) return TakesListBelow(cls_ReadVisitor(owner, {-1, "_part"}), above - 1);
  cls_xp1DArrayListUint list;
  cls_ReadRun run(owner, kListFields);
  EXPECT_TRUE(run.Fits());
  const bool isTaken = run.TakeUnsigneds(list);
  EXPECT_EQ(list.Count(), isTaken ? 1u : 0u);
  return isTaken;
}

bool FitsWhenWritten(const std::function<void(const cls_WriteVisitor&)>& write) {
  const gsl_RecordStore store = Recorded(10, cls_Uid(3, 4), write);
  cls_Load load(store);
  const cls_ReadVisitor visitor(load, 0);
  const cls_ReadRun run(visitor, kFields);
  return run.Fits();
}

} // namespace

TEST(ClsReadRun, TakesEachFieldAndLeavesTheVisitorAfterThem) {
  const gsl_RecordStore store = Sample();
  cls_Load load(store);
  for (int round = 0; round < 2; ++round) {
    const cls_ReadVisitor visitor(load, 0);
    {
      cls_ReadRun run(visitor, kFields);
      ASSERT_TRUE(run.Fits());
      TakePlain(run);
      cls_ReadRun part(run, kPartType, kPartFields);
      ASSERT_TRUE(part.Fits());
      EXPECT_EQ(part.GetUid(), cls_Uid(5, 300));
      EXPECT_EQ(part.TakeDouble(), -2.5);
      run.SkipObject(part);
    }
    EXPECT_EQ(visitor.ReadInteger({-1, "_more"}, 0), 9);
    EXPECT_EQ(visitor.ReadInteger({-1, "_number"}, 0), -300);
  }
}

TEST(ClsReadRun, AfterARunTheFieldRightAfterItCountsAmongThoseOfOneName) {
  const gsl_RecordStore store = Recorded(10, cls_Uid(3, 4), [](const cls_WriteVisitor& to) {
    to.WriteInteger({-1, "_number"}, -300);
    to.WriteDouble({-1, "_real"}, 0.5);
    to.WriteString({-1, "_name"}, "second");
    to.WriteBoolean({-1, "_flag"}, true);
    WritePart(to);
    to.WriteInteger({-1, "_number"}, 9);
  });
  cls_Load load(store);
  const cls_ReadVisitor visitor(load, 0);
  {
    cls_ReadRun run(visitor, kFields);
    ASSERT_TRUE(run.Fits());
    TakePlain(run);
    run.SkipObject(cls_ReadRun(run, kPartType, kPartFields));
  }
  EXPECT_EQ(visitor.ReadInteger({-1, "_number"}, 0), 9);
}

TEST(ClsReadRun, AnObjectMayBeReadThroughTheVisitor) {
  const gsl_RecordStore store = Sample(13);
  cls_Load load(store);
  const cls_ReadVisitor visitor(load, 0);
  double x = 0.0;
  {
    cls_ReadRun run(visitor, kFields);
    TakePlain(run);
    // The part is of another class.
    EXPECT_FALSE(cls_ReadRun(run, kPartType, kPartFields).Fits());
    run.TakeObject([&x](const cls_ReadVisitor& owner) {
      const cls_ReadVisitor part(owner, {-1, "_part"});
      EXPECT_EQ(part.TypeId(), 13u);
      x = part.ReadDouble({-1, "_x"}, 0.0);
    });
  }
  EXPECT_EQ(x, -2.5);
  EXPECT_EQ(visitor.ReadInteger({-1, "_more"}, 0), 9);
}

TEST(ClsReadRun, AnExceptionLeavesTheVisitorAfterTheField) {
  const gsl_RecordStore store = Sample();
  cls_Load load(store);
  const cls_ReadVisitor visitor(load, 0);
  const auto refuse = [](const cow_String&) -> int { throw std::string("refused"); };
  const auto take = [&] {
    cls_ReadRun run(visitor, kFields);
    EXPECT_EQ(run.TakeInteger(), -300);
    EXPECT_EQ(run.TakeDouble(), 0.5);
    run.TakeNamed(&kNames, refuse);
  };
  EXPECT_THROW(take(), std::string);
  EXPECT_TRUE(visitor.ReadBoolean({-1, "_flag"}, false));
  EXPECT_STREQ(visitor.ReadString({-1, "_name"}, "none").CStr(), "second");
  const auto takeObject = [](const cls_ReadVisitor& from) {
    cls_ReadRun run(from, kFields);
    TakePlain(run);
    run.TakeObject([](const cls_ReadVisitor&) { throw std::string("refused"); });
  };
  const cls_ReadVisitor again(load, 0);
  EXPECT_THROW(takeObject(again), std::string);
  EXPECT_EQ(again.ReadInteger({-1, "_more"}, 0), 9);
}

TEST(ClsReadRun, AListIsTakenWithItsIdentity) {
  for (const cls_Uid& uid : {cls_Uid(5, 300), cls_Uid()}) {
    for (const std::vector<unsigned int>& ids :
         {std::vector<unsigned int>(), {0, 127, 128, 0xFFFFFFFFu}}) {
      const gsl_RecordStore store = WithList([&](const cls_WriteVisitor& to) {
        to.StartWrite(cls_kCollectionTypeId, uid);
        to.WriteUnsigneds(ids.data(), ids.size());
      });
      // What the list held before goes.
      cls_xp1DArrayListUint list;
      for (unsigned int i = 0; i < 9; ++i)
        list.Append(i);
      ASSERT_TRUE(TakesList(store, list));
      EXPECT_EQ(std::vector<unsigned int>(list.begin(), list.end()), ids);
      EXPECT_EQ(list.Uid(), uid);
    }
  }
}

TEST(ClsReadRun, AnotherCollectionOrAListWithFieldsIsLeftToTheVisitor) {
  const auto take = [](const std::function<void(const cls_WriteVisitor&)>& write) {
    cls_xp1DArrayListUint list;
    list.Append(6);
    const cls_Uid uid = list.Uid();
    const bool isTaken = TakesList(WithList(write), list);
    EXPECT_EQ(list.Count(), 1u);
    EXPECT_EQ(list.Uid(), uid);
    return isTaken;
  };
  const double number = 1.0;
  const unsigned int id = 7;
  EXPECT_FALSE(
      take([](const cls_WriteVisitor& to) { to.StartWrite(cls_kCollectionTypeId, cls_Uid()); }));
  EXPECT_FALSE(take([&](const cls_WriteVisitor& to) {
    to.StartWrite(cls_kCollectionTypeId, cls_Uid());
    to.WriteDoubles(&number, 1, 1);
  }));
  EXPECT_FALSE(take([&](const cls_WriteVisitor& to) {
    to.StartWrite(cls_kCollectionTypeId, cls_Uid());
    to.WriteInteger({-1, "_field"}, 1);
    to.WriteUnsigneds(&id, 1);
  }));
}

TEST(ClsReadRun, AListAtTheLimitOfNestingIsTakenAndNoDeeper) {
  // The list is one deeper than its owner.
  constexpr unsigned int kDeepest = cls_ReadVisitor::kMostNesting;
  for (const unsigned int above : {kDeepest - 1, kDeepest}) {
    const gsl_RecordStore store = WithListBelow(above);
    cls_Load load(store);
    EXPECT_EQ(TakesListBelow(cls_ReadVisitor(load, 0), above), above < kDeepest);
  }
}

TEST(ClsReadRun, NamesOfTwoSetsAreKeptApart) {
  const gsl_RecordStore store = Sample();
  cls_Load load(store);
  constexpr int kOther = 0;
  for (int round = 0; round < 4; ++round) {
    const cls_ReadVisitor visitor(load, 0);
    cls_ReadRun run(visitor, kFields);
    EXPECT_EQ(run.TakeInteger(), -300);
    EXPECT_EQ(run.TakeDouble(), 0.5);
    const bool isOther = round % 2 != 0;
    const int value = run.TakeNamed(isOther ? &kOther : &kNames, [isOther](const cow_String& name) {
      return LengthOf(name) + (isOther ? 100 : 0);
    });
    EXPECT_EQ(value, isOther ? 106 : 6);
  }
}

TEST(ClsReadRun, NumbersOfEachLengthAreTakenWhereverTheyAre) {
  static constexpr cls_ReadRun::Field kNumber[] = {{"_number", cls_IntegerAttribute}};
  static constexpr cls_ReadRun::Fields kOne = {kNumber, 1};
  std::vector<int> numbers;
  for (int bits = 0; bits < 31; ++bits) {
    const int power = static_cast<int>(1u << bits);
    numbers.insert(numbers.end(), {power - 1, power, -power, -power - 1});
  }
  numbers.push_back(std::numeric_limits<int>::max());
  numbers.push_back(std::numeric_limits<int>::min());
  // Each number is also the last of its bytes.
  for (std::size_t count = 1; count <= numbers.size(); ++count) {
    gsl_RecordStore store;
    cls_Save save(store);
    for (std::size_t i = 0; i < count; ++i) {
      const cls_WriteVisitor to(save);
      to.StartWrite(10, cls_Uid(3, std::uint64_t{1} << (i % 64)));
      to.WriteInteger({-1, "_number"}, numbers[i]);
    }
    store.Finish();
    cls_Load load(store);
    for (std::size_t i = 0; i < count; ++i) {
      const cls_ReadVisitor visitor(load, i);
      EXPECT_EQ(visitor.GetUid(), cls_Uid(3, std::uint64_t{1} << (i % 64)));
      cls_ReadRun run(visitor, kOne);
      ASSERT_TRUE(run.Fits());
      EXPECT_EQ(run.TakeInteger(), numbers[i]);
    }
  }
}

TEST(ClsReadRun, ANumberInAWordIsReadAsByteByByte) {
  // Each byte is one of those that decide.
  constexpr unsigned char kBytes[] = {0x00, 0x01, 0x7F, 0x80, 0x81, 0xFF};
  for (unsigned int all = 0; all < 6 * 6 * 6 * 6 * 6; ++all) {
    unsigned char bytes[6] = {};
    for (unsigned int i = 0, rest = all; i < 5; ++i, rest /= 6)
      bytes[i] = kBytes[rest % 6];
    std::uint64_t expected = 0;
    std::size_t length = 0;
    do {
      expected |= std::uint64_t{bytes[length] & 0x7Fu} << (7 * length);
    } while (bytes[length++] >= 0x80u);
    for (const auto read : {cls_StoredFields::NumberInWord, cls_StoredFields::NumberAt}) {
      std::uint64_t number = 7;
      EXPECT_EQ(read(bytes, number), bytes + length);
      EXPECT_EQ(number, expected);
    }
  }
}

TEST(ClsReadRun, WordsEndBeforeTheBytes) {
  const unsigned char bytes[5] = {};
  for (std::size_t count = 0; count < 4; ++count)
    EXPECT_EQ(cls_StoredFields::EndOfWords(bytes, count), bytes);
  EXPECT_EQ(cls_StoredFields::EndOfWords(bytes, 4), bytes + 1);
  EXPECT_EQ(cls_StoredFields::EndOfWords(bytes, 5), bytes + 2);
}

TEST(ClsReadRun, LongAndManyTextsAreFoundEachTime) {
  static constexpr cls_ReadRun::Field kText[] = {{"_name", cls_EnumerationAttribute}};
  static constexpr cls_ReadRun::Fields kOne = {kText, 1};
  gsl_RecordStore store;
  cls_Save save(store);
  for (int i = 0; i < 200; ++i) {
    const cls_WriteVisitor to(save);
    to.StartWrite(10, cls_Uid(3, 4 + static_cast<std::uint64_t>(i)));
    to.WriteString({-1, "_name"}, std::string(static_cast<std::size_t>(i % 100), 'n').c_str());
  }
  store.Finish();
  cls_Load load(store);
  for (std::size_t i = 0; i < 200; ++i) {
    const cls_ReadVisitor visitor(load, i);
    cls_ReadRun run(visitor, kOne);
    ASSERT_TRUE(run.Fits());
    EXPECT_EQ(run.TakeNamed(&kNames, LengthOf), static_cast<int>(i % 100));
  }
}

TEST(ClsReadRun, ATextThatWasReadAsAStringHasItsOwnValueAmongTheNames) {
  // The texts are more than are kept, so that each takes the place of another.
  static constexpr cls_ReadRun::Field kText[] = {{"_name", cls_EnumerationAttribute}};
  static constexpr cls_ReadRun::Fields kOne = {kText, 1};
  constexpr std::size_t kTexts = 60;
  gsl_RecordStore store;
  cls_Save save(store);
  for (std::size_t i = 0; i < kTexts; ++i) {
    const cls_WriteVisitor to(save);
    to.StartWrite(10, cls_Uid(3, 4));
    to.WriteString({-1, "_name"}, std::string(i, 'n').c_str());
  }
  store.Finish();
  cls_Load load(store);
  for (std::size_t i = 0; i < kTexts; ++i) {
    EXPECT_EQ(cls_ReadVisitor(load, i).ReadString({-1, "_name"}, "none").Length(), i);
    const cls_ReadVisitor visitor(load, i);
    cls_ReadRun run(visitor, kOne);
    ASSERT_TRUE(run.Fits());
    EXPECT_EQ(run.TakeNamed(&kNames, LengthOf), static_cast<int>(i));
  }
}

TEST(ClsReadRun, OnlyTheFieldsOfTheRunInTheirOrderFit) {
  const auto write = [](const cls_WriteVisitor& to, const char* first, bool isReal, bool hasFlag) {
    to.WriteInteger({-1, first}, 1);
    if (isReal) to.WriteDouble({-1, "_real"}, 1.0);
    if (!isReal) to.WriteInteger({-1, "_real"}, 1);
    to.WriteString({-1, "_name"}, "a");
    if (hasFlag) to.WriteBoolean({-1, "_flag"}, false);
    WritePart(to);
  };
  const auto fits = [&write](const char* first, bool isReal, bool hasFlag) {
    return FitsWhenWritten([&](const cls_WriteVisitor& to) { write(to, first, isReal, hasFlag); });
  };
  EXPECT_TRUE(fits("_number", true, true));
  EXPECT_FALSE(fits("_numbe", true, true));
  EXPECT_FALSE(fits("_numbers", true, true));
  EXPECT_FALSE(fits("_number", false, true));
  EXPECT_FALSE(fits("_number", true, false));
  EXPECT_FALSE(FitsWhenWritten([](const cls_WriteVisitor&) {}));
  EXPECT_FALSE(FitsWhenWritten([](const cls_WriteVisitor& to) {
    to.WriteInteger({-1, "_number"}, 1);
    to.WriteDouble({-1, "_real"}, 1.0);
    to.WriteString({-1, "_name"}, "a");
    to.WriteBoolean({-1, "_flag"}, false);
    to.WriteNullObject({-1, "_part"}, 12);
  }));
}

TEST(ClsReadRun, AVisitorThatHasReadAFieldHasNoRun) {
  const gsl_RecordStore store = Sample();
  cls_Load load(store);
  const cls_ReadVisitor visitor(load, 0);
  EXPECT_EQ(visitor.ReadInteger({-1, "_number"}, 0), -300);
  EXPECT_FALSE(cls_ReadRun(visitor, kFields).Fits());
  EXPECT_EQ(visitor.ReadDouble({-1, "_real"}, 0.0), 0.5);
  const cls_ReadVisitor lost(load, 0);
  EXPECT_TRUE(lost.ReadBoolean({-1, "_flag"}, false));
  EXPECT_FALSE(cls_ReadRun(lost, kFields).Fits());
}

TEST(ClsReadRun, AnotherReaderAndAnAbsentRecordHaveNoRun) {
  const gsl_RecordStore store = Sample();
  const ForwardingReader other(store);
  cls_Load otherLoad(other);
  EXPECT_FALSE(cls_ReadRun(cls_ReadVisitor(otherLoad, 0), kFields).Fits());
  cls_Load load(store);
  const cls_ReadVisitor visitor(load, 0);
  const cls_ReadVisitor absent(visitor, {-1, "_missing"});
  EXPECT_TRUE(absent.IsAbsent());
  EXPECT_FALSE(cls_ReadRun(absent, kFields).Fits());
}
