#include "RecordLoader.h"

#include "DatabaseSamples.h"
#include "SameContents.h"
#include "TemporaryFolder.h"
#include "TestScale.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <random>
#include <string>

namespace {

using namespace database_samples;

class RecordLoaderTest : public testing::Test {
protected:
  RecordLoaderTest() {
    CreateEveryKind(m_path);
    m_bytes = BytesOf(m_path);
  }

  /// The message of reading after a change by another program, without the path.
  std::string MessageAfter(const char* sql) {
    RunSql(m_path, (std::string("PRAGMA foreign_keys = OFF; ") + sql).c_str());
    const std::string message = MessageOfReading(m_path);
    m_folder.Write("model.gslm", m_bytes);
    return message.find(m_path + ": ") == 0 ? message.substr(m_path.size() + 2) : message;
  }

  TemporaryFolder m_folder;
  std::string m_path = m_folder.Path("model.gslm");
  std::string m_bytes;
};

/// Reads the bytes as a model. Returns whether they were refused by name; what is read otherwise
/// must be the expected contents.
bool IsRefused(const TemporaryFolder& folder, const std::string& bytes,
               const gsl_RecordReader& expected) {
  const std::string path = folder.Write("damaged.gslm", bytes);
  try {
    const Model model(path, Access::Read, kNoPatience);
    const auto roots = model.Roots();
    const auto read = model.ReadAll();
    EXPECT_TRUE(SameContents(*read, expected));
    EXPECT_EQ(roots.size(), expected.RootCount());
    EXPECT_EQ(roots[0].className, expected.ClassName(expected.TypeId(expected.Root(0))));
    return false;
  } catch (const gsl_RecordError& error) {
    EXPECT_EQ(std::string(error.what()).find(path + ": "), 0u) << error.what();
    EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos) << error.what();
    return true;
  }
}

} // namespace

TEST_F(RecordLoaderTest, ChangesOfOtherProgramsAreRefusedWithTheNameOfTheRoot) {
  const std::string damaged = "the root \"part\" is damaged: ";
  const std::string sum = damaged + "the checksum of its records does not match";
  EXPECT_EQ(MessageAfter("SELECT 1"), "no error");
  EXPECT_EQ(MessageAfter("UPDATE fields SET value = -8 WHERE value = -7"), sum);
  EXPECT_EQ(MessageAfter("UPDATE fields SET value = x'3FF8000000000001' WHERE kind = 1"), sum);
  EXPECT_EQ(MessageAfter("UPDATE fields SET kind = 2 WHERE kind = 0 AND value = 1"), sum);
  EXPECT_EQ(MessageAfter("UPDATE names SET name = 'y' WHERE name = 'x'"), sum);
  EXPECT_EQ(MessageAfter("UPDATE names SET number = 2 WHERE name = 'x'"), sum);
  EXPECT_EQ(MessageAfter("DELETE FROM fields WHERE record = 1 AND position = 4"), sum);
  EXPECT_EQ(MessageAfter("UPDATE fields SET position = 99 WHERE record = 1 AND position = 0"), sum);
  EXPECT_EQ(MessageAfter("UPDATE records SET serial = 10 WHERE id = 1"), sum);
  EXPECT_EQ(MessageAfter("UPDATE records SET class = 7 WHERE id = 2"), sum);
  EXPECT_EQ(MessageAfter("UPDATE records SET collection = 0 WHERE collection = 57"), sum);
  EXPECT_EQ(MessageAfter("UPDATE records SET elements = zeroblob(8) WHERE collection = 57"), sum);
  EXPECT_EQ(MessageAfter("UPDATE records SET rows = 2, columns = 1 WHERE collection = 82"), sum);
  EXPECT_EQ(MessageAfter("UPDATE fields SET value = 1 WHERE kind = 1"),
            damaged + "record 1 has a field whose value is not of its kind");
  EXPECT_EQ(MessageAfter("UPDATE fields SET kind = 6 WHERE kind = 5"),
            damaged + "record 1 has a field whose value is not of its kind");
  EXPECT_EQ(MessageAfter("UPDATE fields SET value = 2147483648 WHERE value = -7"),
            damaged + "record 1 has a field whose value is not of its kind");
  EXPECT_EQ(MessageAfter("UPDATE fields SET link = 99 WHERE kind = 5"),
            damaged + "record 99 is missing");
  EXPECT_EQ(MessageAfter("UPDATE fields SET link = 3 WHERE link = 4"),
            damaged + "record 3 belongs to two places, but is not a shared object");
  EXPECT_EQ(MessageAfter("UPDATE fields SET link = 1 WHERE link = 4"),
            damaged + "record 1 belongs to two places, but is not a shared object");
  EXPECT_EQ(MessageAfter("UPDATE records SET collection = 2 WHERE id = 1"),
            damaged + "record 1 has an unknown collection type");
  EXPECT_EQ(MessageAfter("UPDATE records SET class = -1 WHERE id = 1"),
            damaged + "record 1 has an unknown class");
  EXPECT_EQ(MessageAfter("UPDATE records SET elements = x'00' WHERE collection = 57"),
            damaged + "record 3 has a part of an element");
  EXPECT_EQ(MessageAfter("UPDATE records SET rows = 2 WHERE collection = 82"),
            damaged + "record 4 has another number of elements than its rows and columns");
  EXPECT_EQ(MessageAfter("DELETE FROM classes WHERE id = 7"), damaged + "its class 7 is missing");
  EXPECT_EQ(MessageAfter("UPDATE classes SET name = 'other' WHERE id = 7"),
            damaged + "the checksum of its class 7 does not match");
  EXPECT_EQ(MessageAfter("DELETE FROM names WHERE name = 'x'"),
            damaged + "the name 2 of a field is missing");
  EXPECT_EQ(MessageAfter("UPDATE names SET number = 2147483648 WHERE name = 'x'"),
            damaged + "the number of a field is too large");
  EXPECT_EQ(MessageAfter("UPDATE fields SET link = 2 WHERE link = 3"),
            damaged + "record 2 belongs to two places, but is not a shared object");
}

