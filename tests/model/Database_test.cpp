#include "Database.h"

#include "ChildProcess.h"
#include "DatabaseSamples.h"
#include "SameContents.h"
#include "TemporaryFolder.h"
#include "TestScale.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace database_samples;
using gsl_model::Statement;

class GslDatabase : public testing::Test {
protected:
  TemporaryFolder m_folder;
  std::string m_path = m_folder.Path("model.gslm");
};

std::string MessageOfOpening(const std::string& path, Access access = Access::Read) {
  return MessageOf([&] { const Model model(path, access, kNoPatience); });
}

std::string MessageOfWriting(const std::string& path) {
  return MessageOf([&] {
    Model(path, Access::Write, kNoPatience).Write([](Transaction& t) {
      EXPECT_TRUE(t.Remove("part"));
    });
  });
}

} // namespace

TEST_F(GslDatabase, TextsThatAreNotUtf8AreBlobs) {
  Database database(m_path, Database::Access::Create, kNoPatience);
  database.Run("CREATE TABLE t(value ANY) STRICT");
  const auto typeOf = [&](std::string_view text) {
    database.Run("DELETE FROM t");
    Statement(database, "INSERT INTO t VALUES (?1)").BindText(1, text).Run();
    Statement row(database, "SELECT value, typeof(value) FROM t");
    EXPECT_TRUE(row.Step());
    EXPECT_EQ(row.Bytes(0), text);
    return std::string(row.Bytes(1));
  };
  for (const std::string_view text :
       {"", "a", "\x7f", "\xc2\x80", "\xdf\xbf", "\xe0\xa0\x80", "\xed\x9f\xbf", "\xee\x80\x80",
        "\xf0\x90\x80\x80", "\xf4\x8f\xbf\xbf", "\xe2\x82\xac uro"}) {
    EXPECT_EQ(typeOf(text), "text") << text;
  }
  for (const std::string_view text :
       {"\x80", "\xc1\xbf", "\xc2", "\xc2 ", "\xe0\x9f\xbf", "\xed\xa0\x80", "\xe2\x82",
        "\xf0\x8f\xbf\xbf", "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "a\xff"}) {
    EXPECT_EQ(typeOf(text), "blob") << text;
  }
  EXPECT_EQ(typeOf(std::string_view("a\0b", 3)), "blob");
}

TEST_F(GslDatabase, FileThatIsNotADatabaseIsNamedAndKept) {
  EXPECT_EQ(MessageOfOpening(m_path), m_path + ": cannot open: No such file or directory");
  EXPECT_EQ(MessageOfOpening(m_path, Access::Write),
            m_path + ": cannot open: No such file or directory");
  EXPECT_EQ(MessageOfOpening(m_folder.Path("")), m_folder.Path("") + ": is not a regular file");
  EXPECT_EQ(MessageOfOpening("/dev/full", Access::Create), "/dev/full: is not a regular file");
  EXPECT_EQ(MessageOfOpening(m_folder.Path("none/model"), Access::Create),
            m_folder.Path("none/model") + ": cannot open: No such file or directory");
  const std::string foreign = m_folder.Write("foreign", "solid cube");
  for (const Access access : {Access::Read, Access::Write, Access::Create}) {
    EXPECT_EQ(MessageOfOpening(foreign, access),
              foreign + ": is not a model: the file starts with 73 6f 6c 69, but a model starts "
                        "with 53 51 4c 69 (\"SQLi\")");
  }
  EXPECT_EQ(BytesOf(foreign), "solid cube");
  const std::string empty = m_folder.Write("empty", "");
  EXPECT_EQ(MessageOfOpening(empty), empty + ": is not a model: the file is empty");
  EXPECT_EQ(MessageOfOpening(empty, Access::Create), "no error");
  EXPECT_EQ(MessageOfOpening(empty), "no error");
}

TEST_F(GslDatabase, FileBesideAForeignFileStays) {
  const std::string magic = "\xd9\xd5\x05\xf9\x20\xa1\x63\xd7";
  const std::string journal = magic + std::string("\xff\xff\xff\xff\0\0\0\1\0\0\0\0\0\0\2\0", 16) +
                              std::string("\0\0\x10\0", 4) + std::string(484, '\0');
  const std::string zeros(9, '\0');
  for (const std::string& beside : {std::string("dear diary"), magic, journal, zeros}) {
    // The last ones begin almost as a page that was torn.
    for (const std::string& foreign :
         {std::string("solid cube") + std::string(600, ' '),
          std::string("gslr") + std::string(600, '\1'), std::string("SQLite format 3 of some kind"),
          std::string("SQLi\0\0x\0", 8)}) {
      m_folder.Write("model.gslm", foreign);
      const std::string path = m_folder.Write("model.gslm-journal", beside);
      for (const Access access : {Access::Read, Access::Write, Access::Create}) {
        EXPECT_EQ(
            MessageOfOpening(m_path, access).find(m_path + ": is not a model: the file starts"),
            0u);
        EXPECT_TRUE(BytesOf(m_path) == foreign) << foreign.substr(0, 4);
        EXPECT_TRUE(BytesOf(path) == beside) << foreign.substr(0, 4);
      }
    }
  }
}

TEST_F(GslDatabase, FileBesideAnEmptyFileStays) {
  const std::string path = m_folder.Write("model.gslm-journal", "dear diary");
  const std::string refused = m_path + ": cannot be created: " + path +
                              " is beside it, and is not a journal that can be read";
  EXPECT_EQ(MessageOfOpening(m_path, Access::Create), refused);
  EXPECT_EQ(m_folder.Names(), (std::vector<std::string>{"model.gslm-journal"}));
  m_folder.Write("model.gslm", "");
  EXPECT_EQ(MessageOfOpening(m_path, Access::Read), m_path + ": is not a model: the file is empty");
  EXPECT_EQ(MessageOfOpening(m_path, Access::Write),
            m_path + ": is not a model: the file is empty");
  EXPECT_EQ(MessageOfOpening(m_path, Access::Create), refused);
  EXPECT_EQ(BytesOf(m_path), "");
  EXPECT_EQ(BytesOf(path), "dear diary");
  // A journal that was begun, and no more, is that of a writer that was interrupted.
  for (const char* const magic : {"", "\xd9\xd5\x05"}) {
    std::string begun = magic;
    begun.resize(512, '\0');
    m_folder.Write("model.gslm", "");
    m_folder.Write("model.gslm-journal", begun);
    EXPECT_EQ(MessageOfOpening(m_path, Access::Create), "no error");
    EXPECT_EQ(m_folder.Names(), (std::vector<std::string>{"model.gslm"}));
  }
  m_folder.Write("model.gslm", "");
  m_folder.Write("model.gslm-journal", "");
  EXPECT_EQ(MessageOfOpening(m_path, Access::Create), "no error");
}

TEST_F(GslDatabase, FolderInPlaceOfTheJournalStaysAndNothingElseIsRead) {
  const std::string path = m_path + "-journal";
  ASSERT_EQ(mkdir(path.c_str(), 0777), 0);
  EXPECT_EQ(MessageOfOpening(m_path, Access::Create),
            m_path + ": cannot be created: " + path +
                " is beside it, and is not a journal that can be read");
  EXPECT_EQ(m_folder.Names(), (std::vector<std::string>{"model.gslm-journal"}));
  EXPECT_NE(fcntl(STDOUT_FILENO, F_GETFD), -1);
}

TEST_F(GslDatabase, ProgramWithoutAStandardInputReadsTheJournal) {
  m_folder.Write("model.gslm-journal", std::string(512, '\0'));
  const int input = dup(STDIN_FILENO);
  close(STDIN_FILENO);
  EXPECT_EQ(MessageOfOpening(m_path, Access::Create), "no error");
  dup2(input, STDIN_FILENO);
  close(input);
}

TEST_F(GslDatabase, CutFileIsRefused) {
  CreateEveryKind(m_path);
  const std::string bytes = BytesOf(m_path);
  for (const std::size_t size : {bytes.size() - 1, bytes.size() / 2, std::size_t{4096},
                                 std::size_t{100}, std::size_t{16}, std::size_t{3}}) {
    m_folder.Write("model.gslm", bytes.substr(0, size));
    const std::string message = MessageOfReading(m_path);
    EXPECT_EQ(message.substr(0, m_path.size() + 2), m_path + ": ") << size;
    EXPECT_EQ(message.find('\n'), std::string::npos);
    EXPECT_EQ(BytesOf(m_path).size(), size);
  }
}

TEST_F(GslDatabase, MessageIsOneLineWhateverTheFileHas) {
  const Database database(m_path, Database::Access::Create, kNoPatience);
  const auto messageOf = [&](const std::string& why) {
    return MessageOf([&] { database.Fail(why); }).substr(m_path.size() + 2);
  };
  EXPECT_EQ(messageOf("caf\xc3\xa9"), "caf\xc3\xa9");
  EXPECT_EQ(messageOf("a\nb\x7f"), "a?b?");
  EXPECT_EQ(messageOf("a\xff\xc3\xa9"), "a???");
  EXPECT_EQ(messageOf(std::string(400, '\xff')), std::string(300, '?'));
}

TEST_F(GslDatabase, LockedFileIsNamed) {
  CreateEveryKind(m_path);
  Model first(m_path, Access::Write, kNoPatience);
  Model second(m_path, Access::Write, kNoPatience);
  first.Write([&](Transaction&) {
    EXPECT_EQ(MessageOf([&] { second.Write([](Transaction&) {}); }),
              m_path + ": is locked: another program is writing to it");
    EXPECT_TRUE(second.Has("part"));
  });
  second.Write([](Transaction& t) { EXPECT_TRUE(t.Remove("part")); });
  EXPECT_FALSE(first.Has("part"));
}

TEST_F(GslDatabase, OpeningAgainKeepsTheLocksOfTheProcess) {
  CreateEveryKind(m_path);
  Model first(m_path, Access::Write, kNoPatience);
  const auto isLocked = [&] {
    return StatusInChild([&] {
      // A writer locks this byte, as the format of the file says.
      struct flock lock = {};
      lock.l_type = F_WRLCK;
      lock.l_whence = SEEK_SET;
      lock.l_start = 0x40000001;
      lock.l_len = 1;
      const int file = open(m_path.c_str(), O_RDWR);
      if (file < 0 || fcntl(file, F_GETLK, &lock) != 0) return 2;
      return lock.l_type == F_WRLCK ? 1 : 0;
    });
  };
  EXPECT_EQ(isLocked(), 0);
  first.Write([&](Transaction&) {
    EXPECT_EQ(isLocked(), 1);
    const Model second(m_path, Access::Read, kNoPatience);
    EXPECT_EQ(isLocked(), 1);
  });
  EXPECT_EQ(isLocked(), 0);
}

TEST_F(GslDatabase, PatienceHasALimitAndIsNeverNegative) {
  const auto waiting = [&](std::chrono::milliseconds patience) {
    return Database(m_path, Database::Access::Create, patience).Integer("PRAGMA busy_timeout");
  };
  EXPECT_EQ(waiting(std::chrono::milliseconds::max()), 2147483647);
  EXPECT_EQ(waiting(std::chrono::milliseconds(7)), 7);
  EXPECT_EQ(waiting(std::chrono::milliseconds(-1)), 0);
}

TEST_F(GslDatabase, FileAndFolderWithoutPermissionAreNamedAndTheFileStays) {
  CreateEveryKind(m_path);
  const std::string bytes = BytesOf(m_path);
  const auto asNobody = [&](const auto& work, const std::string& expected) {
    return StatusInChild([&] {
      if (!BecomeNobody()) return 1;
      return work() == m_path + ": " + expected ? 0 : 2;
    });
  };
  chmod(m_folder.Path("").c_str(), 0555);
  chmod(m_path.c_str(), 0444);
  EXPECT_EQ(
      asNobody([&] { return MessageOfWriting(m_path); }, "cannot be written: Permission denied"),
      0);
  EXPECT_EQ(StatusInChild(
                [&] { return BecomeNobody() && MessageOfReading(m_path) == "no error" ? 0 : 1; }),
            0);
  chmod(m_path.c_str(), 0666);
  EXPECT_EQ(asNobody([&] { return MessageOfWriting(m_path); },
                     "cannot be written: the file or its folder is read-only"),
            0);
  chmod(m_path.c_str(), 0);
  EXPECT_EQ(asNobody([&] { return MessageOfReading(m_path); }, "cannot open: Permission denied"),
            0);
  chmod(m_folder.Path("").c_str(), 0755);
  chmod(m_path.c_str(), 0644);
  EXPECT_EQ(BytesOf(m_path), bytes);
}

TEST_F(GslDatabase, FullDiskLeavesTheOldContents) {
  CreateEveryKind(m_path);
  const auto before = Model(m_path, Access::Read).ReadAll();
  struct stat status = {};
  stat(m_path.c_str(), &status);
  const auto size = static_cast<rlim_t>(status.st_size);
  for (const rlim_t limit : {rlim_t{0}, rlim_t{600}, size, size + 4096, size + 100000}) {
    const int result = StatusInChild([&] {
      const rlimit most{limit, limit};
      std::signal(SIGXFSZ, SIG_IGN);
      setrlimit(RLIMIT_FSIZE, &most);
      const std::string message = MessageOf([&] {
        Model(m_path, Access::Write).Write([](Transaction& t) {
          gsl_RecordWriter& to = t.Writer();
          const gsl_RecordIndex root = to.AddRoot(1, {});
          for (int i = 0; i < 20000; ++i)
            to.AddString(root, {"text", i % 3}, "some text that takes its place");
        });
      });
      return message.find(m_path + ": cannot be written: ") == 0 ? 0 : 2;
    });
    EXPECT_EQ(result, 0) << limit;
    EXPECT_TRUE(SameContents(*Model(m_path, Access::Read).ReadAll(), *before)) << limit;
  }
  EXPECT_EQ(m_folder.Names(), (std::vector<std::string>{"model.gslm"}));
}

TEST_F(GslDatabase, WriterKilledAtAnyMomentLeavesACommittedModel) {
  constexpr int kRoots = 40;
  const auto write = [&](Model& model, int mark) {
    model.Write([&](Transaction& t) {
      for (int i = 0; i < kRoots; ++i)
        static_cast<void>(t.Remove("root " + std::to_string(i)));
      gsl_RecordWriter& to = t.Writer();
      for (int i = 0; i < kRoots; ++i) {
        to.AddInteger(to.AddRoot(1, {}), {"mark", 0}, mark);
        to.NameRoot("root " + std::to_string((i + mark) % kRoots));
      }
    });
  };
  {
    Model model(m_path);
    write(model, 0);
  }
  std::mt19937 random(20261122);
  const SharedNumber committed;
  int newer = 0;
  const long rounds = Kills(Scaled(20) + 3);
  for (long round = 0; round < rounds; ++round) {
    const int before = committed.Get();
    const pid_t child = StartChild([&]() -> int {
      Model model(m_path);
      for (int mark = before + 1;; ++mark) {
        write(model, mark);
        committed.Set(mark);
      }
    });
    // Each second writer is given the time for a transaction, also on a slow machine.
    for (int wait = 0; round % 2 == 0 && wait < 30000 && committed.Get() == before; ++wait)
      usleep(1000);
    usleep(static_cast<useconds_t>(random() % 40000));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    const auto records = Model(m_path, Access::Read).ReadAll();
    ASSERT_EQ(records->RootCount(), static_cast<std::size_t>(kRoots)) << round;
    const int mark = (*records->Fields(records->Root(0)).begin()).integer;
    for (std::size_t i = 0; i < records->RootCount(); ++i) {
      ASSERT_EQ((*records->Fields(records->Root(i)).begin()).integer, mark) << round;
    }
    // What was committed is there. The transaction that was interrupted is there whole, or not.
    ASSERT_GE(mark, committed.Get()) << round;
    ASSERT_LE(mark, committed.Get() + 1) << round;
    newer += mark - committed.Get();
    committed.Set(mark);
  }
  EXPECT_GT(committed.Get(), 0);
  if (rounds >= 500) printf("%d transactions, %d ended by a kill\n", committed.Get(), newer);
}
