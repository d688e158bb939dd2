#include "RecordFrame.h"

#include "RawRecords.h"
#include "gsl_RecordError.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

using Form = std::vector<unsigned char>;

namespace {

Form Framed(const Form& body) {
  Form bytes = gsl_records::StartFrame();
  bytes.insert(bytes.end(), body.begin(), body.end());
  gsl_records::FinishFrame(bytes);
  return bytes;
}

Form RandomBody(std::size_t size) {
  std::mt19937 random(static_cast<unsigned int>(size));
  Form body(size);
  for (unsigned char& byte : body)
    byte = static_cast<unsigned char>(random());
  return body;
}

std::string MessageFor(const Form& bytes) {
  try {
    gsl_records::CheckedBody({bytes.data(), bytes.size()}).SumAll();
  } catch (const gsl_RecordError& error) {
    return error.what();
  }
  return "accepted";
}

constexpr std::size_t kBlock = gsl_records::kBlockSize;

} // namespace

TEST(RecordFrame, BodyComesBackAndTheFrameIsTheOneOfAnotherEncoder) {
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{1000}, kBlock - 1,
                                 kBlock, kBlock + 1, 2 * kBlock, 2 * kBlock + 5}) {
    const Form body = RandomBody(size);
    const Form bytes = Framed(body);
    EXPECT_TRUE(bytes == RawFrame(body)) << size;
    gsl_records::CheckedBody checked({bytes.data(), bytes.size()});
    checked.SumAll();
    const gsl_records::Bytes read = checked.Body();
    ASSERT_EQ(read.count, size);
    EXPECT_TRUE(Form(read.begin, read.begin + read.count) == body) << size;
  }
}

TEST(RecordFrame, ForeignBytesAreNamed) {
  EXPECT_EQ(MessageFor({}), "The bytes are not records: there are no bytes, but records start with "
                            "67 73 6c 72 (\"gslr\")");
  EXPECT_EQ(MessageFor({'s', 'o', 'l', 'i', 'd'}),
            "The bytes are not records: they start with 73 6f 6c 69, but records start with "
            "67 73 6c 72 (\"gslr\")");
  EXPECT_EQ(MessageFor({'g', 's'}), "The bytes are not records: they start with 67 73, but records "
                                    "start with 67 73 6c 72 (\"gslr\")");
}

TEST(RecordFrame, OtherVersionsAreNamed) {
  Form bytes = Framed({1, 2, 3});
  bytes[4] = 3;
  EXPECT_EQ(MessageFor(bytes),
            "The records have format version 3, which is newer, but this library "
            "reads version 2");
  bytes[4] = 1;
  EXPECT_EQ(MessageFor(bytes),
            "The records have format version 1, but this library reads version 2");
}

TEST(RecordFrame, UnknownFeaturesAreNamed) {
  Form bytes = {'g', 's', 'l', 'r', 2, 0x82, 0, 0};
  AppendNumber(bytes, 0, 8);
  AppendNumber(bytes, RawChecksum(bytes), 4);
  EXPECT_EQ(MessageFor(bytes), "The records use the features 0x82, but this library knows none");
}

TEST(RecordFrame, BytesWithoutAMeaningAreZero) {
  for (const std::size_t at : {6u, 7u}) {
    Form bytes = {'g', 's', 'l', 'r', 2, 0, 0, 0};
    bytes[at] = 1;
    AppendNumber(bytes, 0, 8);
    AppendNumber(bytes, RawChecksum(bytes), 4);
    EXPECT_EQ(MessageFor(bytes), "Bytes 6 and 7 of the records are not 0, but must be");
  }
}

TEST(RecordFrame, CutOrExtendedBytesAreNamed) {
  const Form bytes = Framed({1, 2, 3});
  ASSERT_EQ(bytes.size(), 27u);
  EXPECT_EQ(MessageFor(Form(bytes.begin(), bytes.begin() + 4)),
            "The records are cut after 4 bytes, before their format version");
  EXPECT_EQ(MessageFor(Form(bytes.begin(), bytes.begin() + 19)),
            "The records are cut after 19 bytes, within their header of 20");
  EXPECT_EQ(MessageFor(Form(bytes.begin(), bytes.end() - 1)),
            "The records have 26 bytes, but their header announces a body of 3");
  Form longer = bytes;
  longer.push_back(0);
  EXPECT_EQ(MessageFor(longer),
            "The records have 28 bytes, but their header announces a body of 3");
}

