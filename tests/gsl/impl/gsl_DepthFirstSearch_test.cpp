#include "gsl_DepthFirstSearch.h"

#include "FailingMemory.h"
#include "RandomNumbers.h"
#include "TestScale.h"

#include <gtest/gtest.h>

#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr int kUnwritten = -77;

class Graph {
public:
  explicit Graph(int vertices)
      : n(vertices),
        entries(new bool[static_cast<std::size_t>(n) * static_cast<std::size_t>(n)]()) {}

  int Size() const { return n; }
  const bool* Matrix() const { return entries.get(); }
  bool& Edge(int v, int u) {
    return entries[static_cast<std::size_t>(v) * static_cast<std::size_t>(n) +
                   static_cast<std::size_t>(u)];
  }
  bool Edge(int v, int u) const { return const_cast<Graph*>(this)->Edge(v, u); }

private:
  int n;
  std::unique_ptr<bool[]> entries;
};

/// The component of each vertex, and the number of components.
struct Labelling {
  std::vector<int> labels;
  int count = kUnwritten;
  bool operator==(const Labelling& other) const {
    return labels == other.labels && count == other.count;
  }
};

Labelling Search(const Graph& graph) {
  Labelling found;
  found.labels.assign(static_cast<std::size_t>(graph.Size()) + 1, kUnwritten);
  gsl_DepthFirstSearch(graph.Matrix(), graph.Size(), found.labels.data(), found.count);
  EXPECT_EQ(found.labels.back(), kUnwritten) << "written past the labels";
  found.labels.pop_back();
  return found;
}

Labelling SearchWithoutMemory(const Graph& graph) {
  const FailingMemory none(0);
  return Search(graph);
}

/// Follows the definition: it is recursive and reads entry by entry.
class RecursiveSearch {
public:
  explicit RecursiveSearch(const Graph& g) : graph(g), visited(static_cast<std::size_t>(g.Size())) {
    found.labels.assign(static_cast<std::size_t>(g.Size()), 0);
    found.count = 0;
    for (int start = 0; start < g.Size(); ++start) {
      if (!visited[static_cast<std::size_t>(start)]) Visit(start, found.count++);
    }
  }
  Labelling Result() const { return found; }

private:
  const Graph& graph;
  std::vector<bool> visited;
  Labelling found;

  void Visit(int v, int component) {
    visited[static_cast<std::size_t>(v)] = true;
    found.labels[static_cast<std::size_t>(v)] = component;
    for (int u = 0; u < graph.Size(); ++u) {
      if (u == v || visited[static_cast<std::size_t>(u)] || !graph.Edge(v, u)) continue;
      Visit(u, component);
    }
  }
};

void ExpectAsDefined(const Graph& graph) {
  const Labelling expected = RecursiveSearch(graph).Result();
  EXPECT_EQ(Search(graph).labels, expected.labels);
  EXPECT_EQ(Search(graph).count, expected.count);
  EXPECT_TRUE(SearchWithoutMemory(graph) == expected);
}

std::vector<int> UpTo(int n) {
  std::vector<int> numbers;
  for (int i = 0; i < n; ++i)
    numbers.push_back(i);
  return numbers;
}

const int kSizes[] = {1, 2, 3, 7, 8, 63, 64, 65, 127, 128, 200, 255, 256, 257, 320, 500};

} // namespace

TEST(GslDepthFirstSearch, NoVerticesHaveNoComponents) {
  int label = kUnwritten;
  int count = kUnwritten;
  gsl_DepthFirstSearch(nullptr, 0, &label, count);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(label, kUnwritten);
}

TEST(GslDepthFirstSearch, NegativeSizeMeansNoVertices) {
  int label = kUnwritten;
  int count = kUnwritten;
  gsl_DepthFirstSearch(nullptr, -5, &label, count);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(label, kUnwritten);
}

TEST(GslDepthFirstSearch, WithoutEdgesEveryVertexIsItsOwnComponent) {
  for (const int n : kSizes) {
    const Labelling found = Search(Graph(n));
    EXPECT_EQ(found.count, n);
    EXPECT_EQ(found.labels, UpTo(n));
  }
}

TEST(GslDepthFirstSearch, FullMatrixIsOneComponent) {
  for (const int n : kSizes) {
    Graph graph(n);
    for (int v = 0; v < n; ++v) {
      for (int u = 0; u < n; ++u)
        graph.Edge(v, u) = true;
    }
    const Labelling found = Search(graph);
    EXPECT_EQ(found.count, 1);
    EXPECT_EQ(found.labels, std::vector<int>(static_cast<std::size_t>(n), 0));
  }
}

