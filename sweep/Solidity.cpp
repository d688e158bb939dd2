#include "Solidity.h"

#include "BigNatural.h"
#include "Determinant.h"
#include "EdgeFan.h"
#include "RangeScale.h"
#include "SolidPair.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <vector>

namespace gsl_sweep {

namespace {

using gsl_exact::BigNatural;
using gsl_exact::Estimate;
using gsl_exact::VectorBetween;

int NextCorner(int corner) {
  return corner == 2 ? 0 : corner + 1;
}

template <class Scalar>
bool AreEqual(const Scalar* p, const Scalar* q) {
  return p[0] == q[0] && p[1] == q[1] && p[2] == q[2];
}

/// Equal points have equal numbers.
template <class Scalar>
std::uint64_t HashOf(const Scalar* p) {
  constexpr std::uint64_t kFactors[3] = {0x9e3779b97f4a7c15u, 0xc2b2ae3d27d4eb4fu,
                                         0x165667b19e3779f9u};
  std::uint64_t sum = 0;
  for (int k = 0; k < 3; ++k) {
    const Scalar c = p[k] + Scalar{0}; // turns a negative zero into a positive one
    std::conditional_t<sizeof(Scalar) == sizeof(float), std::uint32_t, std::uint64_t> bits = 0;
    std::memcpy(&bits, &c, sizeof bits);
    sum += bits * kFactors[k];
  }
  sum ^= sum >> 32;
  sum *= 0xd6e8feb86659fd93u;
  return sum ^ sum >> 29;
}

/// Triangles that edges join.
class Joined {
public:
  explicit Joined(std::size_t count) : m_above(count) {
    for (std::size_t k = 0; k < count; ++k)
      m_above[k] = static_cast<std::uint32_t>(k);
  }

  void Join(std::uint32_t a, std::uint32_t b) {
    a = Top(a);
    b = Top(b);
    m_above[std::max(a, b)] = std::min(a, b);
  }

  /// Returns the same place for all triangles that are joined.
  std::uint32_t Top(std::uint32_t place) {
    while (m_above[place] != place) {
      m_above[place] = m_above[m_above[place]];
      place = m_above[place];
    }
    return place;
  }

  /// Returns how many parts there are that are not joined.
  std::size_t Count() const {
    std::size_t count = 0;
    for (std::size_t k = 0; k < m_above.size(); ++k)
      count += m_above[k] == k ? 1 : 0;
    return count;
  }

  /// Returns what Top returns for each place.
  std::vector<std::uint32_t> Tops() {
    std::vector<std::uint32_t> tops(m_above.size());
    for (std::size_t k = 0; k < tops.size(); ++k)
      tops[k] = Top(static_cast<std::uint32_t>(k));
    return tops;
  }

private:
  std::vector<std::uint32_t> m_above;
};

/// Remembers numbers of edges, a few bits for each. It may take a number for one that it has seen.
class SeenEdges {
public:
  explicit SeenEdges(std::size_t triangles) {
    std::size_t words = 64;
    while (4 * words < triangles)
      words *= 2;
    m_words.assign(words, 0);
  }

  /// Brings what a number needs into the cache.
  void Fetch(std::uint64_t hash) { __builtin_prefetch(&WordOf(hash), 1); }
  void Take(std::uint64_t hash) { WordOf(hash) |= MaskOf(hash); }
  bool MayHave(std::uint64_t hash) { return (WordOf(hash) & MaskOf(hash)) == MaskOf(hash); }

private:
  /// Three bits of a word.
  static std::uint64_t MaskOf(std::uint64_t hash) {
    return std::uint64_t{1} << (hash & 63) | std::uint64_t{1} << (hash >> 6 & 63) |
           std::uint64_t{1} << (hash >> 12 & 63);
  }
  std::uint64_t& WordOf(std::uint64_t hash) {
    return m_words[static_cast<std::size_t>(hash >> 24) & (m_words.size() - 1)];
  }

