#include "support/ModelFile.h"

#include "ModelSamples.h"
#include "SameContents.h"
#include "TemporaryFolder.h"
#include "gsl_RecordError.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace gsl_tools;
using namespace model_samples;

std::string MessageOfSaving(const std::string& path) {
  try {
    SaveModelFile(EveryKind(), path);
  } catch (const gsl_RecordError& error) {
    return error.what();
  }
  return "saved";
}

} // namespace

TEST(ModelFile, NameDecidesTheKind) {
  for (const char* name : {"a.gslm", "a.sqlite", "b/a.db"})
    EXPECT_TRUE(NamesDatabase(name)) << name;
  for (const char* name : {"a.gslr", "a", "gslm", "a.db/b", "a.gslm.gslr"})
    EXPECT_FALSE(NamesDatabase(name)) << name;
}

#ifdef GSL_WITHOUT_MODEL

TEST(ModelFile, DatabaseIsRefused) {
  const TemporaryFolder folder;
  EXPECT_EQ(MessageOfSaving(folder.Path("a.db")),
            folder.Path("a.db") + ": is a database, but this program was built without SQLite");
}

#else

TEST(ModelFile, BothKindsComeBack) {
  const TemporaryFolder folder;
  for (const char* name : {"a.gslr", "a.gslm"}) {
    for (const double x : {1.5, 2.5}) {
      SaveModelFile(EveryKind(x), folder.Path(name));
      EXPECT_TRUE(SameContents(LoadModelFile(folder.Path(name)), EveryKind(x))) << name;
    }
  }
  EXPECT_TRUE(IsDatabase(BytesOf(folder.Path("a.gslm"))));
  EXPECT_FALSE(IsDatabase(BytesOf(folder.Path("a.gslr"))));
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"a.gslm", "a.gslr"}));
}

TEST(ModelFile, DatabaseWithAJournalIsNotReplaced) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("a.gslm");
  SaveModelFile(EveryKind(), path);
  const std::string bytes = BytesOf(path);
  folder.Write("a.gslm-journal", "journal");
  EXPECT_EQ(MessageOfSaving(path),
            path + ": cannot be replaced: a writer of it was interrupted or is not done");
  EXPECT_EQ(BytesOf(path), bytes);
}

TEST(ModelFile, DatabaseIsNeverMadeOfAFileThatALostProgramLeft) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("a.gslm");
  const std::string left = "a.gslm." + std::to_string(getpid()) + ".0";
  SaveModelFile(EveryKind(2.5), folder.Path("other.gslm"));
  const std::string bytes = BytesOf(folder.Path("other.gslm"));
  folder.Write(left, bytes);
  SaveModelFile(EveryKind(1.5), path);
  EXPECT_TRUE(SameContents(LoadModelFile(path), EveryKind(1.5)));
  EXPECT_EQ(BytesOf(folder.Path(left)), bytes);
}

TEST(ModelFile, DatabaseKeepsThePermissionsOfTheFileThatItReplaces) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("a.gslm");
  SaveModelFile(EveryKind(), path);
  ASSERT_EQ(chmod(path.c_str(), 0600), 0);
  SaveModelFile(EveryKind(2.5), path);
  struct stat status = {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600u);
}

TEST(ModelFile, ErrorsNameTheFileThatWasAskedFor) {
  const TemporaryFolder folder;
  EXPECT_EQ(MessageOfSaving(folder.Path("none/a.gslm")),
            folder.Path("none/a.gslm") + ": cannot open: No such file or directory");
}

#endif
