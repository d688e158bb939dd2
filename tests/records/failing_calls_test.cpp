#include "FailingCalls.h"
#include "TemporaryFolder.h"
#include "gsl_RecordError.h"
#include "gsl_RecordFile.h"
#include "gsl_RecordStore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

// Calls of the system that are interrupted, fail, or return what they seldom return.

namespace {

gsl_RecordStore Marked(int mark) {
  gsl_RecordStore store;
  store.AddInteger(store.AddRoot(1, {1, 1}), {"mark", 0}, mark);
  return store;
}

std::string MessageOfSaving(const std::string& path, int mark) {
  try {
    gsl_SaveRecords(Marked(mark), path);
  } catch (const gsl_RecordError& error) {
    return error.what();
  }
  return "saved";
}

std::string MessageOfLoading(const std::string& path) {
  try {
    return std::to_string(gsl_LoadRecords(path).RootCount());
  } catch (const gsl_RecordError& error) {
    return error.what();
  }
}

class GslRecordFileCalls : public testing::Test {
protected:
  GslRecordFileCalls() { gsl_SaveRecords(Marked(1), m_path); }

  /// Expects that saving fails with the message, and that the file is as before and alone.
  void ExpectKept(const std::string& message) {
    const std::string before = BytesOf(m_path);
    EXPECT_EQ(MessageOfSaving(m_path, 2), m_path + ": " + message);
    EXPECT_EQ(BytesOf(m_path), before);
    EXPECT_THAT(m_folder.Names(), testing::ElementsAre("model.gslr"));
  }

  const TemporaryFolder m_folder;
  const std::string m_path = m_folder.Path("model.gslr");
};

} // namespace

TEST_F(GslRecordFileCalls, InterruptedCallsAreRepeated) {
  {
    const FailingCalls calls("read", EINTR, 3);
    EXPECT_EQ(MessageOfLoading(m_path), "1");
    EXPECT_EQ(calls.Failed(), 3);
  }
  const std::string before = BytesOf(m_path);
  const FailingCalls calls("write", EINTR, 3);
  EXPECT_EQ(MessageOfSaving(m_path, 1), "saved");
  EXPECT_EQ(calls.Failed(), 3);
  EXPECT_EQ(BytesOf(m_path), before);
}

TEST_F(GslRecordFileCalls, FileThatCannotBeReadIsRefused) {
  const FailingCalls calls("fstat", EIO);
  EXPECT_EQ(MessageOfLoading(m_path), m_path + ": cannot read: Input/output error");
}

TEST_F(GslRecordFileCalls, DeviceThatTakesNothingIsFull) {
  // The error of an earlier call says nothing.
  for (const int error : {0, EINTR}) {
    const FailingCalls calls("write", error, 1, 0, 0);
    ExpectKept("cannot write: No space left on device");
  }
}

TEST_F(GslRecordFileCalls, PermissionsThatCannotBeKeptAreReported) {
  const FailingCalls calls("fchmod", EPERM);
  ExpectKept("cannot set permissions: Operation not permitted");
}

TEST_F(GslRecordFileCalls, DiskThatIsFullOnlyAtTheCloseIsReported) {
  const FailingCalls calls("close", EIO);
  ExpectKept("cannot write: Input/output error");
}

TEST_F(GslRecordFileCalls, NameWithoutFolderIsInTheWorkingFolder) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(m_folder.Path(""));
  EXPECT_EQ(MessageOfSaving("other.gslr", 1), "saved");
  std::filesystem::current_path(before);
  EXPECT_EQ(BytesOf(m_folder.Path("other.gslr")), BytesOf(m_path));
}
