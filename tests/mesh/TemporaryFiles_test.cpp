#include "TemporaryFiles.h"

#include "ChildProcess.h"
#include "MeshSamples.h"
#include "OutputFile.h"

#include <csignal>
#include <memory>
#include <vector>

using namespace gsl_mesh_samples;
using gsl_mesh::OutputFile;
using gsl_mesh::RemoveTemporaryFiles;
using gsl_mesh::RemoveTemporaryFilesOnSignals;
using gsl_mesh::SignalsWait;
using gsl_mesh::TemporaryFile;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGXCPU};

std::vector<std::unique_ptr<TemporaryFile>> ListedFiles(int count, const std::string& path) {
  std::vector<std::unique_ptr<TemporaryFile>> listed;
  for (int k = 0; k < count; ++k)
    listed.push_back(std::make_unique<TemporaryFile>(path));
  return listed;
}

} // namespace

TEST(TemporaryFiles, SignalsRemoveThemAndEndTheProcessAsTheyWould) {
  for (const int signal : signals) {
    const TemporaryFolder folder;
    const int status = EndOfChild([&] {
      for (const int s : signals)
        std::signal(s, SIG_DFL);
      RemoveTemporaryFilesOnSignals();
      OutputFile done(folder.Path("done"), false);
      done.Commit();
      OutputFile first(folder.Path("first"), false);
      OutputFile second(folder.Path("second"), false);
      if (folder.Names().size() != 3) return 1;
      raise(signal);
      return 2;
    });
    ASSERT_TRUE(WIFSIGNALED(status)) << status;
    EXPECT_EQ(WTERMSIG(status), signal);
    EXPECT_THAT(folder.Names(), ElementsAre("done"));
  }
}

TEST(TemporaryFiles, IgnoredSignalStaysIgnored) {
  const int status = EndOfChild([] {
    std::signal(SIGHUP, SIG_IGN);
    RemoveTemporaryFilesOnSignals();
    raise(SIGHUP);
    return 0;
  });
  EXPECT_EQ(status, 0);
}

TEST(TemporaryFiles, ForkedChildDoesNotRemoveItsParentsFiles) {
  const TemporaryFolder folder;
  OutputFile file(folder.Path("report.json"), false);
  const int status = EndOfChild([] {
    RemoveTemporaryFiles();
    return 0;
  });
  EXPECT_EQ(status, 0);
  EXPECT_EQ(folder.Names().size(), 1U);
  RemoveTemporaryFiles();
  EXPECT_THAT(folder.Names(), IsEmpty());
}

TEST(TemporaryFiles, AFileIsListedUntilItsObjectEnds) {
  const TemporaryFolder folder;
  const std::string kept = folder.Write("kept", "1");
  const std::string removed = folder.Write("removed", "2");
  { const TemporaryFile ended(kept); }
  const TemporaryFile listed(removed);
  RemoveTemporaryFiles();
  EXPECT_THAT(folder.Names(), ElementsAre("kept"));
}

TEST(TemporaryFiles, BeyondTheListAFileStaysAndItsPlaceIsUsedAgain) {
  const TemporaryFolder folder;
  auto listed = ListedFiles(32, folder.Path("none"));
  const std::string path = folder.Write("file", "1");
  {
    const TemporaryFile beyond(path);
    RemoveTemporaryFiles();
    EXPECT_THAT(folder.Names(), ElementsAre("file"));
  }
  listed.pop_back();
  const TemporaryFile last(path);
  RemoveTemporaryFiles();
  EXPECT_THAT(folder.Names(), IsEmpty());
}

TEST(TemporaryFiles, APathThatFitsNoFileTakesNoPlace) {
  const TemporaryFolder folder;
  const TemporaryFile tooLong(std::string(5000, 'x'));
  const auto listed = ListedFiles(31, folder.Path("none"));
  const TemporaryFile last(folder.Write("file", "1"));
  RemoveTemporaryFiles();
  EXPECT_THAT(folder.Names(), IsEmpty());
}

TEST(TemporaryFiles, SignalsWaitUntilTheStepIsDone) {
  for (const int signal : signals) {
    const TemporaryFolder folder;
    const int status = EndOfChild([&] {
      std::signal(signal, SIG_DFL);
      {
        const SignalsWait wait;
        raise(signal);
        folder.Write("done", "1");
      }
      folder.Write("after", "2");
      return 0;
    });
    ASSERT_TRUE(WIFSIGNALED(status)) << status;
    EXPECT_EQ(WTERMSIG(status), signal);
    EXPECT_THAT(folder.Names(), ElementsAre("done"));
  }
}

TEST(TemporaryFiles, SignalsThatWaitedBeforeStillWait) {
  const int status = EndOfChild([]() -> int {
    const SignalsWait outer;
    { const SignalsWait inner; }
    raise(SIGTERM);
    _exit(7); // before the signal comes
  });
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 7);
}