  std::vector<std::uint64_t> m_words;
};

/// A use of an edge by a triangle, from one of its corners to the next.
struct PlacedUse {
  std::uint64_t edge = 0; ///< the number that the edge has in both directions
  std::uint32_t place = 0;
  int corner = 0;
};

/// The uses of edges that no use in the opposite direction has cancelled yet. A triangle uses the
/// edge from each of its corners to the next.
///
/// An edge leaves the table with its last use. So the table stays small, and in the nearest cache,
/// while triangles come in an order in which neighbours follow each other closely. All uses of an
/// edge that are in the table at once are in one direction, and share a slot.
template <class Reader>
class EdgeTable {
public:
  /// `joined` receives the triangles whose uses cancel each other.
  EdgeTable(const Reader& reader, Joined& joined, std::size_t triangles)
      : m_reader(reader), m_joined(joined), m_seen(triangles), m_slots(kLeastSlots) {}

  bool IsEmpty() const { return m_count == 0; }

  /// Adds the three uses of a triangle, unless two of its corners are equal.
  void Add(std::size_t place) {
    std::uint64_t hash[3];
    if (!Hash(place, hash)) return;
    for (const std::uint64_t edge : hash)
      m_seen.Fetch(edge);
    for (int corner = 0; corner < 3; ++corner)
      Add(place, corner, hash[corner]);
  }

  /// Leaves out the edges of these numbers, in order, from now on.
  void LeaveOut(const std::vector<std::uint64_t>& edges) { m_leftOut = &edges; }

  /// Returns the numbers of edges that more than two triangles may use, in order.
  std::vector<std::uint64_t> TakeSuspects() {
    std::sort(m_suspects.begin(), m_suspects.end());
    m_suspects.erase(std::unique(m_suspects.begin(), m_suspects.end()), m_suspects.end());
    return std::move(m_suspects);
  }

  /// Calls use(PlacedUse) with the three uses of a triangle, unless two of its corners are equal.
  template <class Use>
  void EachUse(std::size_t place, const Use& use) const {
    std::uint64_t hash[3];
    if (!Hash(place, hash)) return;
    for (int corner = 0; corner < 3; ++corner)
      use(PlacedUse{hash[corner], static_cast<std::uint32_t>(place), corner});
  }

  /// Returns the first corner of a triangle that begins an edge in the table, or 3.
  int FirstIn(std::size_t place) const {
    std::uint64_t hash[3];
    if (!Hash(place, hash)) return 3;
    for (int corner = 0; corner < 3; ++corner) {
      const Edge edge = EdgeAt(place, corner);
      for (std::size_t k = Home(hash[corner]); m_slots[k].place != kFree; k = After(k)) {
        const Edge other = EdgeAt(m_slots[k].place, static_cast<int>(m_slots[k].corner));
        if (edge.IsSame(other) || edge.IsOpposite(other)) return corner;
      }
    }
    return 3;
  }

private:
  using Point = decltype(Reader::vertices);
  static constexpr std::size_t kLeastSlots = 1024;
  static constexpr std::uint32_t kFree = 0xffffffffu; ///< more than any place

  struct Edge {
    Point from, to;

    bool IsSame(const Edge& other) const {
      return AreEqual(from, other.from) && AreEqual(to, other.to);
    }
    bool IsOpposite(const Edge& other) const {
      return AreEqual(from, other.to) && AreEqual(to, other.from);
    }
  };
  struct Slot {
    std::uint64_t hash = 0;
    std::uint32_t place = kFree; ///< of the first use
    std::uint32_t corner : 2;    ///< of the first use
    std::uint32_t further : 30;  ///< uses of the same edge
  };
  static constexpr std::uint32_t kMostFurther = (1u << 30) - 1; ///< then another slot is taken

  Edge EdgeAt(std::size_t place, int corner) const {
    return {m_reader.At(place, corner), m_reader.At(place, NextCorner(corner))};
  }

