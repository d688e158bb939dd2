// The sweep on families of scenes from a thousand to three million triangles a body, beside other
// libraries. One-shot times, memory and each peer are measured in child processes, whose memory is
// fresh; scripts/performance.py makes tables of what this writes.

#include "Measuring.h"
#include "SweepFamilies.h"
#include "SweepPeers.h"
#include "SweepRules.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <iostream>
#include <iterator>
#include <optional>
#include <regex>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace gsl_sweep;
using namespace measuring;
using namespace sweep_families;
using nlohmann::json;

constexpr std::size_t kSizes[] = {1000, 10000, 100000, 1000000, 3000000};
/// Only some families are measured at this size.
constexpr std::size_t kLargest = 3000000;
/// A size is left out when the one before lets expect a longer one-shot time, in seconds.
constexpr double kLongestOneShot = 3.0;
constexpr double kLongestOneShotAtTheLargest = 1.0;
/// Directions are asked until this many are answered or this much time has passed. Bodies that are
/// hard to search make finer trees on the way, which takes up to a second, and the time of most
/// directions is that with these trees.
constexpr std::size_t kDirections = 1000;
constexpr double kSecondsOfDirections = 4.0;
constexpr double kSecondsOfSolids = 1.2;
/// Sizes of prepared pairs.
constexpr std::size_t kPreparedSizes[] = {100000, 1000000};
/// Sizes of the comparison with the peers.
constexpr std::size_t kPeerSizes[] = {10000, 100000, 1000000};
constexpr const char* kPeerFamilies[] = {"figures apart", "interlocked combs, turned",
                                         "screw in nut"};

Run OnThreads(unsigned threads) {
  Run run;
  run.threads = threads;
  return run;
}

struct OneShot {
  double seconds, peakBytes, travel;
  SweepStatus status;
};

/// Bodies, pair and one question, from arrays in memory. With one thread the time is processor
/// time.
OneShot MeasureOneShot(const Scene& scene, unsigned threads,
                       const std::vector<std::size_t>& processors) {
  if (threads == 1) PinToTheLast(processors);
  ForgetPeakMemory();
  const double held = MemoryBytes("VmRSS");
  const double begin = threads == 1 ? ProcessorSeconds() : WallSeconds();
  Question question;
  question.direction = scene.direction;
  const Run run = OnThreads(threads);
  const Pair pair(Body(scene.moving.View(), run), {Body(scene.fixed.View(), run)}, run);
  const Answer answer = pair.First(question, run);
  const double end = threads == 1 ? ProcessorSeconds() : WallSeconds();
  return {end - begin, MemoryBytes("VmHWM") - held, answer.contact.travel, answer.status};
}

/// Even directions on the sphere, in an order whose every beginning is even too.
std::vector<Question> EvenDirections(std::size_t count) {
  constexpr double kGoldenAngle = 2.39996322972865332;
  constexpr std::size_t kStep = 617; // a prime, near the golden section of the count
  std::vector<Question> questions(count);
  for (std::size_t k = 0; k < count; ++k) {
    const auto i = static_cast<double>(k * kStep % count);
    const double z = 1.0 - (2.0 * i + 1.0) / static_cast<double>(count);
    const double r = std::sqrt(1.0 - z * z);
    questions[k].direction = {r * std::cos(kGoldenAngle * i), r * std::sin(kGoldenAngle * i), z};
  }
  return questions;
}

struct Directions {
  double prepareSeconds, median, medianOfContacts, last99, most, bytes;
  std::size_t asked, contacts, starts;
};

/// A prepared pair: it has answered two questions.
Pair Prepared(const Scene& scene, const std::vector<Question>& questions, unsigned threads) {
  const Run run = OnThreads(threads);
  Pair pair(Body(scene.moving.View(), run), {Body(scene.fixed.View(), run)}, run);
  Answer answers[2];
  pair.First(questions.data(), 2, answers, run);
  return pair;
}

