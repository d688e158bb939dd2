#include "RecordLoader.h"

#include "DatabaseSamples.h"
#include "SameContents.h"
#include "TemporaryFolder.h"
#include "TestScale.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

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

/// Expects the list of roots that the contents have.
void ExpectRootsOf(const gsl_RecordReader& expected, const Model& model) {
  const std::vector<gsl_model::RootEntry> roots = model.Roots();
  ASSERT_EQ(roots.size(), expected.RootCount());
  for (std::size_t i = 0; i < roots.size(); ++i) {
    const gsl_RecordIndex record = expected.Root(i);
    EXPECT_EQ(roots[i].name, expected.RootName(i));
    EXPECT_EQ(roots[i].className, expected.ClassName(expected.TypeId(record)));
    EXPECT_EQ(roots[i].typeId, expected.TypeId(record));
    EXPECT_EQ(roots[i].identity, expected.Identity(record));
  }
}

/// Does the work. Returns whether it was refused, in one line that begins with the path.
template <class Work>
bool IsRefusedByName(const std::string& path, const Work& work) {
  const std::string message = MessageOf(work);
  if (message == "no error") return false;
  EXPECT_EQ(message.find(path + ": "), 0u) << message;
  EXPECT_EQ(message.find('\n'), std::string::npos) << message;
  return true;
}

/// Reads the bytes as a model. Returns whether they were refused by name; what is read otherwise
/// must be the expected contents.
bool IsRefused(const TemporaryFolder& folder, const std::string& bytes,
               const gsl_RecordReader& expected) {
  const std::string path = folder.Write("damaged.gslm", bytes);
  const bool isRefused = IsRefusedByName(path, [&] {
    const Model model(path, Access::Read, kNoPatience);
    ExpectRootsOf(expected, model);
    EXPECT_TRUE(SameContents(*model.ReadAll(), expected));
  });
  EXPECT_EQ(BytesOf(path), bytes);
  return isRefused;
}

/// Adds a root to a model that was damaged, and removes it. Nothing else may change.
void ExpectWritingKeeps(const TemporaryFolder& folder, const std::string& bytes,
                        const gsl_RecordReader& expected) {
  const std::string path = folder.Write("damaged.gslm", bytes);
  static_cast<void>(IsRefusedByName(path, [&] {
    Model model(path, Access::Write, kNoPatience);
    model.Write([](Transaction& t) {
      t.Writer().AddString(t.Writer().AddRoot(5, {5, 5}), {"new", -1}, std::string(9000, 'n'));
      t.Writer().NameRoot("new");
    });
    model.Write([](Transaction& t) { EXPECT_TRUE(t.Remove("new")); });
    EXPECT_TRUE(SameContents(*model.ReadAll(), expected));
  }));
}

/// A page of this many bytes, or of fewer at the end.
constexpr std::size_t kPage = 512;

std::string PageOf(const std::string& bytes, std::size_t page) {
  return bytes.substr(page * kPage, kPage);
}

/// Bytes that were damaged in one of the ways in which files are.
class Damages {
public:
  static constexpr int kWays = 10;

  /// `before` is the file as it was before its last change.
  Damages(std::uint64_t seed, const std::string& bytes, const std::string& before)
      : m_random(seed), m_bytes(bytes), m_before(before) {}

  std::string Any(int way) {
    std::string damaged = m_bytes;
    const std::size_t page = Below(m_bytes.size() / kPage);
    const std::size_t other = Below(m_bytes.size() / kPage);
    switch (way) {
    case 0:
      for (std::size_t left = 1 + Below(8); left > 0; --left)
        damaged[Below(damaged.size())] ^= static_cast<char>(1 << Below(8));
      break;
    case 1:
      for (char& byte : Part(damaged))
        byte = static_cast<char>(Below(256));
      break;
    case 2:
      for (char& byte : Part(damaged))
        byte = 0;
      break;
    case 3: // bytes of another place
      CopyAPart(damaged);
      break;
    case 4:
      damaged.resize(Below(damaged.size()));
      break;
    case 5:
      damaged.append(1 + Below(2 * kPage), static_cast<char>(Below(2) * 0x55));
      break;
    case 6:
      damaged.replace(page * kPage, kPage, PageOf(m_bytes, other));
      damaged.replace(other * kPage, kPage, PageOf(m_bytes, page));
      break;
    case 7:
      damaged.replace(page * kPage, kPage, std::string(kPage, '\0'));
      break;
    case 8: // a page is lost, and the later ones move
      damaged.erase(page * kPage, kPage);
      break;
    default: // a page was not written by the last change
      if ((page + 1) * kPage <= m_before.size())
        damaged.replace(page * kPage, kPage, PageOf(m_before, page));
      break;
    }
    return damaged;
  }

private:
  std::size_t Below(std::size_t count) { return m_random() % count; }