TEST(GslDepthFirstSearch, DiagonalChangesNothing) {
  for (const int n : kSizes) {
    Graph graph(n);
    for (int v = 0; v < n; ++v)
      graph.Edge(v, v) = true;
    const Labelling found = Search(graph);
    EXPECT_EQ(found.count, n);
    EXPECT_EQ(found.labels, UpTo(n));
  }
}

TEST(GslDepthFirstSearch, VertexThatOnlyPointsBackStartsItsOwnComponent) {
  Graph graph(2);
  graph.Edge(1, 0) = true;
  const Labelling found = Search(graph);
  EXPECT_EQ(found.count, 2);
  EXPECT_EQ(found.labels, (std::vector<int>{0, 1}));
}

TEST(GslDepthFirstSearch, EdgesAreFollowedInTheirDirectionOnly) {
  // 0 -> 2, 3 -> 2, 3 -> 1: component 0 is {0, 2}, vertex 1 has no edges, and vertex 3 finds 1 and
  // 2 already labelled.
  Graph graph(4);
  graph.Edge(0, 2) = graph.Edge(3, 2) = graph.Edge(3, 1) = true;
  const Labelling found = Search(graph);
  EXPECT_EQ(found.count, 3);
  EXPECT_EQ(found.labels, (std::vector<int>{0, 1, 0, 2}));
}

TEST(GslDepthFirstSearch, ComponentReachesBackToLowerVertices) {
  // The edges are 0 -> 5 -> 1 -> 4. The vertices 2 and 3 are joined and remain.
  Graph graph(6);
  graph.Edge(0, 5) = graph.Edge(5, 1) = graph.Edge(1, 4) = graph.Edge(2, 3) = true;
  const Labelling found = Search(graph);
  EXPECT_EQ(found.count, 2);
  EXPECT_EQ(found.labels, (std::vector<int>{0, 0, 1, 1, 0, 0}));
}

TEST(GslDepthFirstSearch, OneEdgeAnywhereIsFound) {
  for (const int n : {1, 9, 64, 65, 130, 321}) {
    for (int v = 0; v < n; v += 1 + n / 23) {
      for (int u = 0; u < n; ++u) {
        Graph graph(n);
        graph.Edge(v, u) = true;
        ASSERT_EQ(Search(graph).count, u > v ? n - 1 : n) << n << ": " << v << " -> " << u;
      }
    }
  }
}

TEST(GslDepthFirstSearch, RandomGraphsAreLabelledAsDefined) {
  const std::uint64_t seed = 5;
  RecordProperty("seed", std::to_string(seed));
  RandomNumbers random(seed);
  for (long round = 0; round < Scaled(1500); ++round) {
    const int n = 1 + random.Below(150);
    const double edgesPerVertex[] = {0.2, 0.7, 1.0, 1.5, 4.0, 30.0};
    const double chance = edgesPerVertex[random.Below(6)] / n;
    const bool symmetric = random.Chance(0.5);
    Graph graph(n);
    for (int v = 0; v < n; ++v) {
      for (int u = symmetric ? v : 0; u < n; ++u) {
        const bool edge = random.Chance(chance);
        graph.Edge(v, u) = edge;
        if (symmetric) graph.Edge(u, v) = edge;
      }
    }
    ExpectAsDefined(graph);
    if (HasFailure()) return;
  }
}

TEST(GslDepthFirstSearch, ClustersAreSkippedOnceTheyAreDone) {
  // Neighbouring vertices belong together, so that whole groups of entries have no unvisited
  // vertex.
  RandomNumbers random(6);
  const int n = 1500;
  Graph graph(n);
  for (int first = 0; first < n;) {
    const int size = 1 + random.Below(700);
    for (int v = first; v < first + size && v < n; ++v) {
      graph.Edge(v, v + 1 < first + size && v + 1 < n ? v + 1 : first) = true;
    }
    first += size;
  }
  for (int k = 0; k < 5; ++k)
    graph.Edge(random.Below(n), random.Below(n)) = true;
  ExpectAsDefined(graph);
}

TEST(GslDepthFirstSearch, PathInAnyOrderIsOneComponent) {
  RandomNumbers random(7);
  const int n = 700;
  std::vector<int> order = UpTo(n);
  for (int i = n - 1; i > 1; --i) {
    std::swap(order[static_cast<std::size_t>(i)],
              order[static_cast<std::size_t>(1 + random.Below(i))]);
  }
  Graph graph(n); // starts at 0
  for (std::size_t k = 0; k + 1 < order.size(); ++k)
    graph.Edge(order[k], order[k + 1]) = true;
  EXPECT_EQ(Search(graph).count, 1);
  EXPECT_EQ(SearchWithoutMemory(graph).count, 1);
}

