#include "RandomNumbers.h"
#include "RawRecords.h"
#include "TestScale.h"
#include "gsl_RecordError.h"
#include "gsl_RecordStore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <string>
#include <vector>

// The checker is private: what it refuses shows in what a store reads. gsl_RecordBytes_test.cpp has
// the checks of the whole form.

namespace {

using Bytes = std::vector<unsigned char>;

/// A body with the fields "a" to "d" of one class, whose records and kinds the test chooses. The
/// text table has one text.
Bytes BodyWith(const std::vector<gsl_RecordKind>& kinds, std::uint32_t collection,
               const Bytes& record) {
  Bytes body = {1, 'w', 4, 1, 'a', 1, 'b', 1, 'c', 1, 'd'};
  const Bytes tables = {1, 7, 0, 1, 1, 't', 1, 9, 0, 0, 0, 0, 0, 0, 0};
  body.insert(body.end(), tables.begin(), tables.end());
  const Bytes shape = {1, 0, static_cast<unsigned char>(collection),
                       static_cast<unsigned char>(kinds.size())};
  body.insert(body.end(), shape.begin(), shape.end());
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    const Bytes field = {static_cast<unsigned char>(i), 1, static_cast<unsigned char>(kinds[i])};
    body.insert(body.end(), field.begin(), field.end());
  }
  // No object, one root without a name, one record.
  const Bytes roots = {0, 1, 0, 0, 1};
  body.insert(body.end(), roots.begin(), roots.end());
  body.insert(body.end(), record.begin(), record.end());
  return body;
}

/// The same body with records of zeros after the record, each of which is a root.
Bytes BodyFarFromEnd(const std::vector<gsl_RecordKind>& kinds, std::uint32_t collection,
                     const Bytes& record) {
  constexpr unsigned char kFollowing = 100;
  Bytes body = BodyWith(kinds, collection, {});
  body.resize(body.size() - 4);
  body.push_back(kFollowing + 1);
  for (unsigned char i = 0; i <= kFollowing; ++i) {
    body.push_back(0);
    body.push_back(i);
  }
  body.push_back(kFollowing + 1);
  body.insert(body.end(), record.begin(), record.end());
  for (unsigned char i = 0; i < kFollowing; ++i) {
    body.resize(body.size() + 2, 0);
    for (const gsl_RecordKind kind : kinds)
      body.resize(body.size() + (kind == gsl_RecordKind::Double ? 8 : 1), 0);
    if (collection == 1) body.push_back(0xFF);
    if (collection == 57) body.push_back(0);
    if (collection == 82) body.resize(body.size() + 2, 0);
  }
  return body;
}

/// Bytes of which many are parts of numbers, so that a record of them is often nearly right.
Bytes NearlyRecord(SplitMix& random) {
  constexpr unsigned char kBytes[] = {0, 0, 0, 1, 1, 2, 5, 0x0F, 0x10, 0x7F, 0x80, 0x81, 0xFF};
  Bytes record = {0, static_cast<unsigned char>(random() % 2)};
  const std::size_t size = 2 + random() % 24;
  while (record.size() < size)
    record.push_back(kBytes[random() % sizeof kBytes]);
  return record;
}

std::string ErrorOf(const Bytes& body) {
  const Bytes bytes = RawFrame(body);
  try {
    static_cast<void>(gsl_RecordStore::FromBytes(bytes.data(), bytes.size()));
  } catch (const gsl_RecordError& error) {
    return error.what();
  }
  return "";
}

constexpr gsl_RecordKind kDouble = gsl_RecordKind::Double;
constexpr gsl_RecordKind kBoolean = gsl_RecordKind::Boolean;
constexpr gsl_RecordKind kInteger = gsl_RecordKind::Integer;
constexpr gsl_RecordKind kString = gsl_RecordKind::String;

} // namespace

