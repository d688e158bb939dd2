// Measures the labelling of the components of a graph, given as a matrix of bool. The peers are one
// read of the matrix, which every algorithm on a matrix needs, and Boost.Graph's
// connected_components on adjacency lists, with and without the conversion to lists.

#include "RandomNumbers.h"
#include "gsl_DepthFirstSearch.h"

#include <benchmark/benchmark.h>

#if defined(BENCH_BOOST_GRAPH)
#include <boost/graph/adjacency_list.hpp>
#include <boost/graph/connected_components.hpp>
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace {

enum class Kind { Empty, Sparse, Path, Full };

class Graph {
public:
  Graph(Kind kind, int vertices) : n(static_cast<std::size_t>(vertices)), entries(new bool[n * n]) {
    std::fill(entries.get(), entries.get() + n * n, kind == Kind::Full);
    if (kind == Kind::Path) {
      for (std::size_t v = 0; v + 1 < n; ++v)
        Join(v, v + 1);
    }
    if (kind == Kind::Sparse) {
      RandomNumbers random(20240229);
      for (std::size_t k = 0; k < 2 * n; ++k) // each vertex has about four neighbours
        Join(random.Next() % n, random.Next() % n);
    }
  }

  std::size_t Size() const { return n; }
  std::size_t Bytes() const { return n * n; }
  const bool* Matrix() const { return entries.get(); }
  bool Edge(std::size_t v, std::size_t u) const { return entries[v * n + u]; }

private:
  std::size_t n;
  std::unique_ptr<bool[]> entries;

  void Join(std::size_t v, std::size_t u) { entries[v * n + u] = entries[u * n + v] = true; }
};

void Ours(benchmark::State& state, Kind kind) {
  const Graph graph(kind, static_cast<int>(state.range(0)));
  std::vector<int> labels(graph.Size());
  int count = 0;
  for (auto _ : state) {
    gsl_DepthFirstSearch(graph.Matrix(), static_cast<int>(graph.Size()), labels.data(), count);
    benchmark::DoNotOptimize(labels.data());
    benchmark::ClobberMemory();
  }
}

typedef std::uint64_t Vector __attribute__((vector_size(32)));
typedef Vector AnyVector __attribute__((aligned(1), may_alias));

/// There are four running vectors, so that the memory is the limit and not the addition.
void OneRead(benchmark::State& state, Kind kind) {
  const Graph graph(kind, static_cast<int>(state.range(0)));
  const char* const bytes = reinterpret_cast<const char*>(graph.Matrix());
  for (auto _ : state) {
    Vector sum[4] = {};
    for (std::size_t k = 0; k + sizeof sum <= graph.Bytes(); k += sizeof sum) {
      for (std::size_t i = 0; i < 4; ++i)
        sum[i] |= *reinterpret_cast<const AnyVector*>(bytes + k + i * sizeof(Vector));
    }
    Vector all = sum[0] | sum[1] | sum[2] | sum[3];
    std::uint64_t any = all[0] | all[1] | all[2] | all[3];
    benchmark::DoNotOptimize(any);
  }
}

#if defined(BENCH_BOOST_GRAPH)
using Lists = boost::adjacency_list<boost::vecS, boost::vecS, boost::undirectedS>;

Lists ListsOf(const Graph& graph) {
  Lists lists(graph.Size());
  for (std::size_t v = 0; v < graph.Size(); ++v) {
    for (std::size_t u = v + 1; u < graph.Size(); ++u) {
      if (graph.Edge(v, u)) boost::add_edge(v, u, lists);
    }
  }
  return lists;
}

void BoostOnLists(benchmark::State& state, Kind kind) {
  const Graph graph(kind, static_cast<int>(state.range(0)));
  const Lists lists = ListsOf(graph);
  std::vector<int> labels(graph.Size());
  for (auto _ : state) {
    benchmark::DoNotOptimize(boost::connected_components(lists, labels.data()));
    benchmark::ClobberMemory();
  }
}

void BoostWithConversion(benchmark::State& state, Kind kind) {
  const Graph graph(kind, static_cast<int>(state.range(0)));
  std::vector<int> labels(graph.Size());
  for (auto _ : state) {
    benchmark::DoNotOptimize(boost::connected_components(ListsOf(graph), labels.data()));
    benchmark::ClobberMemory();
  }
}
#endif

void Register(const std::string& who, void (*run)(benchmark::State&, Kind), int largestFull) {
  const struct {
    const char* name;
    Kind kind;
  } kinds[] = {
      {"empty", Kind::Empty}, {"sparse", Kind::Sparse}, {"path", Kind::Path}, {"full", Kind::Full}};
  for (const auto& k : kinds) {
    for (const int n : {100, 1000, 5000, 20000}) {
      if (k.kind == Kind::Full && n > largestFull) continue;
      benchmark::RegisterBenchmark((std::string("Label_") + k.name + "/" + who).c_str(), run,
                                   k.kind)
          ->Arg(n)
          ->MinTime(0.05)
          ->Repetitions(9)
          ->ReportAggregatesOnly()
          ->Unit(benchmark::kMicrosecond);
    }
  }
}

const bool kRegistered = [] {
  constexpr int kEverything = 20000;
  Register("ours", Ours, kEverything);
  Register("one_read", OneRead, kEverything);
#if defined(BENCH_BOOST_GRAPH)
  // The lists of a full graph take 16 bytes per edge.
  Register("Boost_lists", BoostOnLists, 1000);
  Register("Boost_with_conversion", BoostWithConversion, 1000);
#endif
  return true;
}();

} // namespace
