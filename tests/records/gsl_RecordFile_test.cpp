#include "gsl_RecordFile.h"

#include "ChildProcess.h"
#include "RawRecords.h"
#include "Records.h"
#include "TemporaryFolder.h"
#include "TestScale.h"
#include "gsl_RecordError.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// A store of `count` roots that hold the number `mark`.
gsl_RecordStore Marked(int mark, int count = 10) {
  gsl_RecordStore store;
  for (int i = 0; i < count; ++i)
    store.AddInteger(store.AddRoot(1, {1, static_cast<std::uint64_t>(i)}), {"mark", 0}, mark);
  return store;
}

std::string MessageOfLoading(const std::string& path) {
  try {
    static_cast<void>(gsl_LoadRecords(path));
  } catch (const gsl_RecordError& error) {
    return error.what();
  }
  return "loaded";
}

std::string MessageOfSaving(const std::string& path) {
  try {
    gsl_SaveRecords(Marked(2), path);
  } catch (const gsl_RecordError& error) {
    return error.what();
  }
  return "saved";
}

} // namespace

TEST(GslRecordFile, WhatWasSavedIsLoaded) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("model.gslr");
  gsl_SaveRecords(Marked(1), path);
  EXPECT_TRUE(SameRecords(gsl_LoadRecords(path), Marked(1)));
  // More than a block of the frame, over a file that is there.
  gsl_SaveRecords(Marked(2, 300000), path);
  EXPECT_TRUE(SameRecords(gsl_LoadRecords(path), Marked(2, 300000)));
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"model.gslr"}));
}

TEST(GslRecordFile, ErrorOfAnEarlierCallIsNotThatOfTheFile) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("model.gslr");
  errno = EINTR;
  gsl_SaveRecords(Marked(1), path);
  errno = EINTR;
  EXPECT_EQ(gsl_LoadRecords(path).RootCount(), 10u);
}

TEST(GslRecordFile, NewFileHasTheUsualPermissionsAndAReplacedOneKeepsItsOwn) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("model.gslr");
  const auto mode = [&] {
    struct stat status = {};
    stat(path.c_str(), &status);
    return status.st_mode & 0777u;
  };
  const mode_t mask = umask(027);
  gsl_SaveRecords(Marked(1), path);
  EXPECT_EQ(mode(), 0640u);
  umask(mask);
  chmod(path.c_str(), 0600);
  gsl_SaveRecords(Marked(2), path);
  EXPECT_EQ(mode(), 0600u);
}

TEST(GslRecordFile, SymbolicLinkStaysAndItsTargetIsReplaced) {
  const TemporaryFolder folder;
  gsl_SaveRecords(Marked(1), folder.Path("target"));
  std::filesystem::create_symlink("target", folder.Path("link"));
  gsl_SaveRecords(Marked(2), folder.Path("link"));
  EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("link")));
  EXPECT_TRUE(SameRecords(gsl_LoadRecords(folder.Path("target")), Marked(2)));
}

TEST(GslRecordFile, ErrorsNameTheFileAndTheReason) {
  const TemporaryFolder folder;
  const std::string missing = folder.Path("missing");
  EXPECT_EQ(MessageOfLoading(missing), missing + ": cannot open: No such file or directory");
  EXPECT_EQ(MessageOfLoading(folder.Path("")), folder.Path("") + ": cannot read: Is a directory");
  EXPECT_EQ(MessageOfSaving(folder.Path("none/model")),
            folder.Path("none/model") +
                ": cannot write beside the file: No such file or directory");
  const std::string foreign = folder.Write("foreign", "solid cube");
  EXPECT_EQ(MessageOfLoading(foreign),
            foreign + ": The bytes are not records: they start with 73 6f 6c 69, but records start "
                      "with 67 73 6c 72 (\"gslr\")");
  const std::string empty = folder.Write("empty", "");
  EXPECT_NE(MessageOfLoading(empty).find("there are no bytes"), std::string::npos);
  const std::string newer = folder.Write("newer", std::string("gslr\x07", 5));
  EXPECT_EQ(MessageOfLoading(newer),
            newer + ": The records have format version 7, which is newer, but this library reads "
                    "version 2");
}

TEST(GslRecordFile, FullDiskLeavesTheOldFileAndNothingElse) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("model.gslr");
  gsl_SaveRecords(Marked(1), path);
  // Nothing, the header and every byte but the last one of the new file fit.
  const rlim_t size = Marked(2, 10000).ToBytes().size();
  for (const rlim_t limit : {rlim_t{0}, rlim_t{20}, rlim_t{1000}, size - 1}) {
    const int status = StatusInChild([&] {
      signal(SIGXFSZ, SIG_IGN);
      const rlimit small = {limit, limit};
      setrlimit(RLIMIT_FSIZE, &small);
      try {
        gsl_SaveRecords(Marked(2, 10000), path);
        return 1;
      } catch (const gsl_RecordError& error) {
        return error.what() == path + ": cannot write: File too large" ? 0 : 2;
      }
    });
    EXPECT_EQ(status, 0) << limit;
    EXPECT_TRUE(SameRecords(gsl_LoadRecords(path), Marked(1)));
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"model.gslr"}));
  }
}

