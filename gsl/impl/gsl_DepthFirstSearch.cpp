#include "gsl_DepthFirstSearch.h"

#include "mem_Memory.h"
#include "wide/gsl_WideKernels.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

// The order in which the vertices of a component are visited does not change the result: a
// component is a set. So the rows that wait are a set too. They are scanned in the order of memory,
// round after round, and the processor reads them almost as one stream.

static_assert(sizeof(bool) == 1, "rows are scanned as bytes");

namespace {

using gsl_wide::kAdjacencyRun;

/// The vertices that are visited but whose rows are not scanned yet, one bit each.
class WaitingSet {
public:
  static std::size_t Words(int n) { return (static_cast<std::size_t>(n) + 63) / 64; }

  WaitingSet(int n, std::uint64_t* memory) : m_words(Words(n)), m_bits(memory), m_count(0) {
    std::fill(m_bits, m_bits + m_words, std::uint64_t{0});
  }

  /// Requires that `v` is not in the set.
  void Add(int v) {
    m_bits[Word(v)] |= std::uint64_t{1} << v % 64;
    ++m_count;
  }
  /// Requires that `v` is in the set.
  void Remove(int v) {
    m_bits[Word(v)] &= ~(std::uint64_t{1} << v % 64);
    --m_count;
  }

  /// Returns the first vertex from `v` on, then from 0 on, or -1 when the set is empty.
  int From(int v) const {
    if (m_count == 0) return -1;
    const std::uint64_t here = m_bits[Word(v)] >> v % 64;
    if (here != 0) return v + __builtin_ctzll(here);
    std::size_t word = Word(v);
    do {
      word = word + 1 < m_words ? word + 1 : 0;
    } while (m_bits[word] == 0);
    return static_cast<int>(word) * 64 + __builtin_ctzll(m_bits[word]);
  }

private:
  std::size_t m_words;
  std::uint64_t* m_bits;
  int m_count;

  static std::size_t Word(int v) { return static_cast<std::size_t>(v) / 64; }
};

/// The unvisited vertices. Each vertex has a byte, 0xFF or 0; zeros pad the bytes to whole runs.
/// Each group of runs has a bit, which is set while the group has an unvisited vertex.
class UnvisitedSet {
public:
  /// Returns the size in units of 64 bits.
  static std::size_t MemoryFor(int n) {
    const std::size_t bytes = Runs(n) * kAdjacencyRun + Groups(n) * sizeof(std::uint16_t);
    return Words(n) + (bytes + 7) / 8;
  }

  UnvisitedSet(int n, std::uint64_t* memory)
      : m_runs(Runs(n)), m_words(Words(n)), m_live(memory),
        m_bytes(reinterpret_cast<unsigned char*>(memory + m_words)),
        m_left(reinterpret_cast<std::uint16_t*>(m_bytes + m_runs * kAdjacencyRun)) {
    std::fill(m_live, m_live + m_words, std::uint64_t{0});
    std::fill(m_bytes, m_bytes + n, static_cast<unsigned char>(0xFF));
    std::fill(m_bytes + n, m_bytes + m_runs * kAdjacencyRun, static_cast<unsigned char>(0));
    for (int u = 0; u < n; u += kGroup) {
      const std::size_t group = Group(u);
      m_left[group] = static_cast<std::uint16_t>(std::min(kGroup, n - u));
      m_live[group / 64] |= std::uint64_t{1} << group % 64;
    }
  }

  bool Has(int u) const { return m_bytes[u] != 0; }
  std::size_t RunCount() const { return m_runs; }
  const unsigned char* BytesOf(std::size_t run) const { return m_bytes + run * kAdjacencyRun; }

  void Remove(int u) {
    m_bytes[u] = 0;
    const std::size_t group = Group(u);
    if (--m_left[group] == 0) m_live[group / 64] &= ~(std::uint64_t{1} << group % 64);
  }

