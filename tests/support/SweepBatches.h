#ifndef TESTS_SWEEP_BATCHES_H
#define TESTS_SWEEP_BATCHES_H

#include "BatchCases.h"
#include "InPlaneCases.h"
#include "RandomSettings.h"
#include "SweepCases.h"
#include "TestScale.h"
#include "gsl_TriTriMinDirectionalDist.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

/// Batches of the sweeps of pairs, made from the cases of the single calls: one direction, one
/// running minimum, and pairs of one family.
namespace sweep_batches {

using batch_cases::PointArray;
using gsl_batch::SweptPairs;

/// Returns how many pairs of each family to run: what GSL_SWEPT_PAIRS says, or the usual count.
inline long PairsOfAFamily(long usual) {
  const char* const asked = std::getenv("GSL_SWEPT_PAIRS");
  return asked == nullptr ? Scaled(usual) : std::atol(asked);
}

/// Corners is 3 for triangles and 2 for segments.
template <class Cases, class Case, std::size_t Corners>
struct SweepBatch {
  std::vector<Case>
      pairs; ///< the direction, the flags, the margin and the distance are the first's
  std::vector<PointArray> a, b;
  bool isSharedA = false, isSharedB = false;

  SweepBatch(Cases& cases, typename Cases::Family family, RandomNumbers& random,
             RandomSettings& settings) {
    settings.Draw();
    gsl_Util& drawn = omi_Singleton<gsl_Util>::Instance();
    if (random.Chance(0.02)) drawn.linearTolerance = -drawn.linearTolerance;
    if (random.Chance(0.02)) drawn.cosineTolerance = -drawn.cosineTolerance;
    Case first = cases.Next(family);
    settings.MakeStale(first.direction);
    pairs.push_back(first);
    Cases others(random.Next());
    others.Keep(first.direction);
    // The distance of another pair would hide what is wrong with a pair, so some batches have one
    // pair in every lane.
    const bool isOnePair = random.Chance(0.3);
    const int size = isOnePair ? 7 : random.Below(40);
    for (int k = 0; k < size; ++k)
      pairs.push_back(isOnePair ? first : others.Next(family));
    isSharedA = random.Chance(0.3);
    isSharedB = !isSharedA && random.Chance(0.1);
    const std::ptrdiff_t strides[] = {3, 9, -4};
    const std::ptrdiff_t stride = strides[random.Below(3)];
    for (std::size_t i = 0; i < Corners; ++i) {
      a.emplace_back(pairs.size(), isSharedA ? 0 : stride);
      b.emplace_back(pairs.size(), isSharedB ? 0 : 3);
    }
    for (std::size_t k = pairs.size(); k-- > 0;) {
      if (isSharedA) std::copy(first.a, first.a + Corners, pairs[k].a);
      if (isSharedB) std::copy(first.b, first.b + Corners, pairs[k].b);
      for (std::size_t i = 0; i < Corners; ++i) {
        a[i].Set(k, pairs[k].a[i].Coords());
        b[i].Set(k, pairs[k].b[i].Coords());
      }
    }
  }

  const Case& Terms() const { return pairs.front(); }

  static SweptPairs Nothing(double distance) {
    const gsl_arithmetic::Coord3 held = {numbers::kSentinel, 1.0, 2.0};
    return {distance, {held, held}, 999, false};
  }

  template <class Batch>
  Batch Arguments() const {
    const gsl_Util& settings = omi_Singleton<gsl_Util>::Instance();
    Batch batch = {};
    batch.count = pairs.size();
    for (std::size_t i = 0; i < Corners; ++i) {
      batch.a[i] = a[i].In();
      batch.b[i] = b[i].In();
    }
    batch.linearTolerance = settings.linearTolerance;
    batch.cosineTolerance = settings.cosineTolerance;
    batch.twoSided[0] = Terms().twoSided[0];
    batch.twoSided[1] = Terms().twoSided[1];
    batch.margin = Terms().margin;
    return batch;
  }