Directions MeasureDirections(const Scene& scene, const std::vector<std::size_t>& processors) {
  PinToTheLast(processors);
  const double held = MemoryBytes("VmRSS");
  const std::vector<Question> questions = EvenDirections(kDirections);
  const double begin = ProcessorSeconds();
  const Pair pair = Prepared(scene, questions, 1);
  Directions result{};
  result.prepareSeconds = ProcessorSeconds() - begin;
  std::vector<double> seconds;
  std::vector<double> secondsOfContacts;
  const double first = ProcessorSeconds();
  for (const Question& question : questions) {
    const double asked = ProcessorSeconds();
    const Answer answer = pair.First(question, OnThreads(1));
    const double answered = ProcessorSeconds();
    seconds.push_back(answered - asked);
    if (answer.status == SweepStatus::Contact) secondsOfContacts.push_back(seconds.back());
    result.starts += answer.status == SweepStatus::Start ? 1 : 0;
    if (answered - first > kSecondsOfDirections) break;
  }
  result.asked = seconds.size();
  result.contacts = secondsOfContacts.size();
  if (result.contacts > 0) result.medianOfContacts = Median(secondsOfContacts);
  result.median = Median(seconds);
  result.last99 = Quantile(seconds, 0.99);
  result.most = Quantile(seconds, 1.0);
  result.bytes = MemoryBytes("VmRSS") - held;
  return result;
}

/// The times of questions about solids, beside those about surfaces along the same directions.
struct SolidTimes {
  double decideSeconds; ///< whether both bodies are solids
  double firstSeconds;  ///< of the first question, which looks at the bodies at rest
  double median, medianOfTouch;
  std::size_t asked, starts;
  bool areSolids;
};

SolidTimes MeasureSolids(const Scene& scene, const std::vector<std::size_t>& processors) {
  PinToTheLast(processors);
  std::vector<Question> questions = EvenDirections(kDirections);
  const Body moving(scene.moving.View(), OnThreads(1));
  const Body fixed(scene.fixed.View(), OnThreads(1));
  const Pair pair(moving, {fixed}, OnThreads(1));
  Answer answers[2];
  pair.First(questions.data(), 2, answers, OnThreads(1));
  SolidTimes result{};
  const double begin = ProcessorSeconds();
  result.areSolids = moving.IsSolid() && fixed.IsSolid();
  const double decided = ProcessorSeconds();
  result.decideSeconds = decided - begin;
  if (!result.areSolids) return result;
  std::vector<double> seconds[2];
  double asked = decided;
  for (Question& question : questions) {
    for (const Rule rule : {Rule::Touch, Rule::Solid}) {
      question.rule = rule;
      const double before = ProcessorSeconds();
      const Answer answer = pair.First(question, OnThreads(1));
      asked = ProcessorSeconds();
      seconds[rule == Rule::Solid ? 1 : 0].push_back(asked - before);
      if (rule == Rule::Solid) result.starts += answer.status == SweepStatus::Start ? 1 : 0;
    }
    if (asked - decided > kSecondsOfSolids) break;
  }
  result.firstSeconds = seconds[1].front();
  result.asked = seconds[1].size();
  result.medianOfTouch = Median(seconds[0]);
  result.median = Median(seconds[1]);
  return result;
}

/// The wall times of a batch that takes one thread about a third of a second.
struct BatchTimes {
  double one, two;
};

BatchTimes MeasureBatch(const Scene& scene, double secondsOfOne) {
  const double count = 0.3 / std::max(secondsOfOne, 1e-6);
  const std::vector<Question> questions =
      EvenDirections(std::clamp(static_cast<std::size_t>(count), std::size_t{4}, kDirections));
  const Pair pair = Prepared(scene, questions, 2);
  std::vector<Answer> answers(questions.size());
  std::vector<double> times[2];
  for (int round = 0; round < 3; ++round) {
    for (const unsigned threads : {1u, 2u}) {
      const double begin = WallSeconds();
      pair.First(questions.data(), questions.size(), answers.data(), OnThreads(threads));
      times[threads - 1].push_back(WallSeconds() - begin);
    }
  }
  return {Median(times[0]), Median(times[1])};
}

