#include "ModelSamples.h"
#include "Records.h"
#include "ToolRun.h"
#include "gsl_RecordFile.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace tool_run;
using namespace model_samples;
using nlohmann::json;

class GslModel : public testing::Test {
protected:
  std::string Save(const std::string& name, const gsl_RecordStore& records) const {
    gsl_SaveRecords(records, m_folder.Path(name));
    return m_folder.Path(name);
  }

  Folder m_folder;
  std::string m_part = Save("part.gslr", EveryKind());
};

void ExpectError(const Outcome& run, int status, const std::string& line) {
  EXPECT_EQ(run.status, status);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "gsl-model: " + line + "\n");
}

TEST_F(GslModel, ListsTheRoots) {
  const Outcome run = Model(m_part + " list");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out, "2 roots, 7 records\n"
                     "part    my_Part 0123456789abcdef:9\n"
                     "root 1  0x0050FFFF\n");
  EXPECT_EQ(Shell("$MODEL - list <" + m_part).out, run.out);
  EXPECT_EQ(Model(m_part + " list --quiet").out, "");
  EXPECT_EQ(json::parse(Model(m_part + " list --json -").out)["roots"].size(), 2u);
}

TEST_F(GslModel, ShowsARootByNameOrNumber) {
  const Outcome run = Model(m_part + " show part");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(FirstLine(run.out), "part: my_Part 0123456789abcdef:9");
  EXPECT_EQ(Model(m_part + " show 0").out, run.out);
  EXPECT_EQ(Model(m_part + " show 1").out, "root 1: 0x0050FFFF\n");
  // A name comes before a number.
  gsl_RecordStore store;
  store.AddRoot(1, {});
  store.AddRoot(2, {});
  store.NameRoot("0");
  store.Finish();
  EXPECT_EQ(Model(Save("numbers", store) + " show 0").out, "0: 0x00000002\n");
}

TEST_F(GslModel, JsonGoesToStdoutOrToAFile) {
  const Outcome run = Model(m_part + " show part --json -");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(json::parse(run.out)["file"], m_part);
  const std::string path = m_folder.Path("part.json");
  const Outcome both = Model(m_part + " show part --json " + path);
  EXPECT_EQ(both.status, 0);
  EXPECT_EQ(FirstLine(both.out), "part: my_Part 0123456789abcdef:9");
  EXPECT_EQ(BytesOf(path), run.out);
  ExpectError(Model(m_part + " show part --json " + path), 4,
              path + ": already exists and is kept; --force replaces it");
  const Outcome again = Model(m_part + " show 1 --quiet --force --json " + path);
  EXPECT_EQ(again.status, 0);
  EXPECT_EQ(again.out, "");
  EXPECT_EQ(json::parse(BytesOf(path))["root"]["number"], 1);
}

TEST_F(GslModel, RootThatDoesNotExistIsNamed) {
  ExpectError(Model(m_part + " show prat"), 2,
              m_part + " has no root named prat; did you mean part?");
  ExpectError(Model(m_part + " show axis"), 2,
              m_part + " has no root named axis; list shows the roots");
  ExpectError(Model(m_part + " show 2"), 2, m_part + " has no root 2; it has 2");
}

TEST_F(GslModel, ChecksTheWholeFile) {
  const Outcome run = Model(m_part + " check");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, m_part + ": no problem; 2 roots, 7 records\n");
  EXPECT_EQ(Model(m_part + " check --quiet").out, "");
  const std::string ring = Save("ring.gslr", Circular());
  ExpectError(Model(ring + " check"), 3,
              ring + ": ring has a my_Part that contains itself, which the library does not read");
  EXPECT_EQ(Model(ring + " show ring").status, 0);
  const std::string deep = Save("deep.gslr", Nested(1001));
  for (const char* command : {" check", " show 0"}) {
    ExpectError(Model(deep + command), 3,
                deep + ": records are nested 1001 levels deep, but the library reads at most 1000");
  }
}

TEST_F(GslModel, DamagedForeignAndNewerFilesAreRefusedByEveryCommand) {
  std::string bytes = BytesOf(m_part);
  bytes[40] = static_cast<char>(bytes[40] ^ 1);
  const std::string flipped = m_folder.Write("flipped", bytes);
  const std::string foreign = m_folder.Write("foreign", "solid cube");
  const std::string newer = m_folder.Write("newer", std::string("gslr\x07", 5));
  for (const std::string& command :
       std::vector<std::string>{" list", " show 0", " check", " convert out", " diff " + m_part}) {
    ExpectError(Model(flipped + command), 3,
                flipped + ": The records are damaged: the checksum of bytes 20 to " +
                    std::to_string(bytes.size() - 5) + " does not match");
    ExpectError(Model(foreign + command), 3,
                foreign + ": The bytes are not records: they start with 73 6f 6c 69, but records "
                          "start with 67 73 6c 72 (\"gslr\")");
    ExpectError(Model(newer + command), 3,
                newer + ": The records have format version 7, which is newer, but this library "
                        "reads version 2");
  }
  ExpectError(Model(m_part + " diff " + flipped), 3,
              flipped + ": The records are damaged: the checksum of bytes 20 to " +
                  std::to_string(bytes.size() - 5) + " does not match");
  ExpectError(Shell("$MODEL - list <" + foreign), 3,
              "standard input: The bytes are not records: they start with 73 6f 6c 69, but records "
              "start with 67 73 6c 72 (\"gslr\")");
  const std::string missing = m_folder.Path("missing");
  ExpectError(Model(missing + " list"), 3, missing + ": cannot open: No such file or directory");
}