  /// Computes a number for each edge that does not depend on its direction. Returns false when two
  /// corners are equal.
  bool Hash(std::size_t place, std::uint64_t (&hash)[3]) const {
    std::uint64_t ofCorner[3];
    for (int corner = 0; corner < 3; ++corner) {
      const Edge edge = EdgeAt(place, corner);
      if (AreEqual(edge.from, edge.to)) return false;
      ofCorner[corner] = HashOf(edge.from);
    }
    for (int corner = 0; corner < 3; ++corner)
      hash[corner] = (ofCorner[corner] + ofCorner[NextCorner(corner)]) * 0x9fb21c651e98df25u;
    return true;
  }

  std::size_t Home(std::uint64_t hash) const {
    return static_cast<std::size_t>(hash >> 20) & (m_slots.size() - 1);
  }
  std::size_t After(std::size_t k) const { return (k + 1) & (m_slots.size() - 1); }

  void Add(std::size_t place, int corner, std::uint64_t hash) {
    if (m_leftOut != nullptr && std::binary_search(m_leftOut->begin(), m_leftOut->end(), hash))
      return;
    const Edge edge = EdgeAt(place, corner);
    std::size_t k = Home(hash);
    bool isThere = false;
    for (; m_slots[k].place != kFree; k = After(k)) {
      Slot& slot = m_slots[k];
      if (slot.hash != hash) continue;
      const Edge other = EdgeAt(slot.place, static_cast<int>(slot.corner));
      if (edge.IsOpposite(other)) {
        Cancel(k, place);
        return;
      }
      isThere = true;
      if (!edge.IsSame(other) || slot.further == kMostFurther) continue;
      ++slot.further;
      if (m_leftOut == nullptr) m_suspects.push_back(hash);
      return;
    }
    if (m_leftOut == nullptr && (isThere || m_seen.MayHave(hash))) m_suspects.push_back(hash);
    m_slots[k] = {hash, static_cast<std::uint32_t>(place), static_cast<std::uint32_t>(corner) & 3u,
                  0};
    if (2 * ++m_count > m_slots.size()) Grow();
  }

  /// Takes away a use by a use in the opposite direction. Where a slot has further uses, more than
  /// two triangles use the edge, and they are joined later.
  void Cancel(std::size_t k, std::size_t place) {
    Slot& slot = m_slots[k];
    m_joined.Join(static_cast<std::uint32_t>(place), slot.place);
    m_seen.Take(slot.hash);
    if (slot.further > 0) {
      --slot.further;
    } else {
      Remove(k);
    }
  }

  /// Moves later slots up, so that no slot is cut off from its home.
  void Remove(std::size_t hole) {
    --m_count;
    for (std::size_t k = After(hole); m_slots[k].place != kFree; k = After(k)) {
      const std::size_t mask = m_slots.size() - 1;
      const std::size_t fromHome = (k - Home(m_slots[k].hash)) & mask;
      if (fromHome < ((k - hole) & mask)) continue;
      m_slots[hole] = m_slots[k];
      hole = k;
    }
    m_slots[hole].place = kFree;
  }

  void Grow() {
    std::vector<Slot> old(2 * m_slots.size());
    old.swap(m_slots);
    for (const Slot& slot : old) {
      if (slot.place == kFree) continue;
      std::size_t k = Home(slot.hash);
      while (m_slots[k].place != kFree)
        k = After(k);
      m_slots[k] = slot;
    }
  }