/// The wall times of preparing in a fresh process.
double MeasurePrepareWall(const Scene& scene, unsigned threads) {
  const std::vector<Question> questions = EvenDirections(2);
  std::vector<double> seconds;
  for (int round = 0; round < 3; ++round) {
    const std::optional<double> time = InChild([&] {
      const double begin = WallSeconds();
      const Pair pair = Prepared(scene, questions, threads);
      return WallSeconds() - begin;
    });
    seconds.push_back(time.value_or(kPatience));
  }
  return Median(seconds);
}

/// Small scenes are asked more often.
int RoundsOf(double seconds) {
  return std::clamp(static_cast<int>(0.2 / seconds), 5, 15);
}

const char* NameOf(SweepStatus status) {
  constexpr const char* kNames[] = {"contact", "start", "none", "cancelled"};
  return kNames[static_cast<std::size_t>(status)];
}

const char* NameOf(Kind kind) {
  constexpr const char* kNames[] = {"apart", "interleaved", "hard along an axis", "hard aslant"};
  return kNames[static_cast<std::size_t>(kind)];
}

json OneShotRecord(const Scene& scene, const std::vector<std::size_t>& processors) {
  std::vector<double> seconds;
  std::vector<double> wallOnTwo;
  std::vector<double> peaks;
  OneShot last{};
  int rounds = 1;
  for (int round = 0; round < rounds; ++round) {
    const std::optional<OneShot> one =
        InChild([&] { return MeasureOneShot(scene, 1, processors); });
    if (!one) return {{"isEnded", true}};
    last = *one;
    if (round == 0) rounds = RoundsOf(last.seconds);
    seconds.push_back(last.seconds);
    peaks.push_back(last.peakBytes);
    if (processors.size() < 2) continue;
    const std::optional<OneShot> two =
        InChild([&] { return MeasureOneShot(scene, 2, processors); });
    wallOnTwo.push_back(two ? two->seconds : kPatience);
  }
  json record = {{"status", NameOf(last.status)},
                 {"travel", last.travel},
                 {"seconds", Median(seconds)},
                 {"peakBytes", Median(peaks)}};
  if (!wallOnTwo.empty()) record["wallOnTwo"] = Median(wallOnTwo);
  return record;
}

json PreparedRecord(const Scene& scene, const std::vector<std::size_t>& processors) {
  const std::optional<Directions> d = InChild([&] { return MeasureDirections(scene, processors); });
  if (!d) return {{"isEnded", true}};
  json record = {{"prepareSeconds", d->prepareSeconds},
                 {"median", d->median},
                 {"medianOfContacts", d->medianOfContacts},
                 {"last99", d->last99},
                 {"most", d->most},
                 {"asked", d->asked},
                 {"contacts", d->contacts},
                 {"starts", d->starts},
                 {"bytes", d->bytes}};
  const std::optional<SolidTimes> solid = InChild([&] { return MeasureSolids(scene, processors); });
  if (solid && solid->areSolids) {
    record["solid"] = {{"decideSeconds", solid->decideSeconds},
                       {"firstSeconds", solid->firstSeconds},
                       {"median", solid->median},
                       {"medianOfTouch", solid->medianOfTouch},
                       {"asked", solid->asked},
                       {"starts", solid->starts}};
  }
  if (processors.size() < 2) return record;
  const std::optional<BatchTimes> batch = InChild([&] { return MeasureBatch(scene, d->median); });
  if (batch) {
    record["batchOne"] = batch->one;
    record["batchTwo"] = batch->two;
  }
  record["prepareOne"] = MeasurePrepareWall(scene, 1);
  record["prepareTwo"] = MeasurePrepareWall(scene, 2);
  return record;
}

struct PeerTime {
  sweep_peers::Found found;
  double seconds;
};

json PeersRecord(const Scene& scene, std::size_t size, const std::vector<std::size_t>& processors) {
  json record = json::object();
  for (const sweep_peers::Peer& peer : sweep_peers::AllPeers()) {
    if (size > peer.mostTriangles) continue;
    const std::optional<PeerTime> time = InChild([&] {
      PinToTheLast(processors);
      const double begin = ProcessorSeconds();
      const sweep_peers::Found found = peer.find(scene);
      return PeerTime{found, ProcessorSeconds() - begin};
    });
    if (!time) {
      record[peer.name] = {{"isEnded", true}};
      continue;
    }
    record[peer.name] = {{"seconds", time->seconds},
                         {"isContact", time->found.isContact},
                         {"travel", time->found.travel}};
  }
  return record;
}