  /// Calls call(pair, contacts, distance) for one pair after the other.
  template <class Call>
  SweptPairs Loop(const Call& call) const {
    SweptPairs best = Nothing(Terms().distance);
    gsl_Point contacts[2];
    for (int side = 0; side < 2; ++side) {
      const gsl_arithmetic::Coord3& c = best.contact[side];
      contacts[side] = gsl_Point(c.x, c.y, c.z);
    }
    for (std::size_t k = 0; k < pairs.size(); ++k) {
      const cls_Uid before = contacts[0].uid = cls_Uid::AllocateUid();
      best.found |= call(pairs[k], contacts, best.distance);
      // The distance is written, even with the same number, where the contact on A is.
      if (contacts[0].uid != before) best.pair = k;
    }
    best.contact[0] = contacts[0].Coords();
    best.contact[1] = contacts[1].Coords();
    return best;
  }
};

using TriangleBatch = SweepBatch<SweepCases, SweepCase, 3>;
using SegmentBatch = SweepBatch<InPlaneCases, InPlaneCase, 2>;

inline bool Same(const gsl_arithmetic::Coord3& a, const gsl_arithmetic::Coord3& b) {
  return numbers::SameBits(a.x, b.x) && numbers::SameBits(a.y, b.y) && numbers::SameBits(a.z, b.z);
}

inline bool Same(const SweptPairs& a, const SweptPairs& b) {
  return numbers::SameBits(a.distance, b.distance) && Same(a.contact[0], b.contact[0]) &&
         Same(a.contact[1], b.contact[1]) && a.pair == b.pair && a.found == b.found;
}

inline std::string Describe(const SweptPairs& swept) {
  char text[400];
  const gsl_arithmetic::Coord3 &a = swept.contact[0], &b = swept.contact[1];
  std::snprintf(text, sizeof text,
                "found %d pair %zu distance %a\n  on A %a %a %a\n  on B %a %a %a\n", swept.found,
                swept.pair, swept.distance, a.x, a.y, a.z, b.x, b.y, b.z);
  return text;
}

/// Triangles as gsl_PrepareTriangles writes them.
class Prepared {
public:
  /// The first `skipped` are in front of those that are read.
  Prepared(const std::vector<PointArray>& corners, std::size_t count, std::size_t skipped)
      : m_count(count + skipped), m_skipped(skipped),
        m_numbers(gsl_wide::kPreparedNumbers * gsl_batch::PreparedPitch(m_count), numbers::kNaN) {
    std::vector<PointArray> moved(3, PointArray(m_count, 3));
    for (std::size_t i = 0; i < 3; ++i) {
      for (std::size_t k = 0; k < m_count; ++k)
        moved[i].Set(k, corners[i][k < skipped ? 0 : k - skipped]);
    }
    gsl_batch::PrepareTriangles(m_count, {moved[0].In(), moved[1].In(), moved[2].In()},
                                m_numbers.data());
  }

  gsl_wide::PreparedIn In(bool isShared) const {
    return {m_numbers.data() + m_skipped, gsl_batch::PreparedPitch(m_count),
            isShared ? std::size_t{0} : std::size_t{1}};
  }

private:
  std::size_t m_count, m_skipped;
  std::vector<double> m_numbers;
};

/// Sweeps one pair of triangles after the other with `sweep`.
template <class Batch, class Sweep>
SweptPairs LoopOfTriangles(const Batch& in, const Sweep& sweep) {
  const SweepCase& terms = in.Terms();
  return in.Loop([&terms, &sweep](const SweepCase& pair, gsl_Point* contacts, double& distance) {
    return sweep(terms.direction, pair.a[0], pair.a[1], pair.a[2], pair.b[0], pair.b[1], pair.b[2],
                 terms.twoSided, terms.margin, contacts, distance);
  });
}

/// Sweeps triangles by single calls and with each width, plain and prepared. Returns what differs
/// from `steps`, the documented steps, or nothing. The single call and the lanes share bounds, and
/// the steps know none.
template <class Batch, class Steps>
std::string WrongWidths(const Batch& in, std::size_t skipped, const Steps& steps) {
  const SweptPairs expected = LoopOfTriangles(in, steps);
  const SweptPairs single = LoopOfTriangles(in, gsl_TriTriMinDirectionalDist);
  if (!Same(single, expected)) {
    return "single calls " + Describe(single) + "expected " + Describe(expected);
  }
  const Prepared a(in.a, in.pairs.size(), skipped), b(in.b, in.pairs.size(), 3 * skipped);
  std::string wrong;
  for (const gsl_WideKernels* const kernels : batch_cases::AllKernels()) {
    for (const bool isPrepared : {false, true}) {
      auto batch = in.template Arguments<gsl_wide::TriangleSweepBatch>();
      if (isPrepared) {
        batch.preparedA = a.In(in.isSharedA);
        batch.preparedB = b.In(in.isSharedB);
      }
      SweptPairs best = Batch::Nothing(in.Terms().distance);
      gsl_batch::SweepTriangles(*kernels, batch, in.Terms().direction.Measured(), best);
      if (Same(best, expected)) continue;
      wrong += isPrepared ? "prepared " : "plain ";
      wrong += Describe(best) + "expected " + Describe(expected);
    }
  }
  return wrong;
}

/// Sweeps as many triangles of a family as are asked for with every width.
template <class Batch, class Cases, class Steps>
void ExpectTheLoopOfTriangles(int familyNumber, std::uint64_t seed, long usual,
                              const Steps& steps) {
  const auto family = static_cast<typename Cases::Family>(familyNumber);
  seed += static_cast<std::uint64_t>(familyNumber);
  RandomNumbers random(seed);
  Cases cases(seed);
  RandomSettings settings(seed);
  const long wanted = PairsOfAFamily(usual);
  for (long pairs = 0; pairs < wanted;) {
    const Batch in(cases, family, random, settings);
    ASSERT_EQ(WrongWidths(in, static_cast<std::size_t>(random.Below(3)), steps), "")
        << settings.Describe() << "family " << familyNumber << " after pair " << pairs;
    pairs += static_cast<long>(in.pairs.size());
  }
}

} // namespace sweep_batches

#endif
