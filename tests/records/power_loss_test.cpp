#include "ChildProcess.h"
#include "FileEvents.h"
#include "PowerLoss.h"
#include "Records.h"
#include "TemporaryFolder.h"
#include "gsl_RecordError.h"
#include "gsl_RecordFile.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

constexpr std::uint64_t kNothing = 0;

/// State number `state`: some records, in a file of another size than that of the states beside it.
gsl_RecordStore StateOf(std::uint64_t state) {
  gsl_RecordStore store;
  const std::uint64_t count = state % 3 == 0 ? 1 : 300 * (state % 5);
  for (std::uint64_t i = 0; i <= count; ++i) {
    const gsl_RecordIndex root = store.AddRoot(1, {1, i});
    store.AddInteger(root, {"state", 0}, static_cast<std::int32_t>(state));
    store.AddString(root, {"text", 1}, "text " + std::to_string(i * state));
  }
  store.Finish();
  return store;
}

std::string MessageOfSaving(std::uint64_t state, const std::string& path) {
  try {
    gsl_SaveRecords(StateOf(state), path);
  } catch (const gsl_RecordError& error) {
    return error.what();
  }
  return "saved";
}

} // namespace

TEST(GslRecordFilePowerLoss, LeavesAStateThatWasSaved) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("model.gslr");
  FileEvents events(folder.Path(""));
  for (std::uint64_t state = 1; state <= 12; ++state) {
    gsl_SaveRecords(StateOf(state), path);
    events.Mark(state);
  }
  const std::uint64_t seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  RandomNumbers random(seed);
  int newer = 0;
  for (int loss = 0; loss < 500; ++loss) {
    const std::size_t count = random.Next() % (events.All().size() + 1);
    const power_loss::Files disk = power_loss::DiskAfter(events.All(), count, random);
    const std::uint64_t promised = power_loss::PromisedBefore(events.All(), count, kNothing);
    const auto file = disk.find("model.gslr");
    if (file == disk.end()) {
      ASSERT_EQ(promised, kNothing) << count;
      continue;
    }
    const gsl_RecordStore read = gsl_RecordStore::FromBytes(
        reinterpret_cast<const unsigned char*>(file->second.data()), file->second.size());
    const bool isNewer = SameRecords(read, StateOf(promised + 1));
    ASSERT_TRUE(isNewer || SameRecords(read, StateOf(promised))) << count;
    newer += isNewer ? 1 : 0;
  }
  EXPECT_GT(newer, 0);
}

namespace {

/// Saves a second state while call number `call` of the system fails. Returns whether there was no
/// such call.
bool IsSavedWithout(long call, int error, bool isLasting) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("model.gslr");
  FileEvents events(folder.Path(""));
  gsl_SaveRecords(StateOf(1), path);
  events.FailAt(call, error, isLasting);
  const std::string message = MessageOfSaving(2, path);
  const bool isDone = events.Calls() <= call;
  events.FailNever();
  const bool isSaved = message == "saved";
  EXPECT_TRUE(SameRecords(gsl_LoadRecords(path), StateOf(isSaved ? 2 : 1))) << call;
  if (!isSaved) {
    EXPECT_EQ(message.find(path + ": cannot "), 0u) << message;
    EXPECT_NE(message.find(std::strerror(error)), message.npos) << message;
    EXPECT_EQ(message.find('\n'), message.npos) << message;
  }
  if (!isLasting) {
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"model.gslr"})) << call;
  }
  return isDone;
}

} // namespace

TEST(GslRecordFilePowerLoss, CallThatFailsLeavesTheOldFileAndOneLine) {
  for (const int error : {ENOSPC, EIO}) {
    for (const bool isLasting : {false, true}) {
      long calls = 0;
      while (!IsSavedWithout(calls, error, isLasting))
        ++calls;
      // The file beside, its four parts, its flush, its name, the rename, the flush of the folder.
      EXPECT_EQ(calls, 9);
    }
  }
}

TEST(GslRecordFilePowerLoss, WriterKilledBeforeEachCallLeavesAWholeFile) {
  int status = -1;
  int kills = 0;
  for (; status < 0 && kills < 1000; ++kills) {
    const TemporaryFolder folder;
    const std::string path = folder.Path("model.gslr");
    const SharedNumber saved;
    status = StatusInChild([&] {
      FileEvents events(folder.Path(""));
      events.FailAt(kills, FileEvents::kKill, false);
      for (int state = 1; state <= 3; ++state) {
        gsl_SaveRecords(StateOf(static_cast<std::uint64_t>(state)), path);
        saved.Set(state);
      }
      return 0;
    });
    const auto promised = static_cast<std::uint64_t>(saved.Get());
    if (promised == kNothing && access(path.c_str(), F_OK) != 0) continue;
    const gsl_RecordStore read = gsl_LoadRecords(path);
    EXPECT_TRUE(SameRecords(read, StateOf(promised)) || SameRecords(read, StateOf(promised + 1)))
        << kills;
  }
  EXPECT_EQ(status, 0);
  EXPECT_EQ(kills, 3 * 9 + 1);
}