  const Reader& m_reader;
  Joined& m_joined;
  SeenEdges m_seen; ///< edges that two uses have cancelled
  std::vector<std::uint64_t> m_suspects;
  const std::vector<std::uint64_t>* m_leftOut = nullptr;
  std::vector<Slot> m_slots; ///< a power of two; at most half of them are in use
  std::size_t m_count = 0;
};

/// An edge that is not used as often in one direction as in the other.
struct WrongEdge {
  bool any = false;
  std::size_t place = 0; ///< of the lowest triangle at such an edge
  int corner = 0;        ///< of this triangle, where its first such edge begins
};

/// `suspects` receives the numbers of edges that more than two triangles may use.
WrongEdge FindWrongEdge(const Corners& corners, Joined& joined,
                        std::vector<std::uint64_t>& suspects) {
  WrongEdge found;
  corners.Read([&](const auto& reader) {
    EdgeTable<std::decay_t<decltype(reader)>> table(reader, joined, corners.Count());
    for (std::size_t place = 0; place < corners.Count(); ++place)
      table.Add(place);
    suspects = table.TakeSuspects();
    if (table.IsEmpty()) return;
    for (std::size_t place = 0; place < corners.Count(); ++place) {
      if (found.any && corners.Number(place) > corners.Number(found.place)) continue;
      const int corner = table.FirstIn(place);
      if (corner < 3) found = {true, place, corner};
    }
  });
  return found;
}

/// Returns all uses of the suspects that more than two triangles use, by the numbers of the edges.
/// Edges of one number come together.
std::vector<PlacedUse> FindCrowdedUses(const Corners& corners,
                                       const std::vector<std::uint64_t>& suspects) {
  std::vector<PlacedUse> uses;
  SeenEdges suspected(8 * suspects.size());
  for (const std::uint64_t edge : suspects)
    suspected.Take(edge);
  corners.Read([&](const auto& reader) {
    Joined none(0);
    const EdgeTable<std::decay_t<decltype(reader)>> table(reader, none, 0);
    for (std::size_t place = 0; place < corners.Count(); ++place) {
      table.EachUse(place, [&](const PlacedUse& use) {
        if (!suspected.MayHave(use.edge)) return;
        if (std::binary_search(suspects.begin(), suspects.end(), use.edge)) uses.push_back(use);
      });
    }
  });
  std::stable_sort(uses.begin(), uses.end(),
                   [](const PlacedUse& a, const PlacedUse& b) { return a.edge < b.edge; });
  std::vector<PlacedUse> crowded;
  for (auto first = uses.begin(); first != uses.end();) {
    const auto last = std::find_if(first, uses.end(),
                                   [&](const PlacedUse& use) { return use.edge != first->edge; });
    if (last - first > 2) crowded.insert(crowded.end(), first, last);
    first = last;
  }
  return crowded;
}

bool AreEqual(const Coord3& p, const Coord3& q) {
  return p.x == q.x && p.y == q.y && p.z == q.z;
}

/// Looks at every use of a wrong edge.
Solidity Describe(const Corners& corners, const WrongEdge& wrong) {
  Solidity solidity;
  solidity.hasEdge = true;
  solidity.triangle = solidity.otherTriangle = corners.Number(wrong.place);
  solidity.edgeFrom = corners.At(wrong.place, wrong.corner);
  solidity.edgeTo = corners.At(wrong.place, NextCorner(wrong.corner));
  std::size_t uses = 0;
  for (std::size_t place = 0; place < corners.Count(); ++place) {
    const Coord3 p[3] = {corners.At(place, 0), corners.At(place, 1), corners.At(place, 2)};
    if (AreEqual(p[0], p[1]) || AreEqual(p[1], p[2]) || AreEqual(p[2], p[0])) continue;
    for (int k = 0; k < 3; ++k) {
      const Coord3& from = p[k];
      const Coord3& to = p[NextCorner(k)];
      const bool isSame = AreEqual(from, solidity.edgeFrom) && AreEqual(to, solidity.edgeTo);
      const bool isOpposite = AreEqual(from, solidity.edgeTo) && AreEqual(to, solidity.edgeFrom);
      if (!isSame && !isOpposite) continue;
      ++uses;
      const std::size_t number = corners.Number(place);
      if (number == solidity.triangle) continue;
      if (solidity.otherTriangle == solidity.triangle || number < solidity.otherTriangle) {
        solidity.otherTriangle = number;
      }
    }
  }
  // An edge that two triangles use in opposite directions is not wrong.
  solidity.fault = uses == 1   ? SolidityFault::OpenEdge
                   : uses == 2 ? SolidityFault::WrongOrientation
                               : SolidityFault::NonManifoldEdge;
  return solidity;
}

/// The tetrahedra over the triangles of a surface, with one apex. The sum of their volumes, each
/// with its sign, is the volume that the surface encloses.
class Tetrahedra {
public:
  /// Requires a triangle.
  explicit Tetrahedra(const Corners& corners)
      : m_corners(corners), m_scale(LargestOf(corners)), m_isScaled(!corners.AreComfortable()),
        m_apex(At(0, 0)) {}

