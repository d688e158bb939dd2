// Saves and restores objects as records, beside other libraries that turn objects into bytes. Each
// measurement runs in a process of its own, whose memory is fresh; scripts/performance.py makes
// tables of what this writes.
//
// Our side writes objects of the library through their visitors and restores such objects. The
// other libraries write the same objects and restore plain objects, because nobody else can give an
// object its identity. A plain object has the same contents and the same size, and is allocated in
// the same way. All of them check the bytes that they read.

#include "Measuring.h"
#include "RandomNumbers.h"
#include "RecordModels.h"
#include "RecordPeers.h"
#include "cls_ReadVisitor.h"
#include "cls_WriteVisitor.h"
#include "gsl_Module.h"
#include "gsl_RecordStore.h"
#include "gsl_Version.h"

#include <malloc.h>
#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <regex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace measuring;
using namespace record_models;
using nlohmann::json;
using record_peers::Written;

constexpr std::size_t kCount = 1000000;
constexpr int kRounds = 7;

gsl_Point SomePoint(RandomNumbers& random) {
  const double x = random.In(-100.0, 100.0);
  const double y = random.In(-100.0, 100.0);
  return {x, y, random.In(-100.0, 100.0)};
}

/// A point with coordinates, or the node of a mesh.
gsl_Dot SomeDot(RandomNumbers& random) {
  if (random.Chance(0.5)) return gsl_Dot(SomePoint(random));
  gsl_Dot node(random.Below(1000), random.Below(1000000));
  const gsl_Point p = SomePoint(random);
  node.SetValues(p.x, p.y, p.z);
  return node;
}

template <class C, class Method>
C SomeDatum(RandomNumbers& random, int methodCount) {
  C datum(SomePoint(random), gsl_Vector(random.Unit(), random.Unit(), 1.0));
  datum.SetMethod(static_cast<Method>(random.Below(methodCount)));
  datum.SetFlip(random.Chance(0.5));
  datum.SetOk(random.Chance(0.5));
  for (int parents = random.Below(4); parents > 0; --parents)
    datum.ParentIds().Append(static_cast<unsigned int>(random.Below(100000)));
  datum.SetOwnerFeatID(random.Below(100000));
  return datum;
}

Model Points(std::size_t count) {
  RandomNumbers random(20261122);
  Model model;
  model.dots.reserve(count);
  for (std::size_t i = 0; i < count; ++i)
    model.dots.push_back(SomeDot(random));
  return model;
}

Model ArrayOfPoints(std::size_t count) {
  RandomNumbers random(20261123);
  Model model;
  model.array = omu_xoObjVarray<gsl_Dot>(static_cast<unsigned int>(count), 2.0);
  for (std::size_t i = 0; i < count; ++i)
    model.array.Add(new gsl_Dot(SomeDot(random)));
  return model;
}

Model EveryKind(std::size_t count) {
  RandomNumbers random(20261124);
  const std::size_t each = count / 5;
  Model model;
  model.dots.reserve(each);
  model.planes.reserve(each);
  model.axes.reserve(each);
  model.segments.reserve(each);
  model.boxes.reserve(each);
  for (std::size_t i = 0; i < each; ++i) {
    model.dots.push_back(SomeDot(random));
    model.planes.push_back(SomeDatum<gsl_Plane, gsl_DirMethod>(random, 5));
    model.axes.push_back(SomeDatum<gsl_StLine, gsl_LineMethod>(random, 8));
    model.segments.emplace_back(SomePoint(random), SomePoint(random));
    model.boxes.emplace_back();
    model.boxes.back().Add(SomePoint(random));
    model.boxes.back().Add(SomePoint(random));
  }
  return model;
}

template <class Objects>
void WriteAll(cls_Save& save, const Objects& objects) {
  for (const auto& object : objects)
    object.DBWrite(cls_WriteVisitor(save));
}

Written WriteOurs(const Model& model) {
  gsl_RecordStore store;
  cls_Save save(store);
  WriteAll(save, model.dots);
  if (model.array.Count() != 0) model.array.DBWrite(cls_WriteVisitor(save));
  WriteAll(save, model.planes);
  WriteAll(save, model.axes);
  WriteAll(save, model.segments);
  WriteAll(save, model.boxes);
  const auto bytes = std::make_shared<std::vector<unsigned char>>(store.TakeBytes());
  return {bytes, bytes->data(), bytes->size()};
}

/// Makes room for the objects of a class, whose roots follow one another.
template <class C>
void ReadAll(cls_Load& load, const std::map<std::uint32_t, std::size_t>& counts, std::size_t& root,
             std::vector<C>& objects, std::uint32_t typeId) {
  const auto found = counts.find(typeId);
  if (found == counts.end()) return;
  objects.reserve(found->second);
  for (std::size_t i = 0; i < found->second; ++i)
    objects.emplace_back(cls_ReadVisitor(load, root++));
}

Model ReadOurs(const Written& written) {
  const gsl_RecordStore store = gsl_RecordStore::OverBytes(written.begin, written.count);
  std::map<std::uint32_t, std::size_t> counts;
  const std::size_t rootCount = store.RootCount();
  for (std::size_t i = 0; i < rootCount;) {
    const std::size_t alike = store.RootsOfOneClass(i);
    counts[store.TypeId(store.Root(i))] += alike;
    i += alike;
  }
  cls_Load load(store);
  Model model;
  std::size_t root = 0;
  ReadAll(load, counts, root, model.dots, gsl_Dot::TypeId());
  if (counts.count(omu_xoObjVarray<gsl_Dot>::TypeId()) != 0) {
    model.array = omu_xoObjVarray<gsl_Dot>(cls_ReadVisitor(load, root++), nullptr, nullptr);
  }
  ReadAll(load, counts, root, model.planes, gsl_Plane::TypeId());
  ReadAll(load, counts, root, model.axes, gsl_StLine::TypeId());
  ReadAll(load, counts, root, model.segments, gsl_Segment::TypeId());
  ReadAll(load, counts, root, model.boxes, 0x030A0007u);
  return model;
}