  struct Range {
    char* first;
    char* last;
    char* begin() const { return first; }
    char* end() const { return last; }
  };

  /// A few bytes or many.
  Range Part(std::string& bytes) {
    const std::size_t at = Below(bytes.size());
    const std::size_t most = Below(2) == 0 ? 4 : 600;
    const std::size_t count = std::min(1 + Below(most), bytes.size() - at);
    return {&bytes[at], &bytes[at] + count};
  }

  void CopyAPart(std::string& damaged) {
    const std::size_t from = Below(m_bytes.size());
    std::size_t at = from;
    for (char& byte : Part(damaged))
      byte = m_bytes[at++ % m_bytes.size()];
  }

  std::mt19937_64 m_random;
  const std::string& m_bytes;
  const std::string& m_before;
};

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
  EXPECT_EQ(MessageAfter("UPDATE fields SET link = 1 WHERE kind = 5"),
            damaged + "record 1 belongs to two places, but is not a shared object");
  // Every number but 0 would be read as true.
  EXPECT_EQ(MessageAfter("UPDATE fields SET value = 2 WHERE kind = 2"),
            damaged + "record 1 has a field whose value is not of its kind");
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

/// GSL_DAMAGES=100000 tries that many damages, which takes minutes.
TEST_F(RecordLoaderTest, DamagedLargeModelIsRefusedOrReadsIdentically) {
  const auto write = [](Transaction& t, int from, int to) {
    gsl_RecordWriter& writer = t.Writer();
    for (int root = from; root < to; ++root) {
      const gsl_RecordIndex record = writer.AddRoot(2, {2, static_cast<std::uint64_t>(root)});
      writer.NameRoot("root " + std::to_string(root));
      for (int i = 0; i < 20; ++i) {
        const gsl_RecordIndex point = writer.AddRecord(record, {"point", i}, i % 2 == 0, 3, {3, 4});
        writer.AddDouble(point, {"x", -1}, root + 0.1 * i);
        writer.AddString(point, {"method", -1}, i % 3 == 0 ? "ByCoordinates" : "AtNode");
      }
    }
  };
  RunSql(m_path, "PRAGMA page_size = 512; VACUUM");
  ASSERT_EQ(NumberFrom(m_path, "PRAGMA page_size"), static_cast<std::int64_t>(kPage));
  Model model(m_path, Access::Write);
  model.Write([&](Transaction& t) { write(t, 0, 25); });
  const std::string before = BytesOf(m_path);
  model.Write([&](Transaction& t) {
    for (int root = 0; root < 8; ++root)
      EXPECT_TRUE(t.Remove("root " + std::to_string(3 * root)));
    write(t, 25, 30);
  });
  const auto expected = model.ReadAll();
  const std::string bytes = BytesOf(m_path);
  const char* const asked = std::getenv("GSL_DAMAGES");
  const std::uint64_t seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  Damages damages(seed, bytes, before);
  const long count = asked != nullptr ? std::atol(asked) : Scaled(150) + 20;
  std::array<long, Damages::kWays> refused = {};
  for (long round = 0; round < count; ++round) {
    const int way = static_cast<int>(round % Damages::kWays);
    const std::string damaged = damages.Any(way);
    SCOPED_TRACE("round " + std::to_string(round));
    refused[static_cast<std::size_t>(way)] += IsRefused(m_folder, damaged, *expected) ? 1 : 0;
    if (round / Damages::kWays % 4 == 0) ExpectWritingKeeps(m_folder, damaged, *expected);
    if (HasFailure()) return;
  }
  long total = 0;
  for (const long each : refused) {
    total += each;
    if (asked != nullptr) std::printf("%ld ", each);
  }
  if (asked != nullptr) std::printf("refused in each way, %ld of %ld damages\n", total, count);
  // Bytes after the last page change nothing, for example.
  EXPECT_GT(total, count / 2);
}