TEST(GslRecordFile, DevicesAreNotReplaced) {
  for (const std::string device : {"/dev/full", "/dev/null"}) {
    EXPECT_EQ(MessageOfSaving(device), device + ": cannot be replaced: it is not a regular file");
    EXPECT_TRUE(std::filesystem::is_character_file(device));
  }
}

TEST(GslRecordFile, FolderWithoutPermissionIsNamedAndTheOldFileStays) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("model.gslr");
  gsl_SaveRecords(Marked(1), path);
  chmod(folder.Path("").c_str(), 0555);
  const int status = StatusInChild([&] {
    if (!BecomeNobody()) return 1;
    return MessageOfSaving(path) == path + ": cannot write beside the file: Permission denied" ? 0
                                                                                               : 2;
  });
  EXPECT_EQ(status, 0);
  chmod(folder.Path("").c_str(), 0755);
  EXPECT_TRUE(SameRecords(gsl_LoadRecords(path), Marked(1)));
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"model.gslr"}));
}

TEST(GslRecordFile, FileWithoutPermissionIsNamed) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("model.gslr");
  gsl_SaveRecords(Marked(1), path);
  chmod(folder.Path("").c_str(), 0755);
  chmod(path.c_str(), 0);
  const int status = StatusInChild([&] {
    if (!BecomeNobody()) return 1;
    return MessageOfLoading(path) == path + ": cannot open: Permission denied" ? 0 : 2;
  });
  EXPECT_EQ(status, 0);
}

TEST(GslRecordFile, CutAndFlippedFilesAreNamedWithThePlace) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("model.gslr");
  gsl_SaveRecords(Marked(1), path);
  const std::string bytes = BytesOf(path);
  const std::string body = std::to_string(bytes.size() - 24);
  folder.Write("model.gslr", bytes.substr(0, bytes.size() - 1));
  EXPECT_EQ(MessageOfLoading(path), path + ": The records have " +
                                        std::to_string(bytes.size() - 1) +
                                        " bytes, but their header announces a body of " + body);
  std::string flipped = bytes;
  flipped[30] = static_cast<char>(flipped[30] ^ 4);
  folder.Write("model.gslr", flipped);
  EXPECT_EQ(MessageOfLoading(path), path +
                                        ": The records are damaged: the checksum of bytes 20 to " +
                                        std::to_string(bytes.size() - 5) + " does not match");
}

/// Whether the file system of a folder has files without a name, and a way to give them one.
bool HasUnnamedFiles(const std::string& folder) {
  const int file = open(folder.c_str(), O_WRONLY | O_TMPFILE, 0600);
  if (file < 0) return false;
  const bool hasWay = access(("/proc/self/fd/" + std::to_string(file)).c_str(), F_OK) == 0;
  close(file);
  return hasWay;
}

TEST(GslRecordFile, WriterKilledAtAnyMomentLeavesAWholeFile) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("model.gslr");
  constexpr int kRoots = 100;
  gsl_SaveRecords(Marked(0, kRoots), path);
  std::mt19937 random(20261122);
  const SharedNumber saved;
  const long rounds = Kills(Scaled(500));
  for (long round = 0; round < rounds; ++round) {
    const int before = saved.Get();
    const pid_t child = StartChild([&]() -> int {
      for (int mark = before + 1;; ++mark) {
        gsl_SaveRecords(Marked(mark, kRoots), path);
        saved.Set(mark);
      }
    });
    // The first writer is given the time for a save, also on a slow machine.
    for (int wait = 0; round == 0 && wait < 30000 && saved.Get() == before; ++wait)
      usleep(1000);
    usleep(static_cast<useconds_t>(random() % 5000));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    const gsl_RecordStore store = gsl_LoadRecords(path);
    ASSERT_EQ(store.RootCount(), static_cast<std::size_t>(kRoots));
    const int mark = (*store.Fields(0).begin()).integer;
    ASSERT_TRUE(SameRecords(store, Marked(mark, kRoots))) << round;
    ASSERT_GE(mark, saved.Get()) << round;
    ASSERT_LE(mark, saved.Get() + 1) << round;
    saved.Set(mark);
  }
  EXPECT_GT(saved.Get(), 0);
  // A temporary file has a name for the moment between its last byte and the rename only, which is
  // part of a save in memory file systems, where nothing is flushed. A file that always has a name
  // would remain after most of the kills.
  if (HasUnnamedFiles(folder.Path("."))) {
    EXPECT_LE(folder.Names().size(), 2u + static_cast<std::size_t>(rounds) / 4u);
  }
}
