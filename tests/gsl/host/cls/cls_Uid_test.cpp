#include "cls_Uid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <set>
#include <string>
#include <sys/wait.h>
#include <type_traits>
#include <unistd.h>
#include <unordered_set>
#include <vector>

namespace {

/// The identifiers that a forked child allocates fit in a pipe.
std::vector<cls_Uid> AllocateInChild(std::size_t count) {
  std::vector<cls_Uid> uids(count);
  int ends[2];
  EXPECT_EQ(pipe(ends), 0);
  const pid_t child = fork();
  if (child == 0) {
    for (cls_Uid& uid : uids)
      uid = cls_Uid::AllocateUid();
    const std::size_t size = count * sizeof(cls_Uid);
    const bool written =
        write(ends[1], static_cast<const void*>(uids.data()), size) == static_cast<ssize_t>(size);
    _exit(written ? 0 : 1);
  }
  close(ends[1]);
  char* into = reinterpret_cast<char*>(uids.data());
  std::size_t left = count * sizeof(cls_Uid);
  for (ssize_t got = 1; left > 0 && (got = read(ends[0], into, left)) > 0;) {
    into += got;
    left -= static_cast<std::size_t>(got);
  }
  close(ends[0]);
  EXPECT_EQ(left, 0u);
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  return uids;
}

void ExpectAllDifferent(std::vector<cls_Uid> uids) {
  std::sort(uids.begin(), uids.end());
  EXPECT_EQ(std::adjacent_find(uids.begin(), uids.end()), uids.end());
}

/// Returns the identifiers that another run of a program prints, one "prefix serial" on each line.
std::vector<cls_Uid> AllocateInNewProcess() {
  std::vector<cls_Uid> uids;
  std::FILE* const out = popen(UID_PROBE_PROGRAM, "r");
  EXPECT_NE(out, nullptr);
  unsigned long long prefix = 0, serial = 0;
  while (std::fscanf(out, "%llu %llu", &prefix, &serial) == 2)
    uids.emplace_back(prefix, serial);
  EXPECT_EQ(pclose(out), 0);
  return uids;
}

} // namespace

TEST(ClsUid, Is128BitsAndTriviallyCopyable) {
  EXPECT_EQ(sizeof(cls_Uid), 16u);
  EXPECT_TRUE(std::is_trivially_copyable<cls_Uid>::value);
  EXPECT_TRUE(std::is_standard_layout<cls_Uid>::value);
}

TEST(ClsUid, DefaultIsNullAndEqualOnlyToItself) {
  constexpr cls_Uid null;
  static_assert(null.IsNull(), "known at compile time");
  EXPECT_TRUE(null == cls_Uid());
  EXPECT_TRUE(cls_Uid(0, 0).IsNull());
  EXPECT_FALSE(cls_Uid(0, 1).IsNull());
  EXPECT_FALSE(cls_Uid(1, 0).IsNull());
  EXPECT_TRUE(null != cls_Uid::AllocateUid());
}

TEST(ClsUid, CopiesAreTheSameIdentity) {
  const cls_Uid a = cls_Uid::AllocateUid();
  const cls_Uid copy(a);
  cls_Uid assigned;
  assigned = a;
  EXPECT_EQ(copy, a);
  EXPECT_EQ(assigned, a);
  EXPECT_EQ(cls_Uid(a.Prefix(), a.Serial()), a);
}

TEST(ClsUid, BothHalvesTakePartInEqualityAndOrder) {
  const cls_Uid a(1, 5), b(1, 6), c(2, 0);
  EXPECT_TRUE(a != b);
  EXPECT_TRUE(a != c);
  EXPECT_TRUE(a < b);
  EXPECT_TRUE(b < c);
  EXPECT_TRUE(a < c);
  EXPECT_FALSE(b < a);
  EXPECT_FALSE(a < a);
  EXPECT_EQ((std::set<cls_Uid>{c, b, a, b}.size()), 3u);
}

TEST(ClsUid, HashAgreesWithEqualityAndSpreadsSerials) {
  const std::hash<cls_Uid> hash;
  const cls_Uid a = cls_Uid::AllocateUid();
  EXPECT_EQ(hash(a), hash(cls_Uid(a)));
  std::unordered_set<std::size_t> hashes, lowBits;
  for (int i = 0; i < 4096; ++i) {
    const std::size_t h = hash(cls_Uid::AllocateUid());
    hashes.insert(h);
    lowBits.insert(h & 4095u);
  }
  EXPECT_EQ(hashes.size(), 4096u);
  EXPECT_GT(lowBits.size(), 2000u);
}

TEST(ClsUid, OneThreadNeverGetsTheSameTwiceAcrossItsBlocks) {
  // These are more than three blocks of 2^20. Serials rise, so equal identifiers would be
  // neighbours.
  cls_Uid last = cls_Uid::AllocateUid();
  const std::uint64_t prefix = last.Prefix();
  for (int i = 0; i < 3500000; ++i) {
    const cls_Uid next = cls_Uid::AllocateUid();
    ASSERT_LT(last, next);
    ASSERT_EQ(next.Prefix(), prefix);
    last = next;
  }
}

TEST(ClsUid, AForkedChildHasIdentifiersOfItsOwn) {
  std::vector<cls_Uid> all;
  const cls_Uid before = cls_Uid::AllocateUid();
  all.push_back(before);
  for (int child = 0; child < 4; ++child) {
    const std::vector<cls_Uid> uids = AllocateInChild(1000);
    EXPECT_NE(uids[0].Prefix(), before.Prefix());
    EXPECT_NE(uids[0].Prefix(), all.back().Prefix());
    all.insert(all.end(), uids.begin(), uids.end());
    for (int i = 0; i < 1000; ++i)
      all.push_back(cls_Uid::AllocateUid());
  }
  EXPECT_EQ(all.back().Prefix(), before.Prefix()) << "the parent goes on as before";
  for (const cls_Uid& uid : all)
    EXPECT_FALSE(uid.IsNull());
  ExpectAllDifferent(all);
}

TEST(ClsUid, AChildOfAChildHasIdentifiersOfItsOwn) {
  const cls_Uid mine = cls_Uid::AllocateUid();
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const pid_t child = fork();
  if (child == 0) {
    const cls_Uid own = cls_Uid::AllocateUid();
    const cls_Uid grandchild = AllocateInChild(1)[0];
    const std::uint64_t prefixes[2] = {own.Prefix(), grandchild.Prefix()};
    const bool written = write(ends[1], prefixes, sizeof prefixes) == sizeof prefixes;
    _exit(written ? 0 : 1);
  }
  std::uint64_t prefixes[2] = {};
  ASSERT_EQ(read(ends[0], prefixes, sizeof prefixes), static_cast<ssize_t>(sizeof prefixes));
  close(ends[0]);
  close(ends[1]);
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_NE(prefixes[0], mine.Prefix());
  EXPECT_NE(prefixes[1], mine.Prefix());
  EXPECT_NE(prefixes[0], prefixes[1]);
}

TEST(ClsUid, TwoProcessesNeverAllocateTheSame) {
  std::vector<cls_Uid> all = AllocateInNewProcess();
  ASSERT_EQ(all.size(), 100u);
  const std::vector<cls_Uid> second = AllocateInNewProcess();
  EXPECT_NE(all[0].Prefix(), second[0].Prefix());
  all.insert(all.end(), second.begin(), second.end());
  for (int i = 0; i < 100; ++i)
    all.push_back(cls_Uid::AllocateUid());
  ExpectAllDifferent(all);
}