  /// Returns the first run from `run` on that is in a group with an unvisited vertex. Requires a
  /// multiple of kGroupRuns.
  std::size_t NextLive(std::size_t run) const { return Next(run, 0); }
  /// Returns the first run from `run` on that is in a group without an unvisited vertex. Requires a
  /// multiple of kGroupRuns.
  std::size_t NextDead(std::size_t run) const { return Next(run, ~std::uint64_t{0}); }

private:
  static constexpr std::size_t kGroupRuns = 4;
  static constexpr int kGroup = kAdjacencyRun * static_cast<int>(kGroupRuns);

  std::size_t m_runs;
  std::size_t m_words;
  std::uint64_t* m_live;
  unsigned char* m_bytes;
  std::uint16_t* m_left; ///< unvisited vertices of each group

  static std::size_t Runs(int n) {
    return (static_cast<std::size_t>(n) + kAdjacencyRun - 1) / kAdjacencyRun;
  }
  static std::size_t Groups(int n) { return (Runs(n) + kGroupRuns - 1) / kGroupRuns; }
  static std::size_t Words(int n) { return (Groups(n) + 63) / 64; }
  static std::size_t Group(int u) { return static_cast<std::size_t>(u / kGroup); }

  /// Requires that `run` is one of the runs.
  std::size_t Next(std::size_t run, std::uint64_t flip) const {
    const std::size_t group = run / kGroupRuns;
    std::size_t word = group / 64;
    std::uint64_t bits = (m_live[word] ^ flip) & ~std::uint64_t{0} << group % 64;
    while (bits == 0) {
      if (++word >= m_words) return m_runs;
      bits = m_live[word] ^ flip;
    }
    const std::size_t found = word * 64 + static_cast<std::size_t>(__builtin_ctzll(bits));
    return std::min(m_runs, found * kGroupRuns);
  }
};

/// Returns the first byte of a word in memory that is not 0. Requires a word that is not 0.
int FirstByte(std::uint64_t word) {
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
  return __builtin_ctzll(word) / 8;
#else
  return __builtin_clzll(word) / 8;
#endif
}

std::uint64_t WithoutByte(std::uint64_t word, int byte) {
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
  return word & ~(std::uint64_t{0xFF} << 8 * byte);
#else
  return word & ~(std::uint64_t{0xFF} << (56 - 8 * byte));
#endif
}

std::uint64_t LoadWord(const unsigned char* from) {
  std::uint64_t word = 0;
  std::memcpy(&word, from, sizeof word);
  return word;
}

class Labelling {
public:
  /// Returns the size in units of 64 bits.
  static std::size_t MemoryFor(int n) { return WaitingSet::Words(n) + UnvisitedSet::MemoryFor(n); }

  Labelling(const bool* a, int count, int* l, std::uint64_t* memory)
      : m_adjacency(reinterpret_cast<const unsigned char*>(a)), m_n(count), m_end(Row(count)),
        m_labels(l), m_component(0), m_unvisitedCount(count), m_waiting(count, memory),
        m_unvisited(count, memory + WaitingSet::Words(count)), m_kernels(gsl_BestWideKernels()) {}

  int LabelAll() {
    for (int start = 0; m_unvisitedCount > 0; ++start) {
      // A vertex that only points into earlier components is still unvisited.
      if (!m_unvisited.Has(start)) continue;
      Visit(start);
      for (int v = start; v >= 0 && m_unvisitedCount > 0; v = m_waiting.From(v)) {
        m_waiting.Remove(v);
        ScanRow(v);
      }
      ++m_component;
    }
    return m_component;
  }

private:
  const unsigned char* const m_adjacency;
  const int m_n;
  const unsigned char* const m_end;
  int* const m_labels;
  int m_component;
  int m_unvisitedCount;
  WaitingSet m_waiting;
  UnvisitedSet m_unvisited;
  const gsl_WideKernels& m_kernels;

  const unsigned char* Row(int v) const {
    return m_adjacency + static_cast<std::size_t>(v) * static_cast<std::size_t>(m_n);
  }

  void Visit(int u) {
    m_labels[u] = m_component;
    // The vertex is removed before its row is scanned, so that an edge to itself finds nothing.
    m_unvisited.Remove(u);
    --m_unvisitedCount;
    m_waiting.Add(u);
  }

