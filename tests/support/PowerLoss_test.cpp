#include "PowerLoss.h"

#include "FileEvents.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

// The simulated disk must break each writer that forgets a step, and leave the careful writer
// alone.

namespace {

constexpr int kSaves = 20;
constexpr int kLosses = 500;
constexpr std::uint64_t kNothing = 0;

/// The contents of save number `state`: several sectors that differ from those of each other save.
std::string ContentsOf(std::uint64_t state) {
  return std::string(1500 + 100 * state, static_cast<char>('a' + state));
}

/// What the test of a loss finds.
struct Findings {
  int torn = 0; ///< the file is not that of any save
  int lost = 0; ///< a save that was promised is lost
};

std::string FolderOf(const TemporaryFolder& folder) {
  std::string path = folder.Path("");
  while (path.back() == '/')
    path.pop_back();
  return path;
}

using Save = std::function<void(const std::string& folder, const std::string& contents)>;

/// Loses the power at random moments of several saves.
Findings FindingsOf(const Save& save) {
  const TemporaryFolder folder;
  const std::string path = FolderOf(folder);
  FileEvents events(path);
  for (std::uint64_t state = 1; state <= kSaves; ++state) {
    save(path, ContentsOf(state));
    events.Mark(state);
  }
  RandomNumbers random(20261123);
  Findings findings;
  for (int loss = 0; loss < kLosses; ++loss) {
    const std::size_t count = random.Next() % (events.All().size() + 1);
    const power_loss::Files disk = power_loss::DiskAfter(events.All(), count, random);
    const std::uint64_t promised = power_loss::PromisedBefore(events.All(), count, kNothing);
    const auto file = disk.find("file");
    std::uint64_t found = kNothing;
    if (file != disk.end()) {
      for (found = kSaves; found > 0 && file->second != ContentsOf(found);)
        --found;
      findings.torn += found == kNothing ? 1 : 0;
    }
    if (file == disk.end() || found != kNothing) findings.lost += found < promised ? 1 : 0;
    if (found > promised + 1) ADD_FAILURE() << "save " << found << " was never begun";
  }
  return findings;
}

/// The steps of a writer that replaces a file.
enum class Step { Write, Sync, Rename, SyncFolder };

Save Steps(const std::vector<Step>& steps) {
  return [steps](const std::string& folder, const std::string& contents) {
    const std::string place = folder + "/file";
    const std::string beside = place + ".new";
    const int file = open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0666);
    ASSERT_GE(file, 0);
    for (const Step step : steps) {
      switch (step) {
      case Step::Write:
        ASSERT_EQ(write(file, contents.data(), contents.size()),
                  static_cast<ssize_t>(contents.size()));
        break;
      case Step::Sync:
        ASSERT_EQ(fsync(file), 0);
        break;
      case Step::Rename:
        ASSERT_EQ(rename(beside.c_str(), place.c_str()), 0);
        break;
      case Step::SyncFolder: {
        const int opened = open(folder.c_str(), O_RDONLY | O_DIRECTORY);
        ASSERT_EQ(fsync(opened), 0);
        close(opened);
        break;
      }
      }
    }
    close(file);
  };
}

void SaveInPlace(const std::string& folder, const std::string& contents) {
  const int file = open((folder + "/file").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
  ASSERT_EQ(pwrite(file, contents.data(), contents.size(), 0),
            static_cast<ssize_t>(contents.size()));
  ASSERT_EQ(fdatasync(file), 0);
  close(file);
}

} // namespace

TEST(PowerLoss, CarefulWriterLosesNothing) {
  const Findings findings =
      FindingsOf(Steps({Step::Write, Step::Sync, Step::Rename, Step::SyncFolder}));
  EXPECT_EQ(findings.torn, 0);
  EXPECT_EQ(findings.lost, 0);
}

TEST(PowerLoss, WriterWithoutASyncIsCaught) {
  EXPECT_GT(FindingsOf(Steps({Step::Write, Step::Rename, Step::SyncFolder})).torn, 0);
}

TEST(PowerLoss, WriterThatRenamesBeforeTheSyncIsCaught) {
  EXPECT_GT(FindingsOf(Steps({Step::Write, Step::Rename, Step::Sync, Step::SyncFolder})).torn, 0);
}

TEST(PowerLoss, WriterThatForgetsTheFolderIsCaught) {
  const Findings findings = FindingsOf(Steps({Step::Write, Step::Sync, Step::Rename}));
  EXPECT_EQ(findings.torn, 0);
  EXPECT_GT(findings.lost, 0);
}

TEST(PowerLoss, WriterThatReplacesInPlaceIsCaught) {
  EXPECT_GT(FindingsOf(SaveInPlace).torn, 0);
}

TEST(PowerLoss, EveryCallIsRecorded) {
  const TemporaryFolder folder;
  const std::string path = FolderOf(folder);
  FileEvents events(path);
  const int file = open(path.c_str(), O_WRONLY | O_TMPFILE, 0666);
  ASSERT_GE(file, 0);
  ASSERT_EQ(write(file, "abc", 3), 3);
  ASSERT_EQ(write(file, "de", 2), 2);
  ASSERT_EQ(ftruncate(file, 4), 0);
  ASSERT_EQ(fsync(file), 0);
  const std::string from = "/proc/self/fd/" + std::to_string(file);
  ASSERT_EQ(linkat(AT_FDCWD, from.c_str(), AT_FDCWD, (path + "/a").c_str(), AT_SYMLINK_FOLLOW), 0);
  close(file);
  ASSERT_EQ(rename((path + "/a").c_str(), (path + "/b").c_str()), 0);
  const int opened = open(path.c_str(), O_RDONLY | O_DIRECTORY);
  ASSERT_EQ(fsync(opened), 0);
  close(opened);
  ASSERT_EQ(unlink((path + "/b").c_str()), 0);
  using Kind = FileEvent::Kind;
  std::vector<Kind> kinds;
  for (const FileEvent& event : events.All())
    kinds.push_back(event.kind);
  EXPECT_EQ(kinds, (std::vector<Kind>{Kind::Write, Kind::Write, Kind::Resize, Kind::Sync,
                                      Kind::Name, Kind::Rename, Kind::SyncFolder, Kind::Unname}));
  EXPECT_EQ(events.All()[1].at, 3u);
  RandomNumbers random(1);
  const power_loss::Files synced = power_loss::DiskAfter(events.All(), 7, random);
  EXPECT_EQ(synced, (power_loss::Files{{"b", "abcd"}}));
}

TEST(PowerLoss, CallFailsOnceOrFromThenOn) {
  const TemporaryFolder folder;
  const std::string path = FolderOf(folder);
  FileEvents events(path);
  const int file = open((path + "/a").c_str(), O_WRONLY | O_CREAT, 0666);
  ASSERT_GE(file, 0);
  events.FailAt(1, ENOSPC, false);
  EXPECT_EQ(write(file, "a", 1), 1);
  EXPECT_EQ(write(file, "b", 1), -1);
  EXPECT_EQ(errno, ENOSPC);
  EXPECT_EQ(write(file, "c", 1), 1);
  EXPECT_EQ(events.Calls(), 3);
  events.FailAt(0, EIO, true);
  EXPECT_EQ(fsync(file), -1);
  EXPECT_EQ(errno, EIO);
  EXPECT_EQ(ftruncate(file, 0), -1);
  events.FailNever();
  EXPECT_EQ(fsync(file), 0);
  close(file);
  EXPECT_EQ(BytesOf(path + "/a"), "ac");
}
