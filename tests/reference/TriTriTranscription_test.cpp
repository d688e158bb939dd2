#include "TriTriTranscription.h"

#include "PointChecks.h"
#include "RandomSettings.h"
#include "SweepCases.h"
#include "TestScale.h"
#include "gsl_TriTriMinDirectionalDist.h"

#include <cinttypes>
#include <cstdio>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

namespace {

using transcription::Branch;
using Counts = std::vector<long>;

constexpr std::uint64_t kSeed = 0x7A5C0DE5u;

/// The effect of a call.
struct Outcome {
  bool result = false;
  double distance = 0.0;
  gsl_Point contacts[2];
  /// The name of the identity of each contact: "a0" to "b2", "before0", "before1", "contact0", or
  /// "fresh".
  std::string identity[2];
};

std::string IdentityOf(const Outcome& outcome, int k, const SweepCase& c, const gsl_Point* before) {
  const cls_Uid& uid = outcome.contacts[k].uid;
  for (int i = 0; i < 3; ++i) {
    if (uid == c.a[i].uid) return "a" + std::to_string(i);
  }
  for (int i = 0; i < 3; ++i) {
    if (uid == c.b[i].uid) return "b" + std::to_string(i);
  }
  for (int i = 0; i < 2; ++i) {
    if (uid == before[i].uid) return "before" + std::to_string(i);
  }
  if (k == 1 && uid == outcome.contacts[0].uid) return "contact0";
  return uid.IsNull() ? "null" : "fresh";
}

template <class Sweep>
Outcome Call(const SweepCase& c, const gsl_Point* before, const Sweep& sweep) {
  Outcome outcome;
  outcome.contacts[0] = before[0];
  outcome.contacts[1] = before[1];
  outcome.distance = c.distance;
  outcome.result = sweep(c.direction, c.a[0], c.a[1], c.a[2], c.b[0], c.b[1], c.b[2], c.twoSided,
                         c.margin, outcome.contacts, outcome.distance);
  for (int k = 0; k < 2; ++k) {
    outcome.identity[k] = IdentityOf(outcome, k, c, before);
  }
  return outcome;
}

std::string Describe(const SweepCase& c) {
  char text[256];
  std::snprintf(text, sizeof text,
                "direction %a %a %a (%a)\ntwoSided %d %d margin %a distance %a\n", c.direction.x,
                c.direction.y, c.direction.z, c.direction.magnitude, c.twoSided[0], c.twoSided[1],
                c.margin, c.distance);
  std::string result = text;
  for (int i = 0; i < 6; ++i) {
    const gsl_Point& p = i < 3 ? c.a[i] : c.b[i - 3];
    std::snprintf(text, sizeof text, "%c%d %a %a %a\n", i < 3 ? 'a' : 'b', i % 3, p.x, p.y, p.z);
    result += text;
  }
  return result;
}

/// Runs one call through both implementations. Returns false, with a message, when a caller could
/// see a difference.
bool Agrees(const SweepCase& c, Counts& counts) {
  const gsl_Point before[2] = {gsl_Point(0.25, -0.5, 7.0), gsl_Point(-3.5, 0.125, -9.0)};
  const Outcome library = Call(c, before, gsl_TriTriMinDirectionalDist);
  const auto count = [&counts](Branch branch) { ++counts[static_cast<unsigned>(branch)]; };
  const Outcome steps = Call(c, before, [&count](auto&&... arguments) {
    return transcription::TriTriMinDirectionalDist(arguments..., count);
  });
  const bool same = library.result == steps.result && SameBits(library.distance, steps.distance) &&
                    SameBits(library.contacts[0], steps.contacts[0]) &&
                    SameBits(library.contacts[1], steps.contacts[1]) &&
                    library.identity[0] == steps.identity[0] &&
                    library.identity[1] == steps.identity[1];
  EXPECT_TRUE(same) << Describe(c) << "library " << library.result << ' ' << library.distance << ' '
                    << library.identity[0] << ' ' << library.identity[1] << "\nsteps   "
                    << steps.result << ' ' << steps.distance << ' ' << steps.identity[0] << ' '
                    << steps.identity[1];
  return same;
}

void AgreeOnFamily(SweepCases::Family family, long count, Counts& counts) {
  const std::uint64_t seed = kSeed + static_cast<std::uint64_t>(family);
  SweepCases cases(seed);
  RandomSettings settings(seed);
  for (long i = 0; i < count; ++i) {
    SweepCase c = cases.Next(family);
    settings.Draw();
    settings.MakeStale(c.direction);
    ASSERT_TRUE(Agrees(c, counts))
        << settings.Describe() << "family " << family << ", case " << i << ", seed " << kSeed;
  }
}

void Print(const Counts& counts) {
  std::printf("seed %" PRIu64 "\n", kSeed);
  for (unsigned i = 0; i < counts.size(); ++i) {
    std::printf("%-24s %9ld\n", transcription::Name(static_cast<Branch>(i)), counts[i]);
  }
}

Counts NoCounts() {
  return Counts(static_cast<unsigned>(Branch::Count), 0);
}

TEST(TriTriTranscription, LibraryAgreesBitForBitAndIdentityForIdentityInEveryBranch) {
  const long perFamily = Scaled(40000);
  Counts counts = NoCounts();
  for (int family = 0; family < SweepCases::kFamilies; ++family) {
    AgreeOnFamily(static_cast<SweepCases::Family>(family), perFamily, counts);
  }
  Print(counts);
  std::printf("%ld pairs%s\n", perFamily * SweepCases::kFamilies,
              kTestScaleDivisor == 1 ? "" : ", scaled down for a slow build");
  for (unsigned i = 0; i < counts.size(); ++i) {
    EXPECT_GE(counts[i], Scaled(1000)) << transcription::Name(static_cast<Branch>(i));
  }
}

TEST(TriTriTranscription, LibraryAgreesOverARunningMinimum) {
  SweepCases cases(kSeed);
  RandomSettings settings(kSeed);
  Counts counts = NoCounts();
  for (long round = 0; round < Scaled(3000); ++round) {
    SweepCase c = cases.Next(SweepCases::Anywhere);
    settings.Draw();
    settings.MakeStale(c.direction);
    double distance = c.distance;
    for (int i = 0; i < 10; ++i) {
      const SweepCase obstacle = cases.Next(SweepCases::Anywhere);
      for (int k = 0; k < 3; ++k) {
        c.b[k] = obstacle.b[k];
      }
      c.distance = distance;
      ASSERT_TRUE(Agrees(c, counts))
          << settings.Describe() << "round " << round << ", seed " << kSeed;
      gsl_Point contacts[2];
      const bool found =
          gsl_TriTriMinDirectionalDist(c.direction, c.a[0], c.a[1], c.a[2], c.b[0], c.b[1], c.b[2],
                                       c.twoSided, c.margin, contacts, distance);
      ASSERT_TRUE(found || SameBits(distance, c.distance));
    }
  }
}

TEST(TriTriTranscription, FreshIdentitiesAreNeverRepeated) {
  SweepCases cases(kSeed + 1);
  std::set<cls_Uid> seen;
  long fresh = 0;
  for (long i = 0; i < Scaled(20000); ++i) {
    const SweepCase c = cases.Next(i % 2 == 0 ? SweepCases::Anywhere : SweepCases::EdgeOnA);
    const gsl_Point before[2];
    const Outcome outcome = Call(c, before, gsl_TriTriMinDirectionalDist);
    for (int k = 0; k < 2; ++k) {
      if (outcome.identity[k] != "fresh") continue;
      ++fresh;
      ASSERT_TRUE(seen.insert(outcome.contacts[k].uid).second)
          << "case " << i << ", seed " << kSeed;
    }
  }
  EXPECT_GT(fresh, Scaled(2000));
}

} // namespace
