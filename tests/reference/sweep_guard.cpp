#include "ClearanceGuard.h"
#include "SolidGuard.h"
#include "SweepGuard.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

/// Returns the number of wrong answers.
std::size_t JudgeClearances(std::size_t count, std::uint64_t first, const char* only) {
  using namespace reference;
  std::size_t wrong = 0;
  ClearanceTally tally;
  for (std::size_t family = 0; family < ClearanceFamilyCount(); ++family) {
    if (only != nullptr && std::string(only) != ClearanceFamilyName(family)) continue;
    const std::size_t ofFamily = (count + ClearanceFamilyCount() - 1) / ClearanceFamilyCount();
    for (std::size_t k = 0; k < ofFamily; ++k) {
      const std::string complaint =
          ClearanceComplaint(MakeClearanceScene(family, first + k), tally);
      if (complaint.empty()) continue;
      ++wrong;
      if (wrong <= 3) std::fprintf(stderr, "%s", complaint.c_str());
    }
  }
  std::printf("%zu clearances: %zu contacts, %zu starts, %zu without contact, %zu pairs open; "
              "by kind",
              tally.scenes, tally.contacts, tally.starts, tally.nones, tally.open);
  for (const std::size_t kind : tally.kinds)
    std::printf(" %zu", kind);
  std::printf("\n");
  return wrong;
}

/// Judges a number of scenes of solids. Returns the number of wrong answers.
std::size_t JudgeSolidScenes(std::size_t count, std::uint64_t first, const char* onlyFamily) {
  using namespace reference;
  std::size_t wrong = 0;
  SolidTally tally;
  for (std::size_t family = 0; family < SolidFamilyCount(); ++family) {
    if (onlyFamily != nullptr && std::string(onlyFamily) != SolidFamilyName(family)) continue;
    const std::size_t ofFamily = (count + SolidFamilyCount() - 1) / SolidFamilyCount();
    for (std::size_t k = 0; k < ofFamily; ++k) {
      const std::string complaint = SolidComplaint(MakeSolidScene(family, first + k), tally);
      if (complaint.empty()) continue;
      if (++wrong <= 3) std::fprintf(stderr, "%s\n", complaint.c_str());
    }
  }
  std::printf(
      "%zu scenes of solids: %zu contact, %zu overlap at the start, %zu overlap right after, "
      "%zu none; %zu touch, %zu are inside\n",
      tally.scenes, tally.outcomes[static_cast<int>(SolidOutcome::Contact)],
      tally.outcomes[static_cast<int>(SolidOutcome::OverlapAtStart)],
      tally.outcomes[static_cast<int>(SolidOutcome::OverlapAfterStart)],
      tally.outcomes[static_cast<int>(SolidOutcome::None)], tally.touching, tally.inside);
  return wrong;
}

} // namespace

/// Judges the sweep on COUNT scenes of surfaces, on a fifth as many of solids, and on a quarter as
/// many with a clearance. A quarter of the surfaces, and all that are mated, are judged for the
/// other questions too: a body that may leave, last contacts and patches. Prints the findings.
///
/// usage: sweep_guard COUNT [SEED [FAMILY]]
///
/// The exit status is 1 when an answer is wrong.
int main(int argc, char** argv) {
  using namespace reference;
  const std::size_t count = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 0;
  if (count == 0) {
    std::fprintf(stderr, "usage: sweep_guard COUNT [SEED [FAMILY]]\n");
    return 2;
  }
  const std::uint64_t first = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 1000000;
  std::size_t wrong = 0;
  Tally all;
  RuleTally allRules;
  std::printf("%-18s %6s %8s %6s %6s %5s %6s %7s %8s  by kind\n", "", "scenes", "contact", "start",
              "none", "tied", "single", "limited", "overflow");
  const auto print = [](const char* name, const Tally& t) {
    std::printf("%-18s %6zu %8zu %6zu %6zu %5zu %6zu %7zu %8zu ", name, t.scenes, t.contacts,
                t.starts, t.nones, t.tied, t.single, t.limited, t.overflows);
    for (const std::size_t kind : t.kinds)
      std::printf(" %zu", kind);
    std::printf("\n");
    std::fflush(stdout);
  };
  for (std::size_t family = 0; family < FamilyCount(); ++family) {
    if (argc > 3 && std::string(argv[3]) != FamilyName(family)) continue;
    Tally tally;
    RuleTally rules;
    const std::size_t ofFamily = (count + FamilyCount() - 1) / FamilyCount();
    for (std::size_t k = 0; k < ofFamily; ++k) {
      const Scene scene = MakeScene(family, first + k);
      std::string complaint = Complaint(scene, tally);
      const bool isAskedMore = k % 4 == 0 || IsMated(family);
      if (complaint.empty() && isAskedMore) complaint = ComplaintOfRules(scene, rules);
      if (complaint.empty()) continue;
      ++wrong;
      if (wrong <= 3) std::fprintf(stderr, "%s%s", complaint.c_str(), Describe(scene).c_str());
    }
    print(FamilyName(family), tally);
    all.Add(tally);
    allRules.Add(rules);
  }
  print("all", all);
  print("leaving", allRules.leaving);
  print("last", allRules.last);
  std::printf(
      "%zu leave at the start, %zu last contacts are cut, %zu patches of more than one pair, "
      "%zu pairs in all\n",
      allRules.left, allRules.cut, allRules.patches, allRules.patchPairs);
  const char* const only = argc > 3 ? argv[3] : nullptr;
  wrong += JudgeSolidScenes((count + 4) / 5, first, only);
  wrong += JudgeClearances(count / 4, first, only);
  if (wrong > 0) std::fprintf(stderr, "%zu answers are wrong\n", wrong);
  return wrong == 0 ? 0 : 1;
}
