#include "CrossingSearch.h"

#include "CrossingPair.h"
#include "Jobs.h"
#include "RayCount.h"
#include "Tally.h"

#include <algorithm>
#include <vector>

namespace gsl_sweep {

namespace {

bool IsBefore(const Crossing& a, const Crossing& b) {
  return a.first != b.first ? a.first < b.first : a.second < b.second;
}

/// The first crossings of any number that are added, and their number.
class FirstCrossings {
public:
  explicit FirstCrossings(std::size_t capacity) : m_capacity(capacity) {}

  void Add(const Crossing& crossing) {
    ++m_count;
    if (m_capacity == 0) return;
    m_kept.push_back(crossing);
    if (m_kept.size() / 2 >= m_capacity) Trim();
  }
  void Add(const FirstCrossings& other) {
    m_count += other.m_count;
    m_kept.insert(m_kept.end(), other.m_kept.begin(), other.m_kept.end());
    Trim();
  }
  std::size_t Count() const { return m_count; }
  /// Writes those that are kept, in their order.
  void Write(Crossing* out) {
    std::sort(m_kept.begin(), m_kept.end(), IsBefore);
    std::copy(m_kept.begin(), m_kept.end(), out);
  }

private:
  void Trim() {
    if (m_kept.size() <= m_capacity) return;
    const auto end = m_kept.begin() + static_cast<std::ptrdiff_t>(m_capacity);
    std::nth_element(m_kept.begin(), end, m_kept.end(), IsBefore);
    m_kept.erase(end, m_kept.end());
  }

  std::size_t m_capacity, m_count = 0;
  std::vector<Crossing> m_kept;
};

template <class Scalar>
bool Overlap(const Box<double>& a, const Box<Scalar>& b) {
  for (int k = 0; k < 3; ++k) {
    if (a.high[k] < static_cast<double>(b.low[k]) || static_cast<double>(b.high[k]) < a.low[k])
      return false;
  }
  return true;
}

/// Tests each pair of triangles of a body whose boxes overlap, once.
template <class Scalar>
class CrossingSearch {
public:
  CrossingSearch(const PreparedBody& body, const Placement<Scalar>& placement)
      : m_self(body, placement), m_runs(body.Runs().begin), m_hasArea(body.TriangleCount()) {
    for (std::size_t place = 0; place < m_hasArea.size(); ++place)
      m_hasArea[place] = HasArea(m_self.TriangleAt(place));
  }

  /// Adds the crossings of the triangles of a leaf with each other and with those of later leaves.
  void AddOfLeaf(std::size_t leaf, FirstCrossings& found) const {
    std::vector<Candidate> own;
    Box<double> box = Box<double>::Empty();
    for (std::size_t place = m_runs[leaf]; place < m_runs[leaf + 1]; ++place) {
      if (!m_hasArea[place]) continue;
      const Candidate candidate(m_self, place);
      for (const Candidate& other : own)
        AddIfCrossing(other, candidate, found);
      box.Include(candidate.box);
      own.push_back(candidate);
    }
    const Tree<Scalar>& tree = m_self.TreeOf();
    std::vector<TreeRef> stack{tree.root};
    while (!stack.empty()) {
      const TreeRef ref = stack.back();
      stack.pop_back();
      if (ref.IsLeaf()) {
        if (ref.Index() > leaf) AddOfOtherLeaf(own, box, ref.Index(), found);
        continue;
      }
      const TreeNode<Scalar>& node = tree.nodes[ref.Index()];
      for (int lane = 0; lane < 4; ++lane) {
        if (node.child[lane].IsNone()) continue;
        if (Overlap(box, m_self.placement.At(node.boxes.At(lane))))
          stack.push_back(node.child[lane]);
      }
    }
  }

private:
  /// A triangle in the coordinates of the pair kernel, with its box in those of the walk.
  struct Candidate {
    Candidate(const PlacedBody<Scalar>& self, std::size_t itsPlace)
        : place(itsPlace), triangle(self.TriangleAt(itsPlace)),
          box(BoxAround(
              {{self.Corner(itsPlace, 0), self.Corner(itsPlace, 1), self.Corner(itsPlace, 2)}})) {}

    std::size_t place;
    SurfaceTriangle triangle;
    Box<double> box;
  };

  void AddOfOtherLeaf(const std::vector<Candidate>& own, const Box<double>& box, std::size_t leaf,
                      FirstCrossings& found) const {
    for (std::size_t place = m_runs[leaf]; place < m_runs[leaf + 1]; ++place) {
      if (!m_hasArea[place]) continue;
      const Candidate candidate(m_self, place);
      if (!Overlap(box, candidate.box)) continue;
      for (const Candidate& other : own)
        AddIfCrossing(other, candidate, found);
    }
  }

  void AddIfCrossing(const Candidate& a, const Candidate& b, FirstCrossings& found) const {
    if (!Overlap(a.box, b.box) || !DoCross(a.triangle, b.triangle)) return;
    const std::size_t p = m_self.corners.Number(a.place);
    const std::size_t q = m_self.corners.Number(b.place);
    found.Add({std::min(p, q), std::max(p, q)});
  }

  PlacedBody<Scalar> m_self;
  const Array<std::uint32_t>& m_runs;
  std::vector<bool> m_hasArea; ///< of the triangle at each place
};

/// The leaves that one job works on.
constexpr std::size_t kLeavesOfJob = 256;

template <class Scalar>
std::size_t Search(const PreparedBody& body, const RangeScale& scale, Crossing* out,
                   std::size_t capacity, const Run& run) {
  const Placement<Scalar> placement({0.0, 0.0, 0.0}, scale);
  const CrossingSearch<Scalar> search(body, placement);
  const std::size_t leafCount = body.Runs().Count();
  const std::size_t jobCount = (leafCount + kLeavesOfJob - 1) / kLeavesOfJob;
  Tally tally(run, jobCount);
  FirstCrossings all(capacity);
  std::mutex allMutex;
  RunJobs(run, jobCount, [&](std::size_t job) {
    FirstCrossings found(capacity);
    const std::size_t begin = job * kLeavesOfJob;
    const std::size_t end = std::min(begin + kLeavesOfJob, leafCount);
    for (std::size_t leaf = begin; leaf < end; ++leaf) {
      const double part = static_cast<double>(leaf - begin) / kLeavesOfJob;
      if (!tally.Continue(part)) return;
      search.AddOfLeaf(leaf, found);
    }
    {
      const std::lock_guard<std::mutex> lock(allMutex);
      all.Add(found);
    }
    tally.Add();
  });
  if (tally.IsCancelled()) return 0;
  all.Write(out);
  return all.Count();
}

} // namespace

std::size_t FindCrossings(const PreparedBody& body, Crossing* out, std::size_t capacity,
                          const Run& run) {
  if (body.IsEmpty()) return 0;
  Team team(run, WorthwhileThreads(body.TriangleCount()));
  body.Prepare(team);
  double largest = 0.0;
  for (int k = 0; k < 3; ++k) {
    largest =
        std::max({largest, std::fabs(body.Bounds().low[k]), std::fabs(body.Bounds().high[k])});
  }
  const RangeScale scale(largest);
  return body.IsComfortable() ? Search<float>(body, scale, out, capacity, run)
                              : Search<double>(body, scale, out, capacity, run);
}

} // namespace gsl_sweep
