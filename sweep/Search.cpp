#include "Search.h"

#include "Parallel.h"
#include "ShadowTree.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <memory>
#include <optional>
#include <stdexcept>

namespace gsl_sweep {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

bool IsFinite(const Coord3& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

double Largest(const Coord3& p) {
  return std::max({std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
}

/// Brings coordinates into the range in which the pair kernel is exact, by a power of two.
class RangeScale {
public:
  explicit RangeScale(double largest) { std::frexp(largest, &m_exponent); }

  Coord3 Down(const Coord3& p) const { return {Down(p.x), Down(p.y), Down(p.z)}; }
  double Down(double c) const { return Snapped(DownLength(c)); }

  /// The greatest scaled length that Up() reports as at most `length`.
  double DownLimit(double length) const {
    const double limit = DownLength(length);
    // Subnormal lengths round up or down by as much as half the least double.
    const double beyond = limit + std::ldexp(0.5, -1074 - m_exponent);
    for (const double candidate : {beyond, std::nextafter(beyond, 0.0)}) {
      if (std::ldexp(candidate, m_exponent) <= length) return candidate;
    }
    return limit;
  }

  double Up(double c) const {
    const double result = std::ldexp(c, m_exponent);
    if (!std::isfinite(result)) throw std::overflow_error("the travel is too large for a double");
    return result;
  }
  Coord3 Up(const Coord3& p) const { return {Up(p.x), Up(p.y), Up(p.z)}; }

private:
  double DownLength(double length) const { return std::ldexp(length, -m_exponent); }

  static double Snapped(double c) {
    constexpr double round = 0x1.8p-287; // one unit in its last place is 2^-339
    return std::fabs(c) < 0x1p-288 ? (c + round) - round : c;
  }

  int m_exponent = 0;
};

struct Body {
  std::vector<Coord3> corners; ///< scaled; of skipped triangles as they were
  std::vector<signed char> facing;
  std::vector<std::uint32_t> used; ///< triangles that take part
  std::size_t skipped = 0, turnedAway = 0;

  Triangle TriangleAt(std::uint32_t k) const {
    const Coord3* c = corners.data() + 3 * static_cast<std::size_t>(k);
    return {{c[0], c[1], c[2]}, facing[k]};
  }
};

bool IsFiniteTriangle(const Mesh& mesh, std::size_t k) {
  const Coord3* c = mesh.corners.data() + 3 * k;
  return IsFinite(c[0]) && IsFinite(c[1]) && IsFinite(c[2]);
}

double LargestCoordinate(const Mesh& mesh) {
  double largest = 0.0;
  for (std::size_t k = 0; k < mesh.TriangleCount(); ++k) {
    if (!IsFiniteTriangle(mesh, k)) continue;
    for (std::size_t c = 0; c < 3; ++c)
      largest = std::max(largest, Largest(mesh.corners[3 * k + c]));
  }
  return largest;
}

/// `refused` is the sign of normal . direction that one-sided bodies leave out, or 0.
Body PrepareBody(const Mesh& mesh, const TravelDirection& direction, const RangeScale& scale,
                 int refused) {
  const std::size_t count = mesh.TriangleCount();
  if (count > std::numeric_limits<std::uint32_t>::max()) {
    throw std::length_error("more than 4294967295 triangles");
  }
  Body body;
  body.corners.resize(3 * count);
  body.facing.resize(count);
  body.used.reserve(count);
  for (std::size_t k = 0; k < count; ++k) {
    if (!IsFiniteTriangle(mesh, k)) {
      ++body.skipped;
      continue;
    }
    Coord3* corner = body.corners.data() + 3 * k;
    for (std::size_t c = 0; c < 3; ++c)
      corner[c] = scale.Down(mesh.corners[3 * k + c]);
    const int facing = MakeTriangle(direction, corner[0], corner[1], corner[2]).facing;
    body.facing[k] = static_cast<signed char>(facing);
    if (refused != 0 && facing == refused) {
      ++body.turnedAway;
      continue;
    }
    body.used.push_back(static_cast<std::uint32_t>(k));
  }
  return body;
}

/// Sum of (edge in the shadow)^4 / |edge|^2, as complex numbers: it turns four times with the
/// edges, so that edges along and across a grid add up.
struct EdgeDirections {
  double cosine = 0.0, sine = 0.0, weight = 0.0;

  void Add(const ShadowFrame& frame, const Body& body) {
    for (const std::uint32_t k : body.used) {
      const Triangle t = body.TriangleAt(k);
      Coord3 p[3];
      for (int c = 0; c < 3; ++c)
        p[c] = frame.Transform(t.corner[c]);
      for (int c = 0; c < 3; ++c)
        Add(gsl_arithmetic::Subtract(p[c == 2 ? 0 : c + 1], p[c]));
    }
  }

  void Add(const Coord3& edge) {
    const double square = edge.x * edge.x + edge.y * edge.y;
    if (!(square > 0.0)) return;
    const double c = (edge.x * edge.x - edge.y * edge.y) / square;
    const double s = 2.0 * edge.x * edge.y / square;
    cosine += square * (c * c - s * s);
    sine += square * (2.0 * c * s);
    weight += square;
  }
};

struct Extent {
  Coord3 low{infinity, infinity, infinity};
  Coord3 high{-infinity, -infinity, -infinity};

  void Include(const Body& body) {
    for (const std::uint32_t k : body.used) {
      const Triangle t = body.TriangleAt(k);
      for (const Coord3& p : t.corner) {
        low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
      }
    }
  }
};

/// A frame around both bodies, turned so that boxes fit long edges; the turn changes no answer.
ShadowFrame FrameAround(const TravelDirection& direction, const Body& moving, const Body& fixed) {
  Extent extent;
  extent.Include(moving);
  extent.Include(fixed);
  const Coord3 center = gsl_arithmetic::Multiply(gsl_arithmetic::Add(extent.low, extent.high), 0.5);
  const Coord3 above = gsl_arithmetic::Subtract(extent.high, center);
  const Coord3 below = gsl_arithmetic::Subtract(center, extent.low);
  const double reach = std::max(Largest(above), Largest(below)) * (1.0 + 0x1p-50);
  const ShadowFrame frame(direction, center, reach);
  EdgeDirections edges;
  edges.Add(frame, moving);
  edges.Add(frame, fixed);
  const double angle = std::atan2(edges.sine, edges.cosine) / 4.0;
  const bool isPlain =
      std::fabs(angle) < 1e-3 || std::hypot(edges.cosine, edges.sine) < 0.1 * edges.weight;
  return isPlain ? frame : frame.Turned(angle);
}

ShadowTree TreeOf(const Body& body, const ShadowFrame& frame) {
  std::vector<ShadowTriangle> triangles;
  triangles.reserve(body.used.size());
  for (const std::uint32_t k : body.used) {
    const Triangle t = body.TriangleAt(k);
    ShadowTriangle shadow{};
    shadow.index = k;
    shadow.zLow = infinity;
    shadow.zHigh = -infinity;
    for (int c = 0; c < 3; ++c) {
      const Coord3 p = frame.Transform(t.corner[c]);
      shadow.u[c] = p.x;
      shadow.v[c] = p.y;
      shadow.zLow = std::min(shadow.zLow, p.z - frame.Error());
      shadow.zHigh = std::max(shadow.zHigh, p.z + frame.Error());
    }
    triangles.push_back(shadow);
  }
  return ShadowTree(frame, std::move(triangles));
}

struct Found {
  std::uint32_t moving = 0, fixed = 0;
  Contact contact{infinity, ContactKind::Overlap, {}, {}};
  ExactRatio travel; ///< of the contact, as a multiple of the direction vector
  bool any = false;

  bool Precedes(const Found& other) const {
    if (!other.any) return any;
    if (!any) return false;
    const int order = CompareRatios(travel, other.travel);
    if (order != 0) return order < 0;
    if (moving != other.moving) return moving < other.moving;
    return fixed < other.fixed;
  }
};

struct NodePair {
  std::uint32_t moving, fixed;
  double gap;
};

/// The search for the first contact ahead, which ends early when a pair touches at the start.
///
/// The limit only falls, and a pair is left out only when it lies beyond; so all pairs with the
/// least travel are judged, whatever the order, and the first of them by number is the answer.
class ContactSearch {
public:
  ContactSearch(const TravelDirection& direction, const ShadowFrame& frame, const Body& moving,
                const Body& fixed, const ShadowTree& movingTree, const ShadowTree& fixedTree,
                double limit)
      : m_direction(direction), m_crossError(frame.CrossError()), m_error(frame.Error()),
        m_moving(moving), m_fixed(fixed), m_movingTree(movingTree), m_fixedTree(fixedTree),
        m_limit(limit) {}

  void Run(unsigned threads, const std::function<void(double)>& progress);

  bool TouchesAtStart() const { return m_touching; }
  const Found& First() const { return m_first; }

private:
  void MakeTasks();
  void Expand(const NodePair& pair, std::vector<NodePair>& into) const;
  void Append(std::uint32_t moving, std::uint32_t fixed, std::vector<NodePair>& into) const;
  bool IsLeafPair(const NodePair& pair) const;
  void Work(const std::function<void(double)>* progress);
  void Descend(const NodePair& task, std::vector<NodePair>& stack, Found& first);
  void JudgeLeaves(const NodePair& pair, Found& first);
  void Judge(const ShadowTriangle& a, const ShadowTriangle& b, Found& first);
  void LowerLimit(double travel);

  const TravelDirection& m_direction;
  double m_crossError, m_error;
  const Body& m_moving;
  const Body& m_fixed;
  const ShadowTree& m_movingTree;
  const ShadowTree& m_fixedTree;
  std::vector<NodePair> m_tasks;
  std::atomic<std::size_t> m_nextTask{0};
  std::atomic<double> m_limit;
  std::atomic<bool> m_touching{false};
  std::atomic<bool> m_stop{false};
  std::mutex m_firstMutex;
  Found m_first;
};

bool ContactSearch::IsLeafPair(const NodePair& pair) const {
  return m_movingTree.At(pair.moving).count != 0 && m_fixedTree.At(pair.fixed).count != 0;
}

void ContactSearch::Append(std::uint32_t moving, std::uint32_t fixed,
                           std::vector<NodePair>& into) const {
  const ShadowBox& a = m_movingTree.At(moving).box;
  const ShadowBox& b = m_fixedTree.At(fixed).box;
  if (ShadowBox::AreApart(a, b, m_limit.load(std::memory_order_relaxed))) return;
  into.push_back({moving, fixed, ShadowBox::Gap(a, b)});
}

/// Replaces a pair by those of the children of its larger node.
void ContactSearch::Expand(const NodePair& pair, std::vector<NodePair>& into) const {
  const ShadowTree::Node& a = m_movingTree.At(pair.moving);
  const ShadowTree::Node& b = m_fixedTree.At(pair.fixed);
  const auto size = [](const ShadowBox& box) {
    return (box.high.x - box.low.x) + (box.high.y - box.low.y) + (box.high.z - box.low.z);
  };
  if (b.count != 0 || (a.count == 0 && size(a.box) > size(b.box))) {
    Append(pair.moving + 1, pair.fixed, into);
    Append(a.first, pair.fixed, into);
  } else {
    Append(pair.moving, pair.fixed + 1, into);
    Append(pair.moving, b.first, into);
  }
}

/// Cuts the work into pieces of like size, nearest first.
void ContactSearch::MakeTasks() {
  constexpr std::size_t wanted = 2000;
  std::vector<NodePair> next;
  Append(0, 0, m_tasks);
  for (bool grown = true; grown && m_tasks.size() < wanted;) {
    grown = false;
    next.clear();
    for (const NodePair& pair : m_tasks) {
      if (IsLeafPair(pair)) {
        next.push_back(pair);
      } else {
        Expand(pair, next);
        grown = true;
      }
    }
    m_tasks.swap(next);
  }
  std::stable_sort(m_tasks.begin(), m_tasks.end(),
                   [](const NodePair& a, const NodePair& b) { return a.gap < b.gap; });
}

void ContactSearch::Run(unsigned threads, const std::function<void(double)>& progress) {
  if (m_movingTree.IsEmpty() || m_fixedTree.IsEmpty()) return;
  MakeTasks();
  if (progress) progress(0.0);
  RunOnThreads(
      threads, [&](unsigned k) { Work(k == 0 ? &progress : nullptr); }, [this] { m_stop = true; });
  if (progress) progress(1.0);
}

void ContactSearch::Work(const std::function<void(double)>* progress) {
  std::vector<NodePair> stack;
  Found first;
  while (!m_stop) {
    const std::size_t task = m_nextTask++;
    if (task >= m_tasks.size()) break;
    if (progress != nullptr && *progress) {
      (*progress)(static_cast<double>(task) / static_cast<double>(m_tasks.size()));
    }
    Descend(m_tasks[task], stack, first);
  }
  const std::lock_guard<std::mutex> lock(m_firstMutex);
  if (first.Precedes(m_first)) m_first = first;
}

void ContactSearch::Descend(const NodePair& task, std::vector<NodePair>& stack, Found& first) {
  stack.assign(1, task);
  while (!stack.empty() && !m_stop) {
    const NodePair pair = stack.back();
    stack.pop_back();
    if (pair.gap > m_limit.load(std::memory_order_relaxed)) continue;
    if (IsLeafPair(pair)) {
      JudgeLeaves(pair, first);
      continue;
    }
    const std::size_t bottom = stack.size();
    Expand(pair, stack);
    // The nearer child goes on top.
    if (stack.size() == bottom + 2 && stack[bottom].gap < stack[bottom + 1].gap) {
      std::swap(stack[bottom], stack[bottom + 1]);
    }
  }
}

void ContactSearch::JudgeLeaves(const NodePair& pair, Found& first) {
  const ShadowTree::Node& a = m_movingTree.At(pair.moving);
  const ShadowTree::Node& b = m_fixedTree.At(pair.fixed);
  for (std::uint32_t i = a.first; i < a.first + a.count; ++i) {
    const ShadowTriangle& moving = m_movingTree.TriangleAt(i);
    const ShadowBox movingBox = moving.Box(m_error);
    if (ShadowBox::AreApart(movingBox, b.box, m_limit.load(std::memory_order_relaxed))) continue;
    for (std::uint32_t j = b.first; j < b.first + b.count; ++j) {
      const ShadowTriangle& fixed = m_fixedTree.TriangleAt(j);
      const double limit = m_limit.load(std::memory_order_relaxed);
      if (ShadowBox::AreApart(movingBox, fixed.Box(m_error), limit)) continue;
      if (ShadowsApart(moving, fixed, m_crossError)) continue;
      Judge(moving, fixed, first);
    }
  }
}

void ContactSearch::Judge(const ShadowTriangle& a, const ShadowTriangle& b, Found& first) {
  Found found;
  const double limit = m_limit.load(std::memory_order_relaxed);
  const Triangle moving = m_moving.TriangleAt(a.index);
  const Triangle fixed = m_fixed.TriangleAt(b.index);
  switch (JudgePair(m_direction, moving, fixed, limit, found.contact, found.travel)) {
  case PairOutcome::Apart:
    return;
  case PairOutcome::Touching:
    m_touching = true;
    m_stop = true;
    return;
  case PairOutcome::Ahead:
    found.moving = a.index;
    found.fixed = b.index;
    found.any = true;
    if (found.Precedes(first)) first = found;
    // Travels are rounded from a hundred bits, which can turn the order of two by one unit.
    LowerLimit(std::nextafter(found.contact.travel, infinity));
    return;
  }
}

void ContactSearch::LowerLimit(double travel) {
  double limit = m_limit.load(std::memory_order_relaxed);
  while (travel < limit && !m_limit.compare_exchange_weak(limit, travel)) {
  }
}

/// The search for the first pair, by number, that touches at the start.
class StartSearch {
public:
  StartSearch(const TravelDirection& direction, const ShadowFrame& frame, const Body& moving,
              const Body& fixed, const ShadowTree& fixedTree)
      : m_direction(direction), m_frame(frame), m_moving(moving), m_fixed(fixed),
        m_fixedTree(fixedTree) {}

  /// The moving triangle and the fixed one.
  std::optional<std::pair<std::uint32_t, std::uint32_t>> Run(unsigned threads);

private:
  static constexpr std::size_t blockSize = 64;

  void Work();
  std::optional<std::uint32_t> FirstTouched(std::uint32_t moving,
                                            std::vector<std::uint32_t>& stack) const;
  bool Touches(std::uint32_t moving, std::uint32_t fixed) const;

  const TravelDirection& m_direction;
  const ShadowFrame& m_frame;
  const Body& m_moving;
  const Body& m_fixed;
  const ShadowTree& m_fixedTree;
  std::atomic<std::size_t> m_nextBlock{0};
  std::mutex m_firstMutex;
  std::atomic<std::size_t> m_firstPosition{std::numeric_limits<std::size_t>::max()};
  std::uint32_t m_firstFixed = 0;
  std::atomic<bool> m_stop{false};
};

std::optional<std::pair<std::uint32_t, std::uint32_t>> StartSearch::Run(unsigned threads) {
  RunOnThreads(
      threads, [this](unsigned) { Work(); }, [this] { m_stop = true; });
  if (m_firstPosition == std::numeric_limits<std::size_t>::max()) return std::nullopt;
  return std::make_pair(m_moving.used[m_firstPosition], m_firstFixed);
}

void StartSearch::Work() {
  std::vector<std::uint32_t> stack;
  while (!m_stop) {
    const std::size_t begin = m_nextBlock++ * blockSize;
    if (begin >= m_moving.used.size()) return;
    const std::size_t end = std::min(begin + blockSize, m_moving.used.size());
    for (std::size_t k = begin; k < end; ++k) {
      if (k > m_firstPosition || m_stop) return;
      const auto fixed = FirstTouched(m_moving.used[k], stack);
      if (!fixed) continue;
      const std::lock_guard<std::mutex> lock(m_firstMutex);
      if (k > m_firstPosition) return;
      m_firstPosition = k;
      m_firstFixed = *fixed;
      return;
    }
  }
}

std::optional<std::uint32_t> StartSearch::FirstTouched(std::uint32_t moving,
                                                       std::vector<std::uint32_t>& stack) const {
  const Triangle triangle = m_moving.TriangleAt(moving);
  ShadowBox box{{infinity, infinity, infinity}, {-infinity, -infinity, -infinity}};
  for (const Coord3& corner : triangle.corner) {
    const Coord3 p = m_frame.Transform(corner);
    const double error = m_frame.Error();
    box.low = {std::min(box.low.x, p.x - error), std::min(box.low.y, p.y - error),
               std::min(box.low.z, p.z - error)};
    box.high = {std::max(box.high.x, p.x + error), std::max(box.high.y, p.y + error),
                std::max(box.high.z, p.z + error)};
  }
  std::optional<std::uint32_t> first;
  stack.assign(1, 0);
  while (!stack.empty()) {
    const std::uint32_t index = stack.back();
    stack.pop_back();
    const ShadowTree::Node& node = m_fixedTree.At(index);
    if (ShadowBox::AreApart(box, node.box, 0.0)) continue;
    if (node.count == 0) {
      stack.push_back(node.first);
      stack.push_back(index + 1);
      continue;
    }
    for (std::uint32_t k = node.first; k < node.first + node.count; ++k) {
      const std::uint32_t fixed = m_fixedTree.TriangleAt(k).index;
      if (first && *first < fixed) continue;
      if (Touches(moving, fixed)) first = fixed;
    }
  }
  return first;
}

bool StartSearch::Touches(std::uint32_t moving, std::uint32_t fixed) const {
  Contact unused{};
  ExactRatio unusedTravel;
  return JudgePair(m_direction, m_moving.TriangleAt(moving), m_fixed.TriangleAt(fixed), 0.0, unused,
                   unusedTravel) == PairOutcome::Touching;
}

/// The trees of both bodies, on two threads where there are.
void PlantTrees(unsigned threads, const Body& moving, const Body& fixed, const ShadowFrame& frame,
                std::optional<ShadowTree>& movingTree, std::optional<ShadowTree>& fixedTree) {
  std::atomic<int> next{0};
  const auto work = [&](unsigned) {
    for (int task = next++; task < 2; task = next++) {
      if (task == 0) {
        movingTree.emplace(TreeOf(moving, frame));
      } else {
        fixedTree.emplace(TreeOf(fixed, frame));
      }
    }
  };
  RunOnThreads(std::min(threads, 2u), work, [] {});
}

void Describe(SweptBody& described, const Mesh& mesh, const Body& body) {
  described.triangles = mesh.TriangleCount();
  described.skipped = body.skipped;
  described.turnedAway = body.turnedAway;
}

void WriteContact(const Contact& contact, std::uint32_t moving, std::uint32_t fixed,
                  const RangeScale& scale, SweepAnswer& answer) {
  answer.travel = scale.Up(contact.travel);
  answer.kind = contact.kind;
  answer.moving.triangle = moving;
  answer.moving.point = scale.Up(contact.onMoving);
  answer.fixed.triangle = fixed;
  answer.fixed.point = scale.Up(contact.onFixed);
}

TravelDirection DirectionOf(const SweepQuestion& question) {
  const double largest = Largest(question.direction);
  if (!IsFinite(question.direction) || largest == 0.0) {
    throw std::invalid_argument("the direction must be finite and not zero");
  }
  return TravelDirection(RangeScale(largest).Down(question.direction));
}

} // namespace

SweepAnswer Sweep(const Mesh& moving, const Mesh& fixed, const SweepQuestion& question) {
  SweepAnswer answer;
  const TravelDirection direction = DirectionOf(question);
  answer.direction = direction.Unit();
  const RangeScale scale(std::max(LargestCoordinate(moving), LargestCoordinate(fixed)));
  const Body movingBody = PrepareBody(moving, direction, scale, question.oneSided ? -1 : 0);
  const Body fixedBody = PrepareBody(fixed, direction, scale, question.oneSided ? 1 : 0);
  Describe(answer.moving, moving, movingBody);
  Describe(answer.fixed, fixed, fixedBody);
  if (movingBody.used.empty() || fixedBody.used.empty()) return answer;

  const ShadowFrame frame = FrameAround(direction, movingBody, fixedBody);
  std::optional<ShadowTree> movingTree;
  std::optional<ShadowTree> fixedTree;
  PlantTrees(question.threads, movingBody, fixedBody, frame, movingTree, fixedTree);
  ContactSearch search(direction, frame, movingBody, fixedBody, *movingTree, *fixedTree,
                       scale.DownLimit(question.maxDistance));
  search.Run(question.threads, question.progress);
  if (search.TouchesAtStart()) {
    const auto pair =
        StartSearch(direction, frame, movingBody, fixedBody, *fixedTree).Run(question.threads);
    ContactInterval interval{};
    FindContactInterval(direction, movingBody.TriangleAt(pair->first),
                        fixedBody.TriangleAt(pair->second), interval);
    answer.status = SweepStatus::Start;
    WriteContact(ContactAtStart(interval), pair->first, pair->second, scale, answer);
  } else if (search.First().any) {
    answer.status = SweepStatus::Contact;
    WriteContact(search.First().contact, search.First().moving, search.First().fixed, scale,
                 answer);
  }
  return answer;
}

} // namespace gsl_sweep