struct Measured {
  double writeSeconds, readSeconds, bytes;
  double objectBytes; ///< what the objects take
  double writePeak;   ///< beyond the objects
  double readPeak;    ///< beyond the bytes
};

/// Work that may be done once, and what it costs.
template <class Work>
auto Timed(const Work& work, double& seconds, double& peak) {
  malloc_trim(0);
  ForgetPeakMemory();
  const double held = MemoryBytes("VmRSS");
  const double begin = ProcessorSeconds();
  auto result = work();
  seconds = ProcessorSeconds() - begin;
  peak = MemoryBytes("VmHWM") - held;
  return result;
}

template <class Write, class Read>
Measured Measure(Model (*make)(std::size_t), std::size_t count, const Write& write,
                 const Read& read) {
  PinToTheLast(Processors());
  Measured measured{};
  const double before = MemoryBytes("VmRSS");
  std::optional<Model> model = make(count);
  measured.objectBytes = MemoryBytes("VmRSS") - before;
  const std::uint64_t digest = DigestOf(*model);
  const Written written =
      Timed([&] { return write(*model); }, measured.writeSeconds, measured.writePeak);
  measured.bytes = static_cast<double>(written.count);
  model.reset();
  const auto restored =
      Timed([&] { return read(written); }, measured.readSeconds, measured.readPeak);
  if (DigestOf(restored) != digest) throw std::runtime_error("what was restored is different");
  return measured;
}

struct Party {
  std::string name;
  std::function<Measured(Model (*make)(std::size_t), std::size_t count)> measure;
};

std::vector<Party> AllParties() {
  std::vector<Party> parties = {{"ours", [](Model (*make)(std::size_t), std::size_t count) {
                                   return Measure(make, count, WriteOurs, ReadOurs);
                                 }}};
  for (const record_peers::Peer& peer : record_peers::AllPeers()) {
    parties.push_back({peer.name, [peer](Model (*make)(std::size_t), std::size_t count) {
                         return Measure(make, count, peer.write, peer.read);
                       }});
  }
  return parties;
}

struct Work {
  const char* name;
  Model (*make)(std::size_t count);
};

constexpr Work kWorks[] = {{"datum points", Points},
                           {"datum points in one array", ArrayOfPoints},
                           {"points, planes, axes, segments and boxes", EveryKind}};

/// Rounds of all parties take turns, so that a busy machine is busy for each of them.
json WorkRecord(const Work& work, std::size_t count, int rounds) {
  using Field = double Measured::*;
  const std::pair<const char*, Field> fields[] = {{"writeSeconds", &Measured::writeSeconds},
                                                  {"readSeconds", &Measured::readSeconds},
                                                  {"bytes", &Measured::bytes},
                                                  {"objectBytes", &Measured::objectBytes},
                                                  {"writePeak", &Measured::writePeak},
                                                  {"readPeak", &Measured::readPeak}};
  const std::vector<Party> parties = AllParties();
  std::vector<std::vector<Measured>> measured(parties.size());
  for (int round = 0; round < rounds; ++round) {
    for (std::size_t k = 0; k < parties.size(); ++k) {
      const auto one = InChild([&] { return parties[k].measure(work.make, count); });
      if (!one) throw std::runtime_error(parties[k].name + " took too long");
      measured[k].push_back(*one);
    }
  }
  json records = json::array();
  for (std::size_t k = 0; k < parties.size(); ++k) {
    json record = {{"name", parties[k].name}};
    for (const auto& [name, field] : fields) {
      std::vector<double> values;
      for (const Measured& one : measured[k])
        values.push_back(one.*field);
      record[name] = Median(values);
    }
    std::fprintf(stderr, "%s, %s: write %.0f ms, read %.0f ms, %.1f bytes each\n", work.name,
                 parties[k].name.c_str(), 1e3 * record["writeSeconds"].get<double>(),
                 1e3 * record["readSeconds"].get<double>(),
                 record["bytes"].get<double>() / static_cast<double>(count));
    records.push_back(std::move(record));
  }
  return {{"name", work.name}, {"count", count}, {"parties", std::move(records)}};
}

int Main(int argc, char** argv) {
  const std::regex filter(argc > 1 ? argv[1] : ".");
  const std::size_t count = argc > 2 ? std::stoul(argv[2]) : kCount;
  const int rounds = argc > 3 ? std::stoi(argv[3]) : kRounds;
  int modules = 0;
  gsl_initialize(modules);
  json works = json::array();
  for (const Work& work : kWorks) {
    if (!std::regex_search("Records/" + std::string(work.name), filter)) continue;
    works.push_back(WorkRecord(work, count, rounds));
  }
  json versions = json::object();
  for (const record_peers::Peer& peer : record_peers::AllPeers())
    versions[peer.name] = peer.version;
  constexpr std::size_t kPeers = 3;
  const bool isComplete =
      works.size() == std::size(kWorks) && count == kCount && versions.size() == kPeers;
  const json result = {
      {"peers", versions}, {"isComplete", isComplete}, {"works", std::move(works)}};
  std::cout << result.dump(1) << '\n';
  gsl_finalize(modules);
  return 0;
}

} // namespace

// usage: bench_records [FILTER [COUNT [ROUNDS]]]: a regular expression over Records/WORK, the
// number of objects, and how often each is measured.
int main(int argc, char** argv) {
  try {
    return Main(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench_records: %s\n", error.what());
    return 1;
  }
}