TEST(RecordChecker, NeighbouringDoublesEndWhereTheyShould) {
  const std::vector<gsl_RecordKind> kinds = {kDouble, kDouble, kBoolean, kDouble};
  Bytes record = {0, 1, 5};
  record.resize(record.size() + 16, 0xFF);
  record.push_back(1);
  record.resize(record.size() + 8, 0xFF);
  EXPECT_EQ(ErrorOf(BodyWith(kinds, 0, record)), "");
  for (std::size_t size = 0; size < record.size(); ++size) {
    const Bytes cut(record.begin(), record.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_NE(ErrorOf(BodyWith(kinds, 0, cut)), "") << size;
  }
  Bytes longer = record;
  longer.push_back(0);
  EXPECT_EQ(ErrorOf(BodyWith(kinds, 0, longer)), "Bytes follow the last record");
  // The boolean is where the doubles before it end, and nowhere else.
  record[3 + 16] = 2;
  EXPECT_EQ(ErrorOf(BodyWith(kinds, 0, record)),
            "A boolean in the bytes is neither true nor false");
}

TEST(RecordChecker, LongRecordThatIsCutIsRefused) {
  // The longest serial, then four doubles without their last byte.
  Bytes record = {0, 1};
  record.resize(11, 0xFF);
  record.push_back(0x01);
  record.resize(record.size() + 4 * 8 - 1, 0);
  const std::vector<gsl_RecordKind> kinds(4, kDouble);
  EXPECT_EQ(ErrorOf(BodyWith(kinds, 0, record)), "The bytes end inside a record");
  record.push_back(0);
  EXPECT_EQ(ErrorOf(BodyWith(kinds, 0, record)), "");
}

TEST(RecordChecker, NumbersHaveTheirLimits) {
  const Bytes most = {0, 1, 5, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F};
  EXPECT_EQ(ErrorOf(BodyWith({kInteger}, 0, most)), "");
  const Bytes more = {0, 1, 5, 0x80, 0x80, 0x80, 0x80, 0x10};
  EXPECT_EQ(ErrorOf(BodyWith({kInteger}, 0, more)), "A number in the bytes is too large");
  const Bytes padded = {0, 1, 0x85, 0x00, 0};
  EXPECT_EQ(ErrorOf(BodyWith({kInteger}, 0, padded)),
            "A number in the bytes takes more bytes than it needs");
  EXPECT_EQ(ErrorOf(BodyWith({kString}, 0, {0, 1, 5, 0})), "");
  EXPECT_EQ(ErrorOf(BodyWith({kString}, 0, {0, 1, 5, 1})),
            "A field in the bytes has an unknown text");
  EXPECT_EQ(ErrorOf(BodyWith({}, 0, {1, 1, 5})), "A record in the bytes has no shape");
  EXPECT_EQ(ErrorOf(BodyWith({}, 0, {0, 2, 5})), "An identity in the bytes has an unknown prefix");
}

TEST(RecordChecker, ElementsFollowTheFieldsOfEveryCollection) {
  EXPECT_EQ(ErrorOf(BodyWith({kBoolean}, 57, {0, 0, 1, 2, 3, 0xFF, 0x01})), "");
  EXPECT_EQ(ErrorOf(BodyWith({kBoolean}, 57, {0, 0, 1, 3, 3, 4})),
            "The bytes announce more than they hold");
  Bytes matrix = {0, 0, 1, 1, 2};
  matrix.resize(matrix.size() + 16, 0);
  EXPECT_EQ(ErrorOf(BodyWith({kBoolean}, 82, matrix)), "");
  matrix.pop_back();
  EXPECT_EQ(ErrorOf(BodyWith({kBoolean}, 82, matrix)), "The bytes announce more than they hold");
  EXPECT_EQ(ErrorOf(BodyWith({kBoolean}, 1, {0, 0, 1, 2, 1, 7, 5, 0xFF})), "");
  EXPECT_EQ(ErrorOf(BodyWith({kBoolean}, 1, {0, 0, 1, 2, 1})), "The bytes end inside a record");
  EXPECT_EQ(ErrorOf(BodyWith({kBoolean}, 1, {0, 0, 1, 6, 1, 0xFF})),
            "A field in the bytes is of an unknown kind");
}

TEST(RecordChecker, RefusesTheSameNearTheEndAndFarFromIt) {
  // A record that is far from the end is read without a look at the end.
  constexpr std::uint64_t kSeed = 20261124;
  SCOPED_TRACE(kSeed);
  SplitMix random(kSeed);
  constexpr gsl_RecordKind kKinds[] = {
      kDouble, kBoolean, kInteger, kInteger, kString, gsl_RecordKind::Record, gsl_RecordKind::Null};
  constexpr std::uint32_t kCollections[] = {0, 0, 1, 57, 82};
  // Fewer do not show every refusal.
  constexpr long kRounds = std::max(Scaled(60000), 12000L);
  std::map<std::string, int> found;
  for (int round = 0; round < kRounds; ++round) {
    std::vector<gsl_RecordKind> kinds(random() % 5);
    for (gsl_RecordKind& kind : kinds)
      kind = kKinds[random() % std::size(kKinds)];
    const std::uint32_t collection = kCollections[random() % std::size(kCollections)];
    const Bytes record = NearlyRecord(random);
    const std::string near = ErrorOf(BodyWith(kinds, collection, record));
    // A record that does not end where it should goes on in the next one.
    if (near == "The bytes end inside a record" || near == "Bytes follow the last record" ||
        near == "The bytes announce more than they hold") {
      continue;
    }
    ASSERT_EQ(ErrorOf(BodyFarFromEnd(kinds, collection, record)), near) << round;
    ++found[near];
  }
  EXPECT_EQ(found.size(), 8u);
  EXPECT_GE(found[""], kRounds / 120);
}

TEST(RecordChecker, LongNumbersFarFromTheEndHaveTheirLimits) {
  const auto farError = [](const std::vector<gsl_RecordKind>& kinds, const Bytes& record) {
    return ErrorOf(BodyFarFromEnd(kinds, 0, record));
  };
  EXPECT_EQ(farError({kInteger}, {0, 1, 5, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F}), "");
  EXPECT_EQ(farError({kInteger}, {0, 1, 5, 0x80, 0x80, 0x80, 0x80, 0x10}),
            "A number in the bytes is too large");
  EXPECT_EQ(farError({kInteger}, {0, 1, 5, 0x80, 0x80, 0x80, 0x00}),
            "A number in the bytes takes more bytes than it needs");
  Bytes serial = {0, 1};
  serial.resize(11, 0xFF);
  serial.push_back(0x01);
  EXPECT_EQ(farError({}, serial), "");
  serial.back() = 0x02;
  EXPECT_EQ(farError({}, serial), "A number in the bytes is too long");
  EXPECT_EQ(farError({}, {0, 1, 0x80, 0x00}),
            "A number in the bytes takes more bytes than it needs");
}
