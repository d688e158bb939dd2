#include "OutputFile.h"

#include "ChildProcess.h"
#include "MeshSamples.h"
#include "TemporaryFiles.h"

#include <csignal>
#include <filesystem>
#include <list>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace gsl_mesh_samples;
using gsl_mesh::CheckOutputPath;
using gsl_mesh::OutputError;
using gsl_mesh::OutputFile;
using gsl_mesh::WriteTextFile;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr const char* keptMessage = ": already exists and is kept; --force replaces it";

template <typename Action>
std::string OutputErrorOf(Action action) {
  try {
    action();
  } catch (const OutputError& e) {
    return e.what();
  }
  return "no error";
}

mode_t ModeOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0);
  return status.st_mode & 07777;
}

} // namespace

TEST(OutputFile, AppearsWholeOnCommit) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("report.json");
  {
    OutputFile file(path, false);
    file.Write("ab", 2);
    file.Write("c", 1);
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_EQ(folder.Names().size(), 1U);
    file.Commit();
    EXPECT_EQ(BytesOf(path), "abc");
  }
  EXPECT_THAT(folder.Names(), ElementsAre("report.json"));
}

TEST(OutputFile, LeavesNothingWithoutCommit) {
  const TemporaryFolder folder;
  {
    OutputFile file(folder.Path("report.json"), false);
    file.Write("abc", 3);
  }
  EXPECT_THAT(folder.Names(), IsEmpty());
}

TEST(OutputFile, ExistingFileIsKept) {
  const TemporaryFolder folder;
  const std::string path = folder.Write("report.json", "old");
  EXPECT_EQ(OutputErrorOf([&] { WriteTextFile(path, "new", false); }), path + keptMessage);
  EXPECT_EQ(OutputErrorOf([&] { CheckOutputPath(path, false); }), path + keptMessage);
  EXPECT_EQ(BytesOf(path), "old");
  EXPECT_THAT(folder.Names(), ElementsAre("report.json"));
}

TEST(OutputFile, ExistingFileIsReplacedByForceAndKeepsItsPermissions) {
  const TemporaryFolder folder;
  const std::string path = folder.Write("report.json", "old");
  chmod(path.c_str(), 0640);
  WriteTextFile(path, "new", true);
  EXPECT_EQ(BytesOf(path), "new");
  EXPECT_EQ(ModeOf(path), 0640U);
  EXPECT_THAT(folder.Names(), ElementsAre("report.json"));
}

TEST(OutputFile, FileThatAppearsBeforeCommitIsKept) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("report.json");
  {
    OutputFile file(path, false);
    file.Write("new", 3);
    folder.Write("report.json", "other");
    EXPECT_EQ(OutputErrorOf([&] { file.Commit(); }),
              path + ": was created by another process meanwhile and is kept");
  }
  EXPECT_EQ(BytesOf(path), "other");
  EXPECT_THAT(folder.Names(), ElementsAre("report.json"));
}

TEST(OutputFile, NewFileFollowsTheMask) {
  const TemporaryFolder folder;
  const mode_t old = umask(027);
  WriteTextFile(folder.Path("report.json"), "x", false);
  umask(old);
  EXPECT_EQ(ModeOf(folder.Path("report.json")), 0640U);
}

TEST(OutputFile, NewFileIsNotExecutableWithoutAMask) {
  const TemporaryFolder folder;
  const mode_t old = umask(0);
  WriteTextFile(folder.Path("report.json"), "x", false);
  umask(old);
  EXPECT_EQ(ModeOf(folder.Path("report.json")), 0666U);
}

TEST(OutputFile, LowestDescriptorIsClosedToo) {
  const int status = StatusInChild([] {
    const TemporaryFolder folder;
    close(0);
    {
      const OutputFile file(folder.Path("report.json"), false);
      if (fcntl(0, F_GETFD) < 0) return 1;
    }
    return fcntl(0, F_GETFD) < 0 ? 0 : 2;
  });
  EXPECT_EQ(status, 0);
}