TEST(RecordFrame, AnnouncedLengthCannotWrapAround) {
  // With the checksums of its blocks, the first length has 2^64 bytes.
  for (const std::uint64_t length : {std::uint64_t{18446673705233808384u}, ~std::uint64_t{0},
                                     ~std::uint64_t{0} - 3, std::uint64_t{1} << 63}) {
    Form bytes = {'g', 's', 'l', 'r', 2, 0, 0, 0};
    AppendNumber(bytes, length, 8);
    AppendNumber(bytes, RawChecksum(bytes), 4);
    EXPECT_EQ(MessageFor(bytes),
              "The records have 20 bytes, but their header announces a body of " +
                  std::to_string(length));
  }
}

TEST(RecordFrame, DamageIsNamedWithItsPlace) {
  Form bytes = Framed(RandomBody(2 * kBlock + 5));
  bytes[10] ^= 1;
  EXPECT_EQ(MessageFor(bytes),
            "The records are damaged: the checksum of their header does not match");
  bytes[10] ^= 1;
  bytes[20 + kBlock] ^= 1;
  EXPECT_EQ(MessageFor(bytes), "The records are damaged: the checksum of bytes 1048596 to 2097171 "
                               "does not match");
  bytes[20 + kBlock] ^= 1;
  bytes.back() ^= 1;
  EXPECT_EQ(MessageFor(bytes), "The records are damaged: the checksum of bytes 2097172 to 2097176 "
                               "does not match");
}

TEST(RecordFrame, BlocksThatChangedPlacesWithTheirChecksumsAreNoticed) {
  const Form body = RandomBody(3 * kBlock);
  Form bytes = Framed(body);
  const auto block = [&](std::size_t i) {
    return bytes.begin() + static_cast<std::ptrdiff_t>(20 + i * kBlock);
  };
  const auto sum = [&](std::size_t i) {
    return bytes.begin() + static_cast<std::ptrdiff_t>(20 + 3 * kBlock + 4 * i);
  };
  std::swap_ranges(block(0), block(1), block(2));
  std::swap_ranges(sum(0), sum(1), sum(2));
  EXPECT_NE(MessageFor(bytes), "accepted");
}

TEST(RecordFrame, RandomDamageOfALargeFormIsNoticed) {
  const Form bytes = Framed(RandomBody(50000));
  Form changed = bytes;
  std::mt19937 random(20261122);
  for (int n = 0; n < 5000; ++n) {
    const std::size_t begin = random() % bytes.size();
    const std::size_t end = std::min(bytes.size(), begin + 1 + random() % 64);
    for (std::size_t i = begin; i < end; ++i)
      changed[i] = static_cast<unsigned char>(random());
    if (changed != bytes) {
      EXPECT_NE(MessageFor(changed), "accepted") << begin << ' ' << end;
    }
    for (std::size_t i = begin; i < end; ++i)
      changed[i] = bytes[i];
  }
}

TEST(RecordFrame, BodyIsSummedAheadOfItsReader) {
  const Form body = RandomBody(2 * kBlock + 5);
  const Form bytes = Framed(body);
  gsl_records::CheckedBody checked({bytes.data(), bytes.size()});
  const unsigned char* const begin = checked.Body().begin;
  const unsigned char* const end = begin + checked.Body().count;
  ASSERT_EQ(checked.Body().count, body.size());
  const unsigned char* summed = begin;
  while (summed != end) {
    const unsigned char* const next = checked.SumPast(summed);
    ASSERT_GT(next, summed);
    EXPECT_EQ(checked.SumPast(summed), next);
    EXPECT_EQ(checked.SumPast(begin), next);
    summed = next;
  }
  EXPECT_EQ(checked.SumPast(end), end);
}

TEST(RecordFrame, DamageIsFoundWhereItsBlockEndsAndReportedOnce) {
  Form bytes = Framed(RandomBody(3 * kBlock));
  bytes[gsl_records::kHeaderSize + kBlock] ^= 1;
  gsl_records::CheckedBody checked({bytes.data(), bytes.size()});
  const unsigned char* const begin = checked.Body().begin;
  EXPECT_GE(checked.SumPast(begin + kBlock - 1), begin + kBlock);
  EXPECT_THROW(static_cast<void>(checked.SumPast(begin + 2 * kBlock - 1)), gsl_RecordError);
  EXPECT_NO_THROW(checked.SumAll());
  gsl_records::CheckedBody whole({bytes.data(), bytes.size()});
  EXPECT_THROW(whole.SumAll(), gsl_RecordError);
}