template <std::size_t kCount>
bool IsOneOf(const std::size_t (&sizes)[kCount], std::size_t size) {
  return std::find(std::begin(sizes), std::end(sizes), size) != std::end(sizes);
}

bool HasPeers(const Family& family, std::size_t size) {
  const auto isFamily = [&family](const char* name) { return std::string(name) == family.name; };
  return std::any_of(std::begin(kPeerFamilies), std::end(kPeerFamilies), isFamily) &&
         IsOneOf(kPeerSizes, size);
}

/// Measures the sizes of a family until they would take too long.
json FamilyRecord(const Family& family, std::size_t most,
                  const std::vector<std::size_t>& processors) {
  json sizes = json::array();
  double expected = 0.0;
  std::size_t before = 0;
  for (const std::size_t size : kSizes) {
    if (size > most || (size == kLargest && !family.isAlsoLargest)) break;
    if (before != 0) expected *= static_cast<double>(size) / static_cast<double>(before);
    if (expected > (size == kLargest ? kLongestOneShotAtTheLargest : kLongestOneShot)) break;
    const Scene scene = family.make(size);
    json record = {{"size", size},
                   {"triangles", scene.moving.TriangleCount() + scene.fixed.TriangleCount()},
                   {"inputBytes", scene.moving.Bytes() + scene.fixed.Bytes()},
                   {"oneShot", OneShotRecord(scene, processors)}};
    if (record["oneShot"].contains("isEnded")) {
      sizes.push_back(std::move(record));
      break;
    }
    if (IsOneOf(kPreparedSizes, size)) {
      record["prepared"] = PreparedRecord(scene, processors);
      record["rules"] = sweep_rules::RulesRecord(scene, EvenDirections(kDirections), processors);
    }
    if (HasPeers(family, size)) record["peers"] = PeersRecord(scene, size, processors);
    expected = record["oneShot"]["seconds"];
    before = size;
    std::fprintf(stderr, "%s, %zu triangles a body: %.3g ms\n", family.name, size, 1e3 * expected);
    sizes.push_back(std::move(record));
  }
  return {{"name", family.name},
          {"kind", NameOf(family.kind)},
          {"isDouble", family.isDouble},
          {"sizes", std::move(sizes)}};
}

json PeerVersions() {
  json versions = json::object();
  for (const sweep_peers::Peer& peer : sweep_peers::AllPeers())
    versions[peer.name] = peer.version;
  return versions;
}

int Main(int argc, char** argv) {
  const std::regex filter(argc > 1 ? argv[1] : ".");
  const std::size_t most = argc > 2 ? std::stoul(argv[2]) : kLargest;
  const std::vector<std::size_t> processors = Processors();
  json families = json::array();
  for (const Family& family : AllFamilies()) {
    if (!std::regex_search("Sweep/" + std::string(family.name), filter)) continue;
    families.push_back(FamilyRecord(family, most, processors));
  }
  json patches = json::array();
  for (const PatchFamily& family : AllPatchFamilies()) {
    if (!std::regex_search("Sweep/" + std::string(family.name), filter)) continue;
    patches.push_back(sweep_rules::PatchRecord(family, processors));
  }
  const bool isComplete = families.size() == AllFamilies().size() &&
                          patches.size() == AllPatchFamilies().size() && most >= kLargest;
  const json result = {{"processors", processors.size()}, {"patience", kPatience},
                       {"peers", PeerVersions()},         {"isComplete", isComplete},
                       {"families", std::move(families)}, {"patches", std::move(patches)}};
  std::cout << result.dump(1) << '\n';
  return 0;
}

} // namespace

// usage: bench_sweep [FILTER [TRIANGLES]]: a regular expression over Sweep/FAMILY, and the largest
// size.
int main(int argc, char** argv) {
  try {
    return Main(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench_sweep: %s\n", error.what());
    return 1;
  }
}
