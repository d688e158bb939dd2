#include "SweepRules.h"

#include "Measuring.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <optional>
#include <vector>

namespace sweep_rules {

namespace {

using namespace gsl_sweep;
using namespace measuring;
using namespace sweep_families;
using nlohmann::json;

/// What is asked about a contact.
enum class Asked { Touch, NotLeaving, Last, Solid };
constexpr std::size_t kAskedCount = 4;
constexpr const char* kNames[kAskedCount] = {"touch", "notLeaving", "last", "solid"};
constexpr Asked kAll[kAskedCount] = {Asked::Touch, Asked::NotLeaving, Asked::Last, Asked::Solid};

/// A prepared pair answers each question until so much time has passed, in seconds.
constexpr double kSecondsAlong = 0.5;
constexpr double kSecondsSpread = 1.5;
/// The first questions make what later ones use again.
constexpr double kSecondsBefore = 0.7;
constexpr std::size_t kMostTimes = 200;

/// Seconds of each question; those that were not asked have none.
struct Times {
  double of[kAskedCount] = {};
  std::size_t rounds = 0;
  bool hasEnded = false; ///< without one round
};

Run OnOneThread() {
  Run run;
  run.threads = 1;
  return run;
}

void Ask(const Pair& pair, Question question, Asked asked) {
  const Run run = OnOneThread();
  if (asked == Asked::NotLeaving) question.rule = Rule::NotLeaving;
  if (asked == Asked::Solid) question.rule = Rule::Solid;
  if (asked == Asked::Last) {
    pair.Last(question, run);
  } else {
    pair.First(question, run);
  }
}

/// Returns the processor time of an answer, in seconds.
double SecondsOfAnswer(const Pair& pair, const Question& question, Asked asked) {
  const double begin = ProcessorSeconds();
  Ask(pair, question, asked);
  return ProcessorSeconds() - begin;
}

Pair PairOf(const Scene& scene) {
  const Run run = OnOneThread();
  return Pair(Body(scene.moving.View(), run), {Body(scene.fixed.View(), run)}, run);
}

bool AreSolids(const Scene& scene) {
  const Run run = OnOneThread();
  return Body(scene.moving.View(), run).IsSolid() && Body(scene.fixed.View(), run).IsSolid();
}

/// Returns whether a scene is asked this.
bool IsAsked(Asked asked, bool areSolids) {
  return asked != Asked::Solid || areSolids;
}

/// Returns what is asked at a place of a round. Each round begins with another question, because
/// the first of a round finds less of the memory in the caches.
std::size_t InTurn(std::size_t round, std::size_t place) {
  return (round + place) % kAskedCount;
}

/// From arrays in memory to the answer, in a process of its own for each question.
Times MeasureOneShots(const Scene& scene, bool areSolids,
                      const std::vector<std::size_t>& processors) {
  constexpr std::size_t kRounds = 3;
  Question question;
  question.direction = scene.direction;
  Times times;
  times.rounds = kRounds;
  std::vector<double> seconds[kAskedCount];
  for (std::size_t round = 0; round < kRounds; ++round) {
    for (std::size_t k = 0; k < kAskedCount; ++k) {
      if (!IsAsked(kAll[k], areSolids)) continue;
      const std::optional<double> one = InChild([&] {
        PinToTheLast(processors);
        const double begin = ProcessorSeconds();
        Ask(PairOf(scene), question, kAll[k]);
        return ProcessorSeconds() - begin;
      });
      seconds[k].push_back(one.value_or(kPatience));
    }
  }
  for (std::size_t k = 0; k < kAskedCount; ++k) {
    if (!seconds[k].empty()) times.of[k] = Median(seconds[k]);
  }
  return times;
}

/// Medians along the scene's direction, on a pair that has answered each question before.
Times MeasureAlong(const Scene& scene, bool areSolids, const std::vector<std::size_t>& processors) {
  PinToTheLast(processors);
  const Pair pair = PairOf(scene);
  Question question;
  question.direction = scene.direction;
  Times times;
  std::vector<double> seconds[kAskedCount];
  const double begin = ProcessorSeconds();
  for (int before = 0; before < 2; ++before) {
    for (const Asked asked : kAll) {
      if (IsAsked(asked, areSolids)) Ask(pair, question, asked);
    }
    if (ProcessorSeconds() - begin > kSecondsBefore) break;
  }
  const double first = ProcessorSeconds();
  while (times.rounds < 3 ||
         (times.rounds < kMostTimes && ProcessorSeconds() - first < kSecondsAlong)) {
    for (std::size_t place = 0; place < kAskedCount; ++place) {
      const std::size_t k = InTurn(times.rounds, place);
      if (IsAsked(kAll[k], areSolids))
        seconds[k].push_back(SecondsOfAnswer(pair, question, kAll[k]));
    }
    ++times.rounds;
  }
  for (std::size_t k = 0; k < kAskedCount; ++k) {
    if (!seconds[k].empty()) times.of[k] = Median(seconds[k]);
  }
  return times;
}

/// Means over directions, on a pair that has answered questions along some of them before.
Times MeasureSpread(const Scene& scene, const std::vector<Question>& directions, bool areSolids,
                    const std::vector<std::size_t>& processors) {
  PinToTheLast(processors);
  const Pair pair = PairOf(scene);
  const double begin = ProcessorSeconds();
  for (std::size_t k = 0; ProcessorSeconds() - begin < kSecondsBefore; ++k) {
    for (const Asked asked : kAll) {
      if (IsAsked(asked, areSolids)) Ask(pair, directions[k % directions.size()], asked);
    }
  }
  Times times;
  const double first = ProcessorSeconds();
  for (const Question& question : directions) {
    for (std::size_t place = 0; place < kAskedCount; ++place) {
      const std::size_t k = InTurn(times.rounds, place);
      if (IsAsked(kAll[k], areSolids)) times.of[k] += SecondsOfAnswer(pair, question, kAll[k]);
    }
    ++times.rounds;
    if (ProcessorSeconds() - first > kSecondsSpread) break;
  }
  for (double& sum : times.of)
    sum /= static_cast<double>(times.rounds);
  return times;
}

json Record(const std::optional<Times>& times, bool areSolids) {
  if (!times) return {{"isEnded", true}};
  json record = {{"rounds", times->rounds}};
  for (std::size_t k = 0; k < kAskedCount; ++k) {
    if (IsAsked(kAll[k], areSolids)) record[kNames[k]] = times->of[k];
  }
  return record;
}

/// The times of a patch: the median of a few questions, and of the first contact alone.
struct PatchTimes {
  double seconds, touch;
  std::size_t pairs;
};

PatchTimes MeasurePatch(const Scene& scene, const std::vector<std::size_t>& processors) {
  PinToTheLast(processors);
  const Pair pair = PairOf(scene);
  Question question;
  question.direction = scene.direction;
  PatchTimes result{};
  std::vector<double> seconds;
  std::vector<double> touch;
  Ask(pair, question, Asked::Touch);
  const double first = ProcessorSeconds();
  do {
    touch.push_back(SecondsOfAnswer(pair, question, Asked::Touch));
    const double begin = ProcessorSeconds();
    result.pairs = pair.Patch(question, nullptr, 0, OnOneThread());
    seconds.push_back(ProcessorSeconds() - begin);
  } while (seconds.size() < kMostTimes && ProcessorSeconds() - first < 1.0);
  result.seconds = Median(seconds);
  result.touch = Median(touch);
  return result;
}

} // namespace

json RulesRecord(const Scene& scene, const std::vector<Question>& directions,
                 const std::vector<std::size_t>& processors) {
  const std::optional<bool> solids = InChild([&] { return AreSolids(scene); });
  const bool areSolids = solids.value_or(false);
  const auto along = InChild([&] { return MeasureAlong(scene, areSolids, processors); });
  const auto spread =
      InChild([&] { return MeasureSpread(scene, directions, areSolids, processors); });
  return {{"oneShot", Record(MeasureOneShots(scene, areSolids, processors), areSolids)},
          {"along", Record(along, areSolids)},
          {"spread", Record(spread, areSolids)}};
}

json PatchRecord(const PatchFamily& family, const std::vector<std::size_t>& processors) {
  json sizes = json::array();
  for (const std::size_t size : family.sizes) {
    const Scene scene = family.make(size);
    const auto times = InChild([&] { return MeasurePatch(scene, processors); });
    if (!times) break;
    std::fprintf(stderr, "%s, %zu pairs: %.3g ms\n", family.name, times->pairs,
                 1e3 * times->seconds);
    sizes.push_back({{"triangles", scene.moving.TriangleCount()},
                     {"pairs", times->pairs},
                     {"seconds", times->seconds},
                     {"touch", times->touch}});
  }
  return {{"name", family.name}, {"sizes", std::move(sizes)}};
}

} // namespace sweep_rules