  SurfaceTriangle TriangleAt(std::size_t place) const {
    return {{At(place, 0), At(place, 1), At(place, 2)}};
  }

  /// Returns the sign of the sum: -1, 0 or 1.
  int VolumeSign() const {
    const Estimate volume = Estimated();
    return volume.IsCertain() ? volume.Sign() : ExactSign();
  }

private:
  static double LargestOf(const Corners& corners) {
    double largest = 0.0;
    if (corners.AreComfortable()) return largest;
    for (std::size_t place = 0; place < corners.Count(); ++place) {
      for (int k = 0; k < 3; ++k) {
        const Coord3 p = corners.At(place, k);
        largest = std::max({largest, std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
      }
    }
    return largest;
  }

  Coord3 At(std::size_t place, int corner) const {
    const Coord3 p = m_corners.At(place, corner);
    return m_isScaled ? m_scale.Down(p) : p;
  }

  /// Calls work(u, v, w) with the edges of each tetrahedron from the apex.
  template <class Work>
  void Each(const Work& work) const {
    for (std::size_t place = 0; place < m_corners.Count(); ++place) {
      const Coord3 p[3] = {At(place, 0), At(place, 1), At(place, 2)};
      work(VectorBetween{&m_apex, &p[0]}, VectorBetween{&m_apex, &p[1]},
           VectorBetween{&m_apex, &p[2]});
    }
  }

  // With n terms and u = 2^-53, a running sum is off by less than n u of the sum of magnitudes, and
  // so is the sum of magnitudes itself. A body has fewer than 2^31 triangles, so these second
  // errors are below 2^-22 of their terms; the factor 1.001 covers them.
  Estimate Estimated() const {
    double sum = 0.0;
    double magnitudes = 0.0;
    double bounds = 0.0;
    Each([&](const VectorBetween& a, const VectorBetween& b, const VectorBetween& c) {
      const Estimate volume = EstimateDeterminant(a, b, c);
      sum += volume.value;
      magnitudes += std::fabs(volume.value);
      bounds += volume.bound;
    });
    const double roundings = static_cast<double>(m_corners.Count()) * 0x1p-53 * magnitudes;
    return {sum, 1.001 * (bounds + roundings)};
  }

  int ExactSign() const {
    BigNatural positive;
    BigNatural negative;
    Each([&](const VectorBetween& a, const VectorBetween& b, const VectorBetween& c) {
      const auto volume = ExactDeterminant(a, b, c);
      if (volume.Sign() == 0) return;
      BigNatural& sum = volume.Sign() > 0 ? positive : negative;
      sum = BigNatural::Plus(sum, BigNatural::MagnitudeOf(volume));
    });
    return BigNatural::Compare(positive, negative);
  }

  const Corners& m_corners;
  RangeScale m_scale;
  bool m_isScaled;
  Coord3 m_apex;
};

std::string TextOf(const Coord3& p) {
  std::string text = "(";
  for (const double c : {p.x, p.y, p.z}) {
    char digits[32];
    const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, c + 0.0);
    if (text.size() > 1) text += ", ";
    text.append(digits, end.ptr);
  }
  return text + ")";
}

/// An edge that more than two triangles use.
struct CrowdedEdge {
  Coord3 from, to;
  std::vector<EdgeUse> uses;
  std::vector<std::uint32_t> places; ///< of the triangles, by the numbers of the uses
};

/// Returns the edges among uses of one number.
std::vector<CrowdedEdge> EdgesOf(const PlacedUse* first, const PlacedUse* last,
                                 const Tetrahedra& tetrahedra) {
  std::vector<CrowdedEdge> edges;
  for (const PlacedUse* use = first; use != last; ++use) {
    const SurfaceTriangle triangle = tetrahedra.TriangleAt(use->place);
    const int next = NextCorner(use->corner);
    const Coord3& from = triangle.corner[use->corner];
    const Coord3& to = triangle.corner[next];
    const Coord3& apex = triangle.corner[NextCorner(next)];
    const auto isBack = [&](const CrowdedEdge& edge) {
      return AreEqual(from, edge.to) && AreEqual(to, edge.from);
    };
    const auto edge = std::find_if(edges.begin(), edges.end(), [&](const CrowdedEdge& other) {
      return (AreEqual(from, other.from) && AreEqual(to, other.to)) || isBack(other);
    });
    CrowdedEdge& taken =
        edge == edges.end() ? edges.emplace_back(CrowdedEdge{from, to, {}, {}}) : *edge;
    taken.uses.push_back({apex, !isBack(taken)});
    taken.places.push_back(use->place);
  }
  return edges;
}

/// Joins the triangles at a crowded edge: by their angles around it, or all of them where a
/// triangle without area has none.
void JoinAround(const CrowdedEdge& edge, const EdgeFan& fan, Joined& joined) {
  std::vector<std::size_t> others(edge.places.size(), 0);
  if (fan.HasAngles()) {
    std::vector<std::uint32_t> sheets;
    for (const std::uint32_t place : edge.places)
      sheets.push_back(joined.Top(place));
    others = fan.Pair(sheets);
  }
  for (std::size_t k = 0; k < others.size(); ++k)
    joined.Join(edge.places[k], edge.places[others[k]]);
}

/// Joins the triangles of a surface without wrong edges again, where some edges have more than two
/// uses.
void JoinAgain(const Corners& corners, const std::vector<PlacedUse>& crowded,
               const Tetrahedra& tetrahedra, Joined& joined) {
  joined = Joined(corners.Count());
  std::vector<std::uint64_t> leftOut;
  std::vector<CrowdedEdge> edges;
  for (std::size_t first = 0; first < crowded.size();) {
    std::size_t last = first;
    while (last < crowded.size() && crowded[last].edge == crowded[first].edge)
      ++last;
    leftOut.push_back(crowded[first].edge);
    for (CrowdedEdge& edge : EdgesOf(&crowded[first], &crowded[first] + (last - first), tetrahedra))
      edges.push_back(std::move(edge));
    first = last;
  }
  corners.Read([&](const auto& reader) {
    EdgeTable<std::decay_t<decltype(reader)>> table(reader, joined, 0);
    table.LeaveOut(leftOut);
    for (std::size_t place = 0; place < corners.Count(); ++place)
      table.Add(place);
  });
  // Where there is a choice, it depends on what is joined already.
  for (const bool isCertain : {true, false}) {
    for (const CrowdedEdge& edge : edges) {
      const EdgeFan fan(edge.from, edge.to, edge.uses);
      if ((fan.IsCertain() && fan.HasAngles()) == isCertain) JoinAround(edge, fan, joined);
    }
  }
}

/// Returns the place of the lowest triangle with area of each component, by number.
std::vector<std::uint32_t> ComponentsOf(const Corners& corners, const Tetrahedra& tetrahedra,
                                        Joined& joined) {
  constexpr std::uint32_t kNone = 0xffffffffu;
  std::vector<std::uint32_t> lowest(corners.Count(), kNone);
  for (std::size_t k = 0; k < corners.Count(); ++k) {
    const auto place = static_cast<std::uint32_t>(k);
    std::uint32_t& best = lowest[joined.Top(place)];
    if (best != kNone && corners.Number(best) < corners.Number(place)) continue;
    if (tetrahedra.TriangleAt(place).HasArea()) best = place;
  }
  lowest.erase(std::remove(lowest.begin(), lowest.end(), kNone), lowest.end());
  const auto byNumber = [&corners](std::uint32_t a, std::uint32_t b) {
    return corners.Number(a) < corners.Number(b);
  };
  std::sort(lowest.begin(), lowest.end(), byNumber);
  return lowest;
}

/// Returns the places of triangles that may have copies. All edges of a copy are crowded, because
/// they have as many uses back, unless it is one side of a wall that is a component of its own.
std::vector<std::uint32_t> PlacesOfCopies(const std::vector<PlacedUse>& crowded,
                                          const std::vector<std::uint32_t>& componentOf) {
  std::vector<std::uint32_t> uses;
  uses.reserve(crowded.size());
  for (const PlacedUse& use : crowded)
    uses.push_back(use.place);
  std::sort(uses.begin(), uses.end());
  std::vector<std::uint32_t> places;
  for (std::size_t k = 2; k < uses.size(); ++k)
    if (uses[k] == uses[k - 2]) places.push_back(uses[k]);
  std::vector<std::uint32_t> sizes(componentOf.size(), 0);
  for (const std::uint32_t component : componentOf)
    ++sizes[component];
  for (std::size_t place = 0; place < componentOf.size(); ++place)
    if (sizes[componentOf[place]] == 2) places.push_back(static_cast<std::uint32_t>(place));
  std::sort(places.begin(), places.end());
  places.erase(std::unique(places.begin(), places.end()), places.end());
  return places;
}

} // namespace

SolidSurface SolidSurfaceOf(const Corners& corners) {
  SolidSurface surface;
  Joined joined(corners.Count());
  std::vector<std::uint64_t> suspects;
  const WrongEdge wrong = FindWrongEdge(corners, joined, suspects);
  if (wrong.any) {
    surface.solidity = Describe(corners, wrong);
    return surface;
  }
  surface.solidity.fault = SolidityFault::NoVolume;
  if (corners.Count() == 0) return surface;
  const Tetrahedra tetrahedra(corners);
  const int volume = tetrahedra.VolumeSign();
  if (volume == 0) return surface;
  surface.solidity.fault = volume < 0 ? SolidityFault::WrongOrientation : SolidityFault::None;
  std::vector<PlacedUse> crowded;
  if (!suspects.empty()) crowded = FindCrowdedUses(corners, suspects);
  if (!crowded.empty()) JoinAgain(corners, crowded, tetrahedra, joined);
  surface.components = ComponentsOf(corners, tetrahedra, joined);
  const std::size_t count = joined.Count();
  surface.hasFlatComponent = count > surface.components.size();
  if (count > 1) surface.componentOf = joined.Tops();
  surface.copies = FindCopies(corners, PlacesOfCopies(crowded, surface.componentOf));
  if (volume < 0) surface.solidity.triangle = corners.Number(surface.components.front());
  return surface;
}

std::string Solidity::Reason() const {
  const std::string edge = "the edge from " + TextOf(edgeFrom) + " to " + TextOf(edgeTo);
  const std::string one = "triangle " + std::to_string(triangle);
  const std::string two =
      "triangles " + std::to_string(triangle) + " and " + std::to_string(otherTriangle);
  switch (fault) {
  case SolidityFault::None:
    break;
  case SolidityFault::OpenEdge:
    return "open edge: " + one + " alone uses " + edge;
  case SolidityFault::NonManifoldEdge:
    return "non-manifold edge: three or more triangles, the first of them " +
           std::to_string(triangle) + " and " + std::to_string(otherTriangle) + ", use " + edge;
  case SolidityFault::WrongOrientation:
    if (hasEdge) return "wrong orientation: " + two + " use " + edge + " in the same direction";
    return "wrong orientation: the component of " + one + " is inside out";
  case SolidityFault::NoVolume:
    return "no volume: the triangles enclose nothing";
  }
  return {};
}

} // namespace gsl_sweep