namespace {

/// A directed path 0 -> 1 -> ... in untouched pages. Only pages with edges take memory.
class LongPath {
public:
  explicit LongPath(int vertices)
      : n(vertices), bytes(static_cast<std::size_t>(n) * static_cast<std::size_t>(n)),
        pages(mmap(nullptr, bytes, PROT_READ | PROT_WRITE,
                   MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {
    if (pages == MAP_FAILED) return;
    for (int v = 0; v + 1 < n; ++v) {
      static_cast<bool*>(pages)[static_cast<std::size_t>(v) * static_cast<std::size_t>(n + 1) + 1] =
          true;
    }
  }
  ~LongPath() {
    if (pages != MAP_FAILED) munmap(pages, bytes);
  }
  LongPath(const LongPath&) = delete;
  LongPath& operator=(const LongPath&) = delete;

  bool Mapped() const { return pages != MAP_FAILED; }
  /// Returns the number of components found on a thread with that much stack.
  int CountOnStackOf(std::size_t stackBytes, bool withoutMemory = false) {
    memoryFails = withoutMemory;
    labels.assign(static_cast<std::size_t>(n), kUnwritten);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    EXPECT_EQ(pthread_attr_setstacksize(&attributes, stackBytes), 0);
    pthread_t thread;
    EXPECT_EQ(pthread_create(&thread, &attributes, &LongPath::Run, this), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    return count;
  }
  const std::vector<int>& Labels() const { return labels; }

private:
  int n;
  std::size_t bytes;
  void* pages;
  std::vector<int> labels;
  int count = kUnwritten;
  bool memoryFails = false;

  static void* Run(void* self) {
    LongPath& path = *static_cast<LongPath*>(self);
    if (path.memoryFails) {
      const FailingMemory none(0);
      path.Label();
    } else {
      path.Label();
    }
    return nullptr;
  }
  void Label() { gsl_DepthFirstSearch(static_cast<const bool*>(pages), n, labels.data(), count); }
};

void ExpectOneComponent(int n, std::size_t stackBytes) {
  LongPath path(n);
  if (!path.Mapped()) GTEST_SKIP() << "no address space for the matrix";
  EXPECT_EQ(path.CountOnStackOf(stackBytes), 1);
  EXPECT_EQ(path.Labels(), std::vector<int>(static_cast<std::size_t>(n), 0));
}

} // namespace

TEST(GslDepthFirstSearch, PathOf20000FitsAStackOf512KiB) {
  // Above 16384 vertices, the bits of the groups need more than one word.
  ExpectOneComponent(kTestScaleDivisor == 1 ? 20000 : 17000, 512 * 1024);
}

TEST(GslDepthFirstSearch, PathOf60000FitsAnOrdinaryStack) {
  if (kTestScaleDivisor > 1) GTEST_SKIP() << "in optimised builds only";
  ExpectOneComponent(60000, 8 * 1024 * 1024);
}

TEST(GslDepthFirstSearch, DeepPathWithoutMemoryNeedsNoStack) {
  const bool small = kTestScaleDivisor > 1;
  const int n = small ? 2000 : 6000;
  LongPath path(n);
  if (!path.Mapped()) GTEST_SKIP() << "no address space for the matrix";
  // A frame of 16 bytes per vertex would not fit. Instrumented code has larger frames.
  EXPECT_EQ(path.CountOnStackOf((small ? 512 : 64) * 1024, true), 1);
  EXPECT_EQ(path.Labels(), std::vector<int>(static_cast<std::size_t>(n), 0));
}

TEST(GslDepthFirstSearch, NothingAfterTheMatrixIsRead) {
  // The matrix ends where no memory can be read. Its last row leads on, so that it is searched.
  const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  for (const int n : {5, 20, 64, 100, 200}) {
    const std::size_t entries = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
    const std::size_t readable = (entries + page - 1) / page * page;
    void* const pages =
        mmap(nullptr, readable + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(pages, MAP_FAILED);
    ASSERT_EQ(mprotect(static_cast<char*>(pages) + readable, page, PROT_NONE), 0);
    bool* const matrix = static_cast<bool*>(pages) + (readable - entries);
    matrix[n - 1] = true;       // 0 -> n - 1
    matrix[entries - 2] = true; // n - 1 -> n - 2
    std::vector<int> labels(static_cast<std::size_t>(n));
    int count = kUnwritten;
    gsl_DepthFirstSearch(matrix, n, labels.data(), count);
    EXPECT_EQ(count, n - 2) << n;
    std::vector<int> expected = UpTo(n);
    expected[static_cast<std::size_t>(n - 1)] = expected[static_cast<std::size_t>(n - 2)] = 0;
    EXPECT_EQ(labels, expected) << n;
    munmap(pages, readable + page);
  }
}
