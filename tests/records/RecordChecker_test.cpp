#include "RawRecords.h"
#include "gsl_RecordError.h"
#include "gsl_RecordStore.h"

#include <gtest/gtest.h>

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