TEST_F(GslModel, ConversionKeepsEverything) {
  const std::string out = m_folder.Path("out.gslr");
  const Outcome run = Model(m_part + " convert " + out);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out + run.err, "");
  EXPECT_TRUE(SameRecords(gsl_LoadRecords(out), EveryKind()));
  EXPECT_EQ(BytesOf(out), BytesOf(m_part));
  EXPECT_EQ(Model(m_part + " diff " + out).status, 0);
  // What the library does not restore is converted too.
  const std::string deep = Save("deep.gslr", Nested(5000));
  EXPECT_EQ(Model(deep + " convert --force " + out).status, 0);
  EXPECT_EQ(BytesOf(out), BytesOf(deep));
}

#ifndef GSL_WITHOUT_MODEL

TEST_F(GslModel, WorksOnDatabasesAsOnTheByteForm) {
  const std::string database = m_folder.Path("part.gslm");
  const Outcome run = Model(m_part + " convert " + database);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(BytesOf(database).substr(0, 15), "SQLite format 3");
  for (const char* command : {" list", " show part", " show 1", " show part --json -"}) {
    std::string out = Model(database + command).out;
    const std::size_t name = out.find(database);
    if (name != std::string::npos) out.replace(name, database.size(), m_part);
    EXPECT_EQ(out, Model(m_part + command).out) << command;
  }
  EXPECT_EQ(Model(database + " check").out, database + ": no problem; 2 roots, 7 records\n");
  EXPECT_EQ(Model(m_part + " diff " + database).status, 0);
  EXPECT_EQ(Model(database + " diff " + Save("other.gslr", EveryKind(2.0))).out,
            "~ part/x: 1.5 -> 2\n");
  ExpectError(Model(m_part + " convert " + database), 4,
              database + ": already exists and is kept; --force replaces it");
  EXPECT_EQ(Model(m_part + " convert --force " + database).status, 0);
  const std::string back = m_folder.Path("back.gslr");
  EXPECT_EQ(Model(database + " convert " + back).status, 0);
  EXPECT_EQ(BytesOf(back), BytesOf(m_part));
  ExpectError(Shell("$MODEL - list <" + database), 3,
              "standard input: is a database; expected the byte form of records");
}

TEST_F(GslModel, DamagedDatabaseIsRefusedByEveryCommand) {
  const std::string database = m_folder.Path("part.gslm");
  ASSERT_EQ(Model(m_part + " convert " + database).status, 0);
  std::string bytes = BytesOf(database);
  const std::size_t text = bytes.find("my_Part");
  ASSERT_NE(text, std::string::npos);
  bytes[text] = 'M';
  m_folder.Write("part.gslm", bytes);
  for (const std::string& command :
       std::vector<std::string>{" list", " show 0", " check", " convert out", " diff " + m_part}) {
    ExpectError(Model(database + command), 3,
                database + ": the root \"part\" is damaged: the checksum of its class 5242881 does "
                           "not match");
  }
}

namespace {

/// Runs the program with `arguments` as somebody who has no right to look into files of others.
Outcome ModelWithoutRights(const std::string& arguments) {
  const std::string rights = "-dac_override,-dac_read_search";
  const std::string before = "if [ $(id -u) = 0 ]; then MODEL=\"setpriv --bounding-set=" + rights +
                             " --inh-caps=" + rights + " $MODEL\"; fi; ";
  return Shell(before + "$MODEL " + arguments);
}

} // namespace

TEST_F(GslModel, MissingRightsAreNamedAndTheDatabaseStays) {
  const std::string database = m_folder.Path("part.gslm");
  ASSERT_EQ(Model(m_part + " convert " + database).status, 0);
  const std::string bytes = BytesOf(database);
  chmod(database.c_str(), 0);
  ExpectError(ModelWithoutRights(database + " list"), 3,
              database + ": cannot open: Permission denied");
  chmod(database.c_str(), 0444);
  const std::string inside = m_folder.Path("");
  chmod(inside.c_str(), 0555);
  EXPECT_EQ(ModelWithoutRights(database + " check").out,
            database + ": no problem; 2 roots, 7 records\n");
  ExpectError(ModelWithoutRights(m_part + " convert " + m_folder.Path("new.gslm")), 4,
              m_folder.Path("new.gslm") + ": cannot be written: Permission denied");
  ExpectError(ModelWithoutRights(m_part + " convert --force " + database), 4,
              database + ": cannot be written: Permission denied");
  chmod(inside.c_str(), 0755);
  EXPECT_EQ(BytesOf(database), bytes);
  EXPECT_EQ(m_folder.Names(), (std::vector<std::string>{"part.gslm", "part.gslr"}));
}