TEST(OutputFile, CommittedFilesDoNotKeepOthersFromBeingRemovedOnASignal) {
  const TemporaryFolder folder;
  const TemporaryFolder other;
  std::list<OutputFile> committed;
  for (int k = 0; k < 100; ++k)
    committed.emplace_back(folder.Path(std::to_string(k)), false).Commit();
  const OutputFile file(other.Path("report.json"), false);
  ASSERT_EQ(other.Names().size(), 1U);
  gsl_mesh::RemoveTemporaryFiles();
  EXPECT_THAT(other.Names(), IsEmpty());
  EXPECT_EQ(folder.Names().size(), 100U);
}

TEST(OutputFile, SymbolicLinkStaysAndItsTargetIsReplaced) {
  const TemporaryFolder folder;
  const std::string target = folder.Write("target", "old");
  const std::string link = folder.Path("link");
  std::filesystem::create_symlink("target", link);
  EXPECT_EQ(OutputErrorOf([&] { WriteTextFile(link, "new", false); }), link + keptMessage);
  WriteTextFile(link, "new", true);
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(BytesOf(target), "new");
}

TEST(OutputFile, LinkWithoutATargetIsKept) {
  const TemporaryFolder folder;
  const std::string link = folder.Path("link");
  std::filesystem::create_symlink("nowhere", link);
  for (const bool force : {false, true}) {
    EXPECT_EQ(OutputErrorOf([&] { WriteTextFile(link, "new", force); }),
              link + ": is a link whose target does not exist");
  }
  EXPECT_THAT(folder.Names(), ElementsAre("link"));
}

TEST(OutputFile, OnlyRegularFilesAreReplaced) {
  const TemporaryFolder folder;
  const std::string pipe = folder.Path("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  for (const std::string& path : {folder.Path(""), pipe, std::string("/dev/null")}) {
    EXPECT_EQ(OutputErrorOf([&] { WriteTextFile(path, "new", true); }),
              path + ": exists, is not a regular file, and is kept");
  }
}

TEST(OutputFile, PlacesThatCannotBeWrittenAreRefusedAtOnce) {
  const TemporaryFolder folder;
  const std::string missing = folder.Path("missing/report.json");
  EXPECT_EQ(OutputErrorOf([&] { CheckOutputPath(missing, false); }),
            missing + ": cannot be written: No such file or directory");
  const std::string below = folder.Write("file", "x") + "/report.json";
  EXPECT_EQ(OutputErrorOf([&] { CheckOutputPath(below, false); }),
            below + ": cannot be written: Not a directory");
  EXPECT_EQ(OutputErrorOf([&] { CheckOutputPath("", false); }), "output: the file name is empty");
}

TEST(OutputFile, CheckLeavesNothing) {
  const TemporaryFolder folder;
  CheckOutputPath(folder.Path("report.json"), false);
  EXPECT_THAT(folder.Names(), IsEmpty());
}

TEST(OutputFile, FullDiskIsReported) {
  const int status = StatusInChild([] {
    const TemporaryFolder folder;
    std::string message;
    {
      OutputFile file(folder.Path("report.json"), false);
      // A limit on the size of files simulates a full disk.
      std::signal(SIGXFSZ, SIG_IGN);
      const rlimit small{4, 4};
      setrlimit(RLIMIT_FSIZE, &small);
      message = OutputErrorOf([&] { file.Write("abcdefgh", 8); });
    }
    if (message != folder.Path("report.json") + ": cannot be written: File too large") return 1;
    return folder.Names().empty() ? 0 : 2;
  });
  EXPECT_EQ(status, 0);
}

TEST(OutputFile, LongestNameHasRoomForATemporaryOne) {
  const TemporaryFolder folder;
  const std::string name(255, 'n');
  WriteTextFile(folder.Path(name), "x", false);
  EXPECT_THAT(folder.Names(), ElementsAre(name));
}

TEST(OutputFile, RelativeNamesAreWrittenBeside) {
  const TemporaryFolder folder;
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder.Path(""));
  WriteTextFile("report.json", "x", false);
  std::filesystem::current_path(before);
  EXPECT_THAT(folder.Names(), ElementsAre("report.json"));
}
