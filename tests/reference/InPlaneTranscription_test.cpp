#include "InPlaneTranscription.h"

#include "InPlaneCases.h"
#include "PointChecks.h"
#include "RandomSettings.h"
#include "TestScale.h"
#include "gsl_InPlaneSegSegMinDirectionalDist.h"

#include <cinttypes>
#include <cstdio>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

namespace {

using in_plane_transcription::Branch;
using Counts = std::vector<long>;

constexpr std::uint64_t kSeed = 0x1A7E5EED;

/// Returns the name of the identity of a contact.
enum class Identity { A0, A1, B0, B1, Before0, Before1, Contact0, Null, Fresh };

/// The effect of a call.
struct Outcome {
  bool result = false;
  double distance = 0.0;
  gsl_Point contacts[2];
  Identity identity[2] = {Identity::Null, Identity::Null};
};

Identity IdentityOf(const Outcome& outcome, int k, const InPlaneCase& c, const gsl_Point* before) {
  const cls_Uid& uid = outcome.contacts[k].uid;
  if (uid == c.a[0].uid) return Identity::A0;
  if (uid == c.a[1].uid) return Identity::A1;
  if (uid == c.b[0].uid) return Identity::B0;
  if (uid == c.b[1].uid) return Identity::B1;
  if (uid == before[0].uid) return Identity::Before0;
  if (uid == before[1].uid) return Identity::Before1;
  if (k == 1 && uid == outcome.contacts[0].uid) return Identity::Contact0;
  return uid.IsNull() ? Identity::Null : Identity::Fresh;
}

template <class Sweep>
Outcome Call(const InPlaneCase& c, const gsl_Point* before, const Sweep& sweep) {
  Outcome outcome;
  outcome.contacts[0] = before[0];
  outcome.contacts[1] = before[1];
  outcome.distance = c.distance;
  outcome.result = sweep(c.direction, c.a[0], c.a[1], c.b[0], c.b[1], c.twoSided, c.margin,
                         outcome.contacts, outcome.distance);
  for (int k = 0; k < 2; ++k)
    outcome.identity[k] = IdentityOf(outcome, k, c, before);
  return outcome;
}

std::string Describe(const InPlaneCase& c) {
  char text[256];
  std::snprintf(text, sizeof text,
                "direction %a %a %a (%a)\ntwoSided %d %d margin %a distance %a\n", c.direction.x,
                c.direction.y, c.direction.z, c.direction.magnitude, c.twoSided[0], c.twoSided[1],
                c.margin, c.distance);
  std::string result = text;
  for (int i = 0; i < 4; ++i) {
    const gsl_Point& p = i < 2 ? c.a[i] : c.b[i - 2];
    std::snprintf(text, sizeof text, "%c%d %a %a %a\n", i < 2 ? 'a' : 'b', i % 2, p.x, p.y, p.z);
    result += text;
  }
  return result;
}

/// Runs one call through both implementations. Returns false, with a message, when a caller could
/// see a difference.
bool Agrees(const InPlaneCase& c, Counts& counts) {
  static const gsl_Point before[2] = {gsl_Point(0.25, -0.5, 7.0), gsl_Point(-3.5, 0.125, -9.0)};
  const Outcome library = Call(c, before, gsl_InPlaneSegSegMinDirectionalDist);
  const auto count = [&counts](Branch branch) { ++counts[static_cast<unsigned>(branch)]; };
  const Outcome steps = Call(c, before, [&count](auto&&... arguments) {
    return in_plane_transcription::SegSegMinDirectionalDist(arguments..., count);
  });
  const bool same = library.result == steps.result && SameBits(library.distance, steps.distance) &&
                    SameBits(library.contacts[0], steps.contacts[0]) &&
                    SameBits(library.contacts[1], steps.contacts[1]) &&
                    library.identity[0] == steps.identity[0] &&
                    library.identity[1] == steps.identity[1];
  if (same) return true;
  ADD_FAILURE() << Describe(c) << "library " << library.result << ' ' << library.distance << ' '
                << static_cast<int>(library.identity[0]) << ' '
                << static_cast<int>(library.identity[1]) << "\nsteps   " << steps.result << ' '
                << steps.distance << ' ' << static_cast<int>(steps.identity[0]) << ' '
                << static_cast<int>(steps.identity[1]);
  return false;
}

void AgreeOnFamily(InPlaneCases::Family family, long count, Counts& counts) {
  const std::uint64_t seed = kSeed + static_cast<std::uint64_t>(family);
  InPlaneCases cases(seed);
  RandomSettings settings(seed);
  for (long i = 0; i < count; ++i) {
    InPlaneCase c = cases.Next(family);
    settings.Draw();
    settings.MakeStale(c.direction);
    ASSERT_TRUE(Agrees(c, counts))
        << settings.Describe() << "family " << family << ", case " << i << ", seed " << kSeed;
  }
}

void Print(const Counts& counts) {
  std::printf("seed %" PRIu64 "\n", kSeed);
  for (unsigned i = 0; i < counts.size(); ++i) {
    std::printf("%-28s %9ld\n", in_plane_transcription::Name(static_cast<Branch>(i)), counts[i]);
  }
}

Counts NoCounts() {
  return Counts(static_cast<unsigned>(Branch::Count), 0);
}

TEST(InPlaneTranscription, LibraryAgreesBitForBitAndIdentityForIdentityInEveryBranch) {
  const long perFamily = Scaled(90000);
  Counts counts = NoCounts();
  for (int family = 0; family < InPlaneCases::kFamilies; ++family)
    AgreeOnFamily(static_cast<InPlaneCases::Family>(family), perFamily, counts);
  Print(counts);
  std::printf("%ld pairs%s\n", perFamily * InPlaneCases::kFamilies,
              kTestScaleDivisor == 1 ? "" : ", scaled down for a slow build");
  for (unsigned i = 0; i < counts.size(); ++i) {
    EXPECT_GE(counts[i], Scaled(1000)) << in_plane_transcription::Name(static_cast<Branch>(i));
  }
}

TEST(InPlaneTranscription, LibraryAgreesOverARunningMinimum) {
  InPlaneCases cases(kSeed);
  RandomSettings settings(kSeed);
  Counts counts = NoCounts();
  for (long round = 0; round < Scaled(3000); ++round) {
    InPlaneCase c = cases.Next(InPlaneCases::Facing);
    settings.Draw();
    settings.MakeStale(c.direction);
    for (int i = 0; i < 10; ++i) {
      const InPlaneCase obstacle = cases.Next(InPlaneCases::Anywhere);
      c.b[0] = obstacle.b[0];
      c.b[1] = obstacle.b[1];
      ASSERT_TRUE(Agrees(c, counts))
          << settings.Describe() << "round " << round << ", seed " << kSeed;
      gsl_Point contacts[2];
      // A call that returns false may have lowered the distance too.
      static_cast<void>(gsl_InPlaneSegSegMinDirectionalDist(
          c.direction, c.a[0], c.a[1], c.b[0], c.b[1], c.twoSided, c.margin, contacts, c.distance));
    }
  }
}

TEST(InPlaneTranscription, ContactsMayBeTheEndPointsThemselves) {
  InPlaneCases cases(kSeed + 2);
  RandomSettings settings(kSeed);
  for (long i = 0; i < Scaled(30000); ++i) {
    InPlaneCase c = cases.Next(i % 2 == 0 ? InPlaneCases::Facing : InPlaneCases::BothAlong);
    settings.Draw();
    settings.MakeStale(c.direction);
    InPlaneCase own = c;
    gsl_Point apart[2] = {c.a[0], c.a[1]};
    double distance = c.distance;
    const bool expected = gsl_InPlaneSegSegMinDirectionalDist(
        c.direction, c.a[0], c.a[1], c.b[0], c.b[1], c.twoSided, c.margin, apart, distance);
    const bool result =
        gsl_InPlaneSegSegMinDirectionalDist(own.direction, own.a[0], own.a[1], own.b[0], own.b[1],
                                            own.twoSided, own.margin, own.a, own.distance);
    ASSERT_EQ(result, expected) << Describe(c);
    ASSERT_TRUE(SameBits(own.distance, distance)) << Describe(c);
    for (int k = 0; k < 2; ++k)
      ASSERT_TRUE(SameBits(own.a[k], apart[k])) << Describe(c);
  }
}

TEST(InPlaneTranscription, FreshIdentitiesAreNeverRepeated) {
  InPlaneCases cases(kSeed + 1);
  std::set<cls_Uid> seen;
  long fresh = 0;
  for (long i = 0; i < Scaled(20000); ++i) {
    const InPlaneCase c = cases.Next(i % 2 == 0 ? InPlaneCases::Facing : InPlaneCases::AlongA);
    const gsl_Point before[2];
    const Outcome outcome = Call(c, before, gsl_InPlaneSegSegMinDirectionalDist);
    for (int k = 0; k < 2; ++k) {
      if (outcome.identity[k] != Identity::Fresh) continue;
      ++fresh;
      ASSERT_TRUE(seen.insert(outcome.contacts[k].uid).second)
          << "case " << i << ", seed " << kSeed;
    }
  }
  EXPECT_GT(fresh, Scaled(2000));
}

} // namespace