TEST_F(GslModel, FullDiskLeavesTheOldDatabase) {
  const std::string database = m_folder.Path("part.gslm");
  ASSERT_EQ(Model(m_part + " convert " + database).status, 0);
  const std::string bytes = BytesOf(database);
  const std::string other = Save("other.gslr", EveryKind(2.0));
  // Nothing, the first pages, and all but the last ones.
  for (const char* blocks : {"0", "20", "80"}) {
    const Outcome full = Shell("( ulimit -f " + std::string(blocks) + "; $MODEL " + other +
                               " convert --force " + database + "; echo status $? ) 2>&1 | cat");
    EXPECT_EQ(full.out,
              "gsl-model: " + database + ": cannot be written: File too large\nstatus 4\n")
        << blocks;
    EXPECT_EQ(BytesOf(database), bytes);
    EXPECT_EQ(m_folder.Names(), (std::vector<std::string>{"other.gslr", "part.gslm", "part.gslr"}));
  }
}

TEST_F(GslModel, LockedDatabaseIsNamedAfterAWhile) {
  const std::string database = m_folder.Path("part.gslm");
  ASSERT_EQ(Model(m_part + " convert " + database).status, 0);
  const std::string bytes = BytesOf(database);
  // A writer that is writing its changes has these locks, as the format of the file says.
  struct flock lock = {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  lock.l_start = 0x40000000;
  lock.l_len = 512;
  const int file = open(database.c_str(), O_RDWR);
  ASSERT_EQ(fcntl(file, F_SETLK, &lock), 0);
  ExpectError(Model(database + " list"), 3,
              database + ": is locked: another program is writing to it");
  close(file);
  EXPECT_EQ(Model(database + " list").status, 0);
  EXPECT_EQ(BytesOf(database), bytes);
}

TEST_F(GslModel, GoldenFilesOfBothFormsAreEqual) {
  const std::string records = GSL_GOLDEN_RECORDS "/every_kind.gslr";
  const std::string model = GSL_GOLDEN_MODELS "/every_kind.gslm";
  EXPECT_EQ(Model(model + " check").out, model + ": no problem; 2 roots, 7 records\n");
  const Outcome run = Model(model + " diff " + records);
  EXPECT_EQ(run.status, 0) << run.out << run.err;
}

#endif

TEST_F(GslModel, OutputThatCannotBeWrittenLeavesTheOldFile) {
  const std::string before = BytesOf(m_part);
  const std::string other = Save("other.gslr", EveryKind(2.0));
  ExpectError(Model(other + " convert " + m_part), 4,
              m_part + ": already exists and is kept; --force replaces it");
  ExpectError(Model(other + " convert " + m_folder.Path("none/out")), 4,
              m_folder.Path("none/out") + ": cannot be written: No such file or directory");
  const Outcome full = Shell("( ulimit -f 0; $MODEL " + other + " convert --force " + m_part +
                             "; echo status $? ) 2>&1 | cat");
  EXPECT_EQ(full.out, "gsl-model: " + m_part + ": cannot write: File too large\nstatus 4\n");
  EXPECT_EQ(BytesOf(m_part), before);
  EXPECT_EQ(m_folder.Names(), (std::vector<std::string>{"other.gslr", "part.gslr"}));
  EXPECT_EQ(Shell("$MODEL " + m_part + " list >/dev/full").status, 4);
}

TEST_F(GslModel, DiffTellsWhatIsDifferent) {
  EXPECT_EQ(Model(m_part + " diff " + m_part).status, 0);
  const std::string other = Save("other.gslr", EveryKind(std::nextafter(1.5, 2.0)));
  const Outcome run = Model(m_part + " diff " + other);
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out, "~ part/x: 1.5 -> 1.5000000000000002\n");
  const Outcome quiet = Model(m_part + " diff --quiet " + other);
  EXPECT_EQ(quiet.status, 1);
  EXPECT_EQ(quiet.out, "");
  EXPECT_EQ(Shell("$MODEL - diff " + other + " <" + m_part).status, 1);
}

TEST_F(GslModel, ManyDifferencesAreCutAndItSaysSo) {
  const auto list = [](double last) {
    gsl_RecordStore store;
    const std::vector<double> values(2000, last);
    store.SetDoubles(store.AddRoot(1, {}), values.data(), values.size(), 1);
    store.Finish();
    return store;
  };
  const Outcome run = Model(Save("a", list(1.0)) + " diff " + Save("b", list(2.0)));
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(LineCount(run.out), 1000u);
  EXPECT_EQ(run.err, "gsl-model: at most 1000 differences are listed; there may be more\n");
}

TEST_F(GslModel, WrongUsageIsOneLine) {
  ExpectError(Model(m_part + " lsit"), 2, "unknown command lsit; did you mean list?");
  EXPECT_EQ(Model("--version").out, "gsl-model " GSL_VERSION "\n");
  EXPECT_EQ(Model("--help").status, 0);
}

} // namespace