  /// Returns the row that probably comes next, so that it is fetched while this row is scanned.
  const unsigned char* RowAfter(int v) const {
    const int next = m_waiting.From(v);
    return Row(next >= 0 ? next : std::min(v + 1, m_n - 1));
  }

  void ScanRow(int v) {
    const unsigned char* const row = Row(v);
    // The last run reaches into the next row, where no vertex is open. The last row has no next
    // row, so its last run is copied.
    const std::size_t readable =
        m_unvisited.RunCount() * kAdjacencyRun <= static_cast<std::size_t>(m_end - row)
            ? m_unvisited.RunCount()
            : static_cast<std::size_t>(m_n / kAdjacencyRun);
    for (std::size_t run = m_unvisited.NextLive(0); run < readable;) {
      const std::size_t dead = std::min(readable, m_unvisited.NextDead(run));
      ScanRuns(v, run, dead);
      run = dead < readable ? m_unvisited.NextLive(dead) : readable;
    }
    if (readable < m_unvisited.RunCount()) {
      unsigned char padded[kAdjacencyRun] = {};
      std::memcpy(padded, row + readable * kAdjacencyRun,
                  static_cast<std::size_t>(m_n % kAdjacencyRun));
      VisitFrom(readable, padded);
    }
  }

  void ScanRuns(int v, std::size_t run, std::size_t dead) {
    const unsigned char* const row = Row(v);
    while (run < dead) {
      run += m_kernels.skipRuns(row + run * kAdjacencyRun, m_unvisited.BytesOf(run),
                                RowAfter(v) + run * kAdjacencyRun, dead - run);
      if (run == dead) break;
      VisitFrom(run, row + run * kAdjacencyRun);
      ++run;
    }
  }

  void VisitFrom(std::size_t run, const unsigned char* entries) {
    const unsigned char* const open = m_unvisited.BytesOf(run);
    for (int k = 0; k < kAdjacencyRun; k += 8) {
      std::uint64_t edges = LoadWord(entries + k) & LoadWord(open + k);
      for (; edges != 0; edges = WithoutByte(edges, FirstByte(edges))) {
        Visit(static_cast<int>(run) * kAdjacencyRun + k + FirstByte(edges));
      }
    }
  }
};

struct Release {
  void operator()(std::uint64_t* words) const { mem_Free(words); }
};

/// Searches in the same way without working memory. The labels mark the unvisited vertices, and
/// chain the vertices that wait.
int LabelEntryByEntry(const bool* adjacency, int n, int* labels) {
  constexpr int kUnvisited = -1;
  constexpr int kEndOfChain = -2;
  const auto link = [](int vertex) { return kEndOfChain - 1 - vertex; };
  std::fill(labels, labels + n, kUnvisited);
  int component = 0;
  for (int start = 0; start < n; ++start) {
    if (labels[start] != kUnvisited) continue;
    labels[start] = kEndOfChain;
    for (int waiting = link(start); waiting != kEndOfChain;) {
      const int v = link(waiting);
      waiting = labels[v];
      labels[v] = component;
      const bool* const row = adjacency + static_cast<std::size_t>(v) * static_cast<std::size_t>(n);
      for (int u = 0; u < n; ++u) {
        if (labels[u] != kUnvisited || !row[u]) continue;
        labels[u] = waiting;
        waiting = link(u);
      }
    }
    ++component;
  }
  return component;
}

} // namespace

void gsl_DepthFirstSearch(bool const* adjacency, int n, int* labels, int& count) {
  count = 0;
  if (n <= 0) return;
  const std::unique_ptr<std::uint64_t[], Release> memory(
      static_cast<std::uint64_t*>(mem_Malloc(Labelling::MemoryFor(n) * sizeof(std::uint64_t))));
  count = memory != nullptr ? Labelling(adjacency, n, labels, memory.get()).LabelAll()
                            : LabelEntryByEntry(adjacency, n, labels);
}