TEST_F(RecordLoaderTest, RootOfAReferenceAloneHoldsTheObject) {
  // The first root is damaged; the second is read without it, unless the object is damaged.
  RunSql(m_path, "UPDATE fields SET value = -8 WHERE value = -7");
  Model model(m_path, Access::Write);
  EXPECT_EQ(MessageOf([&] { model.Read("part"); }),
            m_path + ": the root \"part\" is damaged: the checksum of its records does not match");
  model.Write([](Transaction& t) { EXPECT_TRUE(t.Remove("part")); });
  const auto records = model.ReadAll();
  ASSERT_EQ(records->RootCount(), 1u);
  const gsl_RecordField shared = *records->Fields(records->Root(0)).begin();
  EXPECT_EQ(shared.kind, gsl_RecordKind::Object);
  EXPECT_EQ((*records->Fields(shared.link).begin()).integer, 1);
}

/// GSL_ALL_FLIPS=1 tries every bit, which takes minutes.
TEST_F(RecordLoaderTest, FlippedBitIsRefusedOrChangesNothing) {
  // Small pages, so that most bits have a meaning.
  RunSql(m_path, "PRAGMA page_size = 512");
  RunSql(m_path, "PRAGMA page_size = 512; VACUUM");
  const auto expected = Model(m_path, Access::Read).ReadAll();
  const std::string bytes = BytesOf(m_path);
  const bool isWhole = std::getenv("GSL_ALL_FLIPS") != nullptr;
  const std::size_t step = isWhole ? 1 : 8 * bytes.size() / static_cast<std::size_t>(Scaled(1000));
  long refused = 0;
  for (std::size_t bit = isWhole ? 0 : std::random_device()() % step; bit < 8 * bytes.size();
       bit += step) {
    std::string flipped = bytes;
    flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << (bit % 8)));
    SCOPED_TRACE("bit " + std::to_string(bit));
    refused += IsRefused(m_folder, flipped, *expected) ? 1 : 0;
    if (HasFailure()) return;
  }
  EXPECT_GT(refused, 0);
  if (isWhole) printf("%zu bits, %ld refused\n", 8 * bytes.size(), refused);
}

TEST_F(RecordLoaderTest, DamagedLargeModelIsRefusedOrReadsIdentically) {
  const std::string path = m_folder.Path("large.gslm");
  Model(path).Write([](Transaction& t) {
    gsl_RecordWriter& to = t.Writer();
    WriteEveryKind(to);
    for (int root = 0; root < 50; ++root) {
      const gsl_RecordIndex record = to.AddRoot(2, {2, static_cast<std::uint64_t>(root)});
      for (int i = 0; i < 40; ++i) {
        const gsl_RecordIndex point = to.AddRecord(record, {"point", i}, i % 2 == 0, 3, {3, 4});
        to.AddDouble(point, {"x", -1}, root + 0.1 * i);
        to.AddString(point, {"method", -1}, i % 3 == 0 ? "ByCoordinates" : "AtNode");
      }
    }
  });
  const auto expected = Model(path, Access::Read).ReadAll();
  const std::string bytes = BytesOf(path);
  const char* const rounds = std::getenv("GSL_DAMAGES");
  const std::uint64_t seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937_64 random(seed);
  long refused = 0;
  const long count = rounds != nullptr ? std::atol(rounds) : Scaled(150) + 20;
  for (long round = 0; round < count; ++round) {
    std::string damaged = bytes;
    const std::size_t at = random() % bytes.size();
    const std::size_t length = 1 + random() % (random() % 2 == 0 ? 4 : 600);
    const std::size_t from = random() % bytes.size();
    for (std::size_t i = at; i < std::min(at + length, damaged.size()); ++i) {
      // Other bytes, bytes of another place, or zeros.
      const std::uint64_t what =
          (round % 3 == 0)   ? random()
          : (round % 3 == 1) ? static_cast<unsigned char>(bytes[(from + i - at) % bytes.size()])
                             : 0;
      damaged[i] = static_cast<char>(static_cast<unsigned char>(what));
    }
    refused += IsRefused(m_folder, damaged, *expected) ? 1 : 0;
    if (HasFailure()) return;
  }
  EXPECT_GT(refused, 0);
  if (rounds != nullptr) printf("%ld damages, %ld refused\n", count, refused);
}
