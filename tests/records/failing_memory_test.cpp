#include "FailEachAllocation.h"
#include "ModelSamples.h"
#include "OpenDescriptors.h"
#include "TemporaryFolder.h"
#include "gsl_RecordError.h"
#include "gsl_RecordFile.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <unistd.h>

// Each allocation of filling, saving and loading a store of records fails in turn.

namespace {

using Bytes = std::vector<unsigned char>;

constexpr Failing kAll = {WithoutMemory::Refuses, Allocations::All};

std::string LongName(const TemporaryFolder& folder) {
  return folder.Path("a file with a name that is longer than a short string.gslr");
}

} // namespace

TEST(FailingRecordFile, BytesAreMadeAndReadOrNot) {
  const std::vector<unsigned char> bytes = model_samples::EveryKind().ToBytes();
  const auto makes = [&] { return model_samples::EveryKind().ToBytes() == bytes; };
  EXPECT_GT(FailEachAllocation("ToBytes", makes, {WithoutMemory::MayManage, Allocations::All}), 10);
  const auto takes = [&] {
    gsl_RecordStore filled = model_samples::EveryKind();
    Bytes taken;
    ChangeOrLeave([&] { taken = filled.TakeBytes(); }, [&] { return filled.ToBytes() == bytes; });
    return taken == bytes && filled.RootCount() == 0;
  };
  EXPECT_GT(FailEachAllocation("TakeBytes", takes, {WithoutMemory::MayManage, Allocations::All}),
            10);
  const auto overs = [&] {
    return gsl_RecordStore::OverBytes(bytes.data(), bytes.size()).ToBytes() == bytes;
  };
  EXPECT_GT(FailEachAllocation("OverBytes", overs, kAll), 10);
  const auto reads = [&] {
    return gsl_RecordStore::FromBytes(bytes.data(), bytes.size()).ToBytes() == bytes;
  };
  EXPECT_GT(FailEachAllocation("FromBytes", reads, kAll), 10);
}

TEST(FailingRecordFile, FileAppearsWholeOrNotAtAll) {
  const TemporaryFolder folder;
  const std::string path = LongName(folder);
  const gsl_RecordStore store = model_samples::EveryKind();
  const int open = OpenDescriptors();
  const auto isAbsent = [&] { return folder.Names().empty() && OpenDescriptors() == open; };
  const auto saves = [&] {
    ChangeOrLeave([&] { gsl_SaveRecords(store, path); }, isAbsent);
    return unlink(path.c_str()) == 0;
  };
  EXPECT_GT(FailEachAllocation("save", saves, isAbsent, kAll), 3);
}

TEST(FailingRecordFile, FileThatIsReplacedThroughALinkIsOldOrNew) {
  const TemporaryFolder folder;
  const std::string path = LongName(folder);
  const std::string link = folder.Path("link");
  const gsl_RecordStore before = model_samples::EveryKind(1.0);
  const gsl_RecordStore after = model_samples::EveryKind(2.0);
  gsl_SaveRecords(before, path);
  ASSERT_EQ(symlink(path.c_str(), link.c_str()), 0);
  const std::string old = BytesOf(path);
  const int open = OpenDescriptors();
  const auto replaces = [&] {
    ChangeOrLeave([&] { gsl_SaveRecords(after, link); }, [&] { return BytesOf(path) == old; });
    return true;
  };
  const auto restores = [&] {
    char to[2] = "";
    const bool isLink = readlink(link.c_str(), to, sizeof to) > 0;
    gsl_SaveRecords(before, path);
    return isLink && folder.Names().size() == 2 && OpenDescriptors() == open;
  };
  EXPECT_GT(FailEachAllocation("replace", replaces, restores, kAll), 3);
}

TEST(FailingRecordFile, FileIsLoadedOrMemoryIsRefused) {
  const TemporaryFolder folder;
  const std::string path = LongName(folder);
  const gsl_RecordStore store = model_samples::EveryKind();
  const std::vector<unsigned char> bytes = store.ToBytes();
  gsl_SaveRecords(store, path);
  const auto loads = [&] { return gsl_LoadRecords(path).ToBytes() == bytes; };
  const int open = OpenDescriptors();
  const auto isClosed = [&] { return OpenDescriptors() == open; };
  EXPECT_GT(FailEachAllocation("load", loads, isClosed, kAll), 5);
}

TEST(FailingRecordFile, MissingFileIsNamedOrMemoryIsRefused) {
  const TemporaryFolder folder;
  const std::string path = LongName(folder);
  const auto refuses = [&] {
    try {
      static_cast<void>(gsl_LoadRecords(path));
    } catch (const gsl_RecordError& error) {
      return std::string(error.what()).find(path) == 0;
    }
    return false;
  };
  EXPECT_GT(FailEachAllocation("missing", refuses, kAll), 1);
}
