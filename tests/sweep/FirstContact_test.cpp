#include "FirstContact.h"

#include "Bodies.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <optional>
#include <vector>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;

TEST(FirstContact, PrecedesAllIsTheOrderOfNumbers) {
  FoundPair found;
  EXPECT_FALSE(found.PrecedesAll(9, 9));
  found.any = true;
  found.moving = 5;
  found.fixed = FixedNumber(1, 7);
  EXPECT_TRUE(found.PrecedesAll(5, FixedNumber(1, 7)));
  EXPECT_TRUE(found.PrecedesAll(5, FixedNumber(2, 0)));
  EXPECT_TRUE(found.PrecedesAll(6, 0));
  EXPECT_FALSE(found.PrecedesAll(5, FixedNumber(1, 6)));
  EXPECT_FALSE(found.PrecedesAll(5, FixedNumber(0, 99)));
  EXPECT_FALSE(found.PrecedesAll(4, FixedNumber(9, 9)));
}

/// Counts the leaves that a search judges.
template <class Scalar>
struct Counting {
  static constexpr bool kFromEnd = false;
  TravelRange<Scalar> Range() const { return judgement.Range(); }
  bool IsSettled(const NodePair<Scalar>& pair) { return judgement.IsSettled(pair); }
  template <bool kMoving>
  unsigned Raise(const NodePair<Scalar>& pair, const Boxes<Scalar>& boxes, unsigned mask,
                 Four<Scalar>& from) {
    return judgement.template Raise<kMoving>(pair, boxes, mask, from);
  }
  bool Judge(const NodePair<Scalar>& pair) {
    ++judged;
    return judgement.Judge(pair);
  }
  FirstContact<Scalar>& judgement;
  std::size_t judged = 0;
};

const Coord3 kDirection{0.25, 0.5, -1.0};

struct Found {
  FoundPair best;
  std::size_t judgedLeaves = 0, judgedPairs = 0;
};

template <class Scalar>
Found Search(const Mesh& moving, const Mesh& fixed, const Coord3& vector = kDirection,
             double largest = 8.0) {
  const PreparedBody a(ViewOf(moving));
  const PreparedBody b(ViewOf(fixed));
  const SceneBodies bodies{&a, {&b}};
  const TravelDirection direction(vector);
  const RangeScale scale(largest);
  Question question;
  const Scene<Scalar> scene(bodies, direction, scale, question, true);
  LeafCache<Scalar> movingCache;
  LeafCache<Scalar> fixedCache;
  const Watch none;
  FirstContact<Scalar> first(scene, question.maxDistance, movingCache, fixedCache, none);
  Counting<Scalar> counting{first};
  std::vector<NodePair<Scalar>> stack;
  Walk<Scalar, Counting<Scalar>> walk(scene, counting, none, stack);
  EXPECT_EQ(walk.Run(), WalkEnd::Done);
  return {first.Best(), counting.judged, first.Judgements()};
}

/// Two plates face to face, so that every pair of triangles one above the other ties.
template <class Scalar>
std::size_t JudgedLeaves(const Mesh& moving, const Mesh& fixed, FoundPair& best) {
  const Found found = Search<Scalar>(moving, fixed);
  best = found.best;
  return found.judgedLeaves;
}

TEST(FirstContact, TiesAcrossAnAxisAreSettledWithoutJudgingThem) {
  const Mesh fixed = Bowl(64, 0.0);
  const Mesh moving = sweep_shapes::Moved(fixed, {0.0, 0.0, 4.0});
  FoundPair best;
  EXPECT_LT(JudgedLeaves<float>(moving, fixed, best), 30u);
  EXPECT_TRUE(best.any);
  FoundPair exact;
  EXPECT_LT(JudgedLeaves<double>(moving, fixed, exact), 30u);
  EXPECT_EQ(best.moving, exact.moving);
  EXPECT_EQ(best.fixed, exact.fixed);
  EXPECT_EQ(best.contact.travel, exact.contact.travel);
}

/// Judges every pair of triangles.
FoundPair FirstOfAll(const Mesh& moving, const Mesh& fixed, const TravelDirection& direction,
                     const RangeScale& scale = RangeScale(8.0)) {
  const auto triangle = [&](const Mesh& mesh, std::size_t k) {
    const Coord3* c = mesh.corners.data() + 3 * k;
    return MakeTriangle(direction, scale.Down(c[0]), scale.Down(c[1]), scale.Down(c[2]));
  };
  FoundPair best;
  for (std::uint32_t i = 0; i < moving.corners.size() / 3; ++i) {
    for (std::uint32_t j = 0; j < fixed.corners.size() / 3; ++j) {
      PairContact contact{};
      ExactRatio travel;
      if (JudgePair(direction, triangle(moving, i), triangle(fixed, j), Rule::Touch,
                    std::numeric_limits<double>::infinity(), contact,
                    travel) != PairOutcome::Ahead) {
        continue;
      }
      if (best.any && CompareRatios(travel, best.travel) >= 0) continue;
      best.any = true;
      best.moving = i;
      best.fixed = j;
      best.contact = contact;
      best.travel = travel;
    }
  }
  return best;
}

void ExpectSame(const FoundPair& found, const FoundPair& expected) {
  EXPECT_EQ(found.any, expected.any);
  EXPECT_EQ(found.moving, expected.moving);
  EXPECT_EQ(found.fixed, expected.fixed);
  EXPECT_EQ(found.contact.travel, expected.contact.travel);
}

/// Makes planes z = constant oblique to the axes, exactly.
Mesh Sheared(Mesh mesh) {
  for (Coord3& p : mesh.corners)
    p.z += 0.5 * p.x + 0.25 * p.y;
  return mesh;
}

/// The triangles of a mesh, `count` times over.
Mesh Repeated(const Mesh& mesh, int count) {
  Mesh repeated = mesh;
  repeated.corners.clear();
  for (std::size_t k = 0; k < mesh.corners.size(); k += 3) {
    for (int copy = 0; copy < count; ++copy) {
      repeated.corners.insert(repeated.corners.end(), mesh.corners.begin() + static_cast<long>(k),
                              mesh.corners.begin() + static_cast<long>(k) + 3);
    }
  }
  return repeated;
}

TEST(FirstContact, TiesOfWholeObliqueFacesGoToTheFirstPair) {
  const Mesh plate = Sheared(Bowl(8, 0.0));
  // The shadows of a shifted grid meet in every way: corners in faces, on edges, edges that cross.
  for (const double shift : {0.0, 0.125, 0.0625}) {
    const Mesh above = sweep_shapes::Moved(
        Sheared(sweep_shapes::Moved(Bowl(8, 0.0), {shift, 0.0, 0.0})), {0.0, 0.0, 4.0});
    for (const auto& [moving, fixed] :
         {std::pair{above, plate}, std::pair{Backwards(above), Backwards(plate)},
          std::pair{Repeated(above, 3), Backwards(Repeated(plate, 2))}}) {
      const FoundPair expected = FirstOfAll(moving, fixed, TravelDirection(kDirection));
      ASSERT_TRUE(expected.any);
      FoundPair best;
      JudgedLeaves<float>(moving, fixed, best);
      EXPECT_EQ(best.moving, expected.moving);
      EXPECT_EQ(best.fixed, expected.fixed);
      JudgedLeaves<double>(moving, fixed, best);
      EXPECT_EQ(best.moving, expected.moving);
      EXPECT_EQ(best.fixed, expected.fixed);
    }
  }
}

/// Returns a narrow triangle that leads to a point so far away.
Mesh LeadingFar(double far) {
  Mesh mesh;
  sweep_shapes::AddTriangle(mesh, {-1.0, -1.0, 0.5}, {-1.0, -0.96875, 0.5}, {0.5 * far, far, -far});
  return mesh;
}

/// A narrow triangle leads from the lower body to a point far away. The upper body is below it and
/// rises, with its whole surface under the triangle.
TEST(FirstContact, FewPairsAreJudgedBelowATriangleThatLeadsFarAway) {
  for (const double far : {1e6, 1e30}) {
    Mesh lower = Bowl(32, 0.25);
    sweep_shapes::Append(lower, LeadingFar(far));
    const Mesh upper = sweep_shapes::Moved(Bowl(32, -0.25), {1.0, 2.0, -4.0});
    for (const bool moves : {false, true}) {
      const Mesh& moving = moves ? lower : upper;
      const Mesh& fixed = moves ? upper : lower;
      const Coord3 vector =
          moves ? kDirection : Coord3{-kDirection.x, -kDirection.y, -kDirection.z};
      const TravelDirection direction(vector);
      const FoundPair expected = FirstOfAll(moving, fixed, direction, RangeScale(far));
      ASSERT_TRUE(expected.any);
      EXPECT_EQ(moves ? expected.moving : expected.fixed, 2048u);
      for (const Found& found : {Search<float>(moving, fixed, vector, far),
                                 Search<double>(moving, fixed, vector, far)}) {
        ExpectSame(found.best, expected);
        EXPECT_LT(found.judgedLeaves, 30u);
        EXPECT_LE(found.judgedPairs, far == 1e6 ? 1u : 3u);
      }
    }
  }
}

TEST(FirstContact, IsTheFirstByNumberOfTiesWithATriangleThatLeadsFarAway) {
  // The plate is parallel to the triangles, so that it meets them everywhere at once.
  Mesh fans;
  for (const double y : {-0.5, 0.0, 0.0, 0.25})
    sweep_shapes::AddTriangle(fans, {-2.0, y, 0.5}, {-2.0, y + 0.0625, 0.5}, {1e9, y, 0.5});
  const Mesh plate = sweep_shapes::Moved(Bowl(16, 0.0), {-1.0, -2.0, 4.5});
  for (const Mesh& moving : {plate, Backwards(plate), FromBothEnds(plate)}) {
    for (const Mesh& fixed : {fans, Backwards(fans)}) {
      const FoundPair expected =
          FirstOfAll(moving, fixed, TravelDirection(kDirection), RangeScale(1e9));
      ASSERT_TRUE(expected.any);
      ExpectSame(Search<float>(moving, fixed, kDirection, 1e9).best, expected);
      ExpectSame(Search<double>(moving, fixed, kDirection, 1e9).best, expected);
    }
  }
}

TEST(FirstContact, IsFoundBesideTrianglesFarLargerThanTheOthers) {
  for (unsigned seed = 0; seed < 12; ++seed) {
    SCOPED_TRACE(seed);
    const double far = seed % 3 == 0 ? 1e30 : 1e6;
    Mesh moving = sweep_shapes::Moved(Soup(seed + 50, 200), {0.0, 0.0, 4.0});
    Mesh fixed = Soup(seed, 200);
    Mesh& mesh = seed % 2 == 0 ? fixed : moving;
    mesh.corners[3] = {far, 2.0 * far, seed % 4 < 2 ? -far : far};
    mesh.corners[100] = {-far, 0.0, 0.5 * far};
    const RangeScale scale(4.0 * far);
    const FoundPair expected = FirstOfAll(moving, fixed, TravelDirection(kDirection), scale);
    if (!expected.any) continue;
    ExpectSame(Search<float>(moving, fixed, kDirection, 4.0 * far).best, expected);
    ExpectSame(Search<double>(moving, fixed, kDirection, 4.0 * far).best, expected);
  }
}

/// What a far larger triangle has passed already is left out without exact judgements.
TEST(FirstContact, NoPairsAreJudgedAheadOfATriangleThatLeadsFarAway) {
  // The plane of the triangle is below the whole bowl, which rises.
  const Mesh bowl = sweep_shapes::Moved(Bowl(32, -0.25), {0.0, 0.0, 4.0});
  Mesh below = sweep_shapes::Moved(Bowl(4, 0.0), {0.0, 0.0, 40.0});
  sweep_shapes::AddTriangle(below, {-4.0, -4.0, -2.0}, {1e6, 1e6, 1e6}, {4.0, -4.0, -2.5});
  const TravelDirection up({0.0, 0.0, 1.0});
  const FoundPair expected = FirstOfAll(bowl, below, up, RangeScale(1e6));
  ASSERT_TRUE(expected.any);
  for (const Found& found : {Search<float>(bowl, below, {0.0, 0.0, 1.0}, 1e6),
                             Search<double>(bowl, below, {0.0, 0.0, 1.0}, 1e6)}) {
    ExpectSame(found.best, expected);
    EXPECT_LT(found.judgedPairs, 60u);
  }
}

/// Filters are left out where rounding is not relative, and the answer is the same.
TEST(FirstContact, IsFoundAtEveryScaleBesideATriangleThatLeadsFarAway) {
  Mesh lower = Bowl(8, 0.25);
  sweep_shapes::Append(lower, LeadingFar(0x1p20));
  const Mesh upper = sweep_shapes::Moved(Bowl(8, -0.25), {1.0, 2.0, -4.0});
  Question question;
  question.direction = {-kDirection.x, -kDirection.y, -kDirection.z};
  const auto scaled = [](Mesh mesh, int exponent) {
    for (Coord3& p : mesh.corners)
      p = {std::ldexp(p.x, exponent), std::ldexp(p.y, exponent), std::ldexp(p.z, exponent)};
    return mesh;
  };
  const sweep_ask::Answer plain = sweep_ask::PairOf(upper, lower).First(question);
  ASSERT_EQ(plain.status, SweepStatus::Contact);
  for (const int exponent : {-950, -500, -200, -90, 90, 110, 300, 500, 1000}) {
    const sweep_ask::Answer answer =
        sweep_ask::PairOf(scaled(upper, exponent), scaled(lower, exponent)).First(question);
    EXPECT_EQ(answer.status, plain.status);
    EXPECT_EQ(answer.contact.travel, std::ldexp(plain.contact.travel, exponent)) << exponent;
    EXPECT_EQ(answer.contact.movingTriangle, plain.contact.movingTriangle) << exponent;
    EXPECT_EQ(answer.contact.fixedTriangle, plain.contact.fixedTriangle) << exponent;
  }
}

TEST(FirstContact, IsFoundBesideATriangleThatLeadsToTheEndOfTheRange) {
  Question question;
  question.direction = {-kDirection.x, -kDirection.y, -kDirection.z};
  const Mesh upper = sweep_shapes::Moved(Bowl(8, -0.25), {1.0, 2.0, -4.0});
  for (const double far : {1e36, 1e39, 1e80, 1e150, 1e300}) {
    Mesh lower = Bowl(8, 0.25);
    sweep_shapes::Append(lower, LeadingFar(far));
    const FoundPair expected =
        FirstOfAll(upper, lower, TravelDirection(question.direction), RangeScale(far));
    const sweep_ask::Answer answer = sweep_ask::PairOf(upper, lower).First(question);
    ASSERT_EQ(answer.status == SweepStatus::Contact, expected.any) << far;
    if (!expected.any) continue;
    EXPECT_EQ(answer.contact.movingTriangle, expected.moving) << far;
    EXPECT_EQ(answer.contact.fixedTriangle, expected.fixed & 0xffffffffu) << far;
    EXPECT_EQ(answer.contact.travel, RangeScale(far).UpTravel(expected.contact.travel)) << far;
  }
}

Question AboutSolids() {
  Question question;
  question.rule = Rule::Solid;
  return question;
}

/// A search for the first contact along -z, of solids unless it is asked otherwise, whose own watch
/// is counted, and ends it at a given call. The walk has no watch.
template <class Scalar>
struct SolidSearch {
  SolidSearch(const Mesh& moving, const std::vector<Mesh>& fixed, int endsAt = 0,
              const Question& question = AboutSolids())
      : watch([this, endsAt](double) { return ++calls != endsAt; }), movingBody(ViewOf(moving)) {
    bodies.moving = &movingBody;
    for (const Mesh& mesh : fixed) {
      fixedBodies.push_back(std::make_unique<PreparedBody>(ViewOf(mesh)));
      bodies.fixed.push_back(fixedBodies.back().get());
    }
    scene.emplace(bodies, direction, scale, question, true);
    first.emplace(*scene, question.maxDistance, movingCache, fixedCache, watch);
  }

  WalkEnd Run() {
    const Watch none;
    return Walk<Scalar, FirstContact<Scalar>>(*scene, *first, none, stack).Run();
  }
  /// Judges the pair of the moving body and a fixed body, which have one leaf each.
  bool JudgeBody(std::size_t fixedBody, const Slab& movingSlab = {}) {
    const auto sideOf = [](const TreeInUse<Scalar>& used) {
      WalkSide<Scalar> side{};
      side.ref = used.tree->root;
      side.least = used.tree->least;
      side.box = used.tree->box;
      return side;
    };
    NodePair<Scalar> pair{};
    pair.moving = sideOf(scene->template TreeOf<true>(0));
    pair.fixed = sideOf(scene->template TreeOf<false>(fixedBody));
    pair.fixedBody = static_cast<std::uint32_t>(fixedBody);
    pair.moving.slab = movingSlab;
    EXPECT_TRUE(pair.moving.ref.IsLeaf() && pair.fixed.ref.IsLeaf());
    return first->Judge(pair);
  }
  double Travel() const { return scale.UpTravel(first->Best().contact.travel); }

  int calls = 0;
  Watch watch;
  PreparedBody movingBody;
  std::vector<std::unique_ptr<PreparedBody>> fixedBodies;
  SceneBodies bodies{};
  TravelDirection direction{{0.0, 0.0, -1.0}};
  RangeScale scale{16.0};
  LeafCache<Scalar> movingCache, fixedCache;
  std::vector<NodePair<Scalar>> stack;
  std::optional<Scene<Scalar>> scene;
  std::optional<FirstContact<Scalar>> first;
};

TEST(FirstContact, ASecondWalkKeepsTheTravelOfTheFirst) {
  const double farther = -0x1p-52;
  const std::vector<Mesh> fixed{Sheet(0, 4), Sheet(farther, 4), Sheet(0, 4), Sheet(-1, 4)};
  const auto begun = [&] {
    auto search = std::make_unique<SolidSearch<double>>(TurnedOver(Sheet(1, 1)), fixed);
    EXPECT_TRUE(search->JudgeBody(0));
    EXPECT_EQ(search->Travel(), 1.0);
    search->first->BeginAgain();
    EXPECT_FALSE(search->first->Best().any);
    return search;
  };
  const auto bodyOf = [](const SolidSearch<double>& search) {
    EXPECT_TRUE(search.first->Best().any);
    EXPECT_EQ(search.Travel(), 1.0);
    return search.first->Best().fixed >> 32;
  };
  const auto nothing = begun();
  nothing->first->KeepTravel();
  EXPECT_EQ(bodyOf(*nothing), 0u);
  // A pair farther by a unit in the last place is within the limit, which is rounded.
  const auto later = begun();
  EXPECT_TRUE(later->JudgeBody(1));
  ASSERT_TRUE(later->first->Best().any);
  EXPECT_EQ(later->Travel(), 1.0 + 0x1p-52);
  later->first->KeepTravel();
  EXPECT_EQ(bodyOf(*later), 0u);
  const auto same = begun();
  EXPECT_TRUE(same->JudgeBody(2));
  same->first->KeepTravel();
  EXPECT_EQ(bodyOf(*same), 2u);
  const auto beyond = begun();
  EXPECT_TRUE(beyond->JudgeBody(3));
  EXPECT_FALSE(beyond->first->Best().any);
}

TEST(FirstContact, TiesAreCountedAnewAtALesserTravel) {
  // The plates are oblique, so that no axis settles them. The last one has seven of the triangles
  // that tie, and one that is higher beside the moving plate.
  const Mesh plate = Sheared(Bowl(2, 0.0));
  const Mesh nearer = sweep_shapes::Moved(plate, {0.0, 0.0, 1.0});
  Mesh last = nearer;
  last.corners.resize(21);
  sweep_shapes::AddTriangle(last, {1.25, 0.0, 2.5}, {1.5, 0.0, 2.75}, {1.25, 0.5, 2.5});
  SolidSearch<float> search(sweep_shapes::Moved(plate, {0.0, 0.0, 4.0}), {plate, nearer, last}, 0,
                            Question());
  EXPECT_EQ(search.first->Judgements(), 0u);
  EXPECT_TRUE(search.JudgeBody(0));
  EXPECT_EQ(search.Travel(), 4.0);
  EXPECT_TRUE(search.JudgeBody(1));
  EXPECT_EQ(search.Travel(), 3.0);
  const std::size_t judged = search.first->Judgements();
  EXPECT_GT(judged, 10u);
  // The plane of the ties at travel 3 holds whatever the moving plate can meet.
  EXPECT_TRUE(search.JudgeBody(2));
  EXPECT_EQ(search.first->Judgements(), judged);
  EXPECT_EQ(search.first->Best().fixed >> 32, 1u);
}

TEST(FirstContact, AnOffsetMovesABodyOutOfItsSlab) {
  // The slab is 12 above the fixed plate, farther than the greatest distance.
  const Mesh plate = Bowl(2, 0.0);
  Question question;
  question.offset = {0.0, 0.0, -10.0};
  question.maxDistance = 8.0;
  SolidSearch<float> search(sweep_shapes::Moved(plate, {0.0, 0.0, 14.0}),
                            {sweep_shapes::Moved(plate, {0.0, 0.0, 2.0})}, 0, question);
  EXPECT_TRUE(search.JudgeBody(0, {{0.0f, 0.0f, 1.0f}, 14.0f, 14.0f}));
  ASSERT_TRUE(search.first->Best().any);
  EXPECT_EQ(search.Travel(), 2.0);
}

TEST(FirstContact, ALookAtManyTrianglesOfOnePlaceCanBeCancelled) {
  const Mesh walls = ManyWalls(5000);
  for (const double top : {1.0, 0.0}) {
    const std::vector<Mesh> fixed{sweep_shapes::Box({-4, -4, -1}, {4, 4, top})};
    // At travel 0 each pair is looked at while it is judged, else the best pair in the end.
    SolidSearch<float> whole(walls, fixed);
    EXPECT_EQ(whole.Run(), WalkEnd::Done);
    EXPECT_FALSE(whole.first->IsBestTurnedOver());
    EXPECT_FALSE(whole.first->IsCancelled());
    EXPECT_EQ(whole.first->Best().moving, 0u);
    ASSERT_GT(whole.calls, 3);
    for (int endsAt = 1; endsAt <= whole.calls; ++endsAt) {
      SolidSearch<float> cut(walls, fixed, endsAt);
      const bool isStopped = cut.Run() == WalkEnd::Stopped;
      EXPECT_EQ(isStopped, cut.first->IsCancelled());
      EXPECT_TRUE(top == 1.0 || !isStopped);
      if (!isStopped) cut.first->IsBestTurnedOver();
      EXPECT_TRUE(cut.first->IsCancelled());
      EXPECT_EQ(cut.calls, endsAt);
    }
  }
}

/// Returns how often the watch is called while the first contact of a body that rests on a table is
/// searched, which is once for so many nodes.
int CallsAtRest(const Mesh& body) {
  SolidSearch<float> search(body, {sweep_shapes::Box({-8, -8, -9}, {8, 8, -1})});
  EXPECT_EQ(search.Run(), WalkEnd::Done);
  EXPECT_FALSE(search.first->IsBestTurnedOver());
  EXPECT_TRUE(search.first->Best().any);
  EXPECT_EQ(search.first->Best().contact.travel, 0.0);
  return search.calls;
}

TEST(FirstContact, ARestingFanIsLookedAtWhereItsTrianglesAreFew) {
  // On its tip, and flat on the table. At the tip a look meets 5000 leaves.
  for (const double bottom : {-1.0, 0.0}) {
    const Mesh body = sweep_shapes::Moved(DoubleCone(40000, 2, bottom), {0, 0, -1 - bottom});
    EXPECT_LT(CallsAtRest(body), 3) << bottom;
    EXPECT_LT(CallsAtRest(Backwards(body)), 3) << bottom;
  }
}

/// Counts the pairs of triangles that meet, and looks at every pair of leaves.
struct MeetingPairs {
  static constexpr bool kFromEnd = false;
  TravelRange<float> Range() const { return {0.0f, Box<float>::kFar}; }
  bool IsSettled(const NodePair<float>&) { return false; }
  bool Judge(const NodePair<float>& pair) {
    const LeafTriangles<float>& a = moving.Moving(scene, pair.moving.ref.Index());
    const LeafTriangles<float>& b = fixed.Fixed(scene, pair.fixedBody, pair.fixed.ref.Index());
    for (int i = 0; i < a.count; ++i) {
      for (int j = 0; j < b.count; ++j) {
        PairContact contact{};
        ExactRatio travel;
        const PairOutcome outcome =
            JudgePair(scene.direction, Corners(a, i), Corners(b, j), Rule::Touch,
                      std::numeric_limits<double>::infinity(), contact, travel);
        count += outcome == PairOutcome::Apart ? 0 : 1;
      }
    }
    return true;
  }
  Triangle Corners(const LeafTriangles<float>& leaf, int k) const {
    return MakeTriangle(scene.direction, leaf.Corner(k, 0), leaf.Corner(k, 1), leaf.Corner(k, 2));
  }

  const Scene<float>& scene;
  LeafCache<float> moving, fixed;
  std::size_t count = 0;
};

TEST(Walk, SeesEveryPairWhenItGoesOnWithFineTrees) {
  // Of some sizes the walk has many leaves before it when it changes its trees.
  for (int size = 30; size < 38; ++size) {
    SCOPED_TRACE(size);
    const Mesh bowl = Bowl(size, 0.3);
    const Mesh above = sweep_shapes::Moved(bowl, {0.013, -0.021, 2.0});
    std::size_t counts[3];
    for (const int body : {0, 1, 2}) {
      const PreparedBody a(ViewOf(above));
      const PreparedBody b(ViewOf(bowl));
      // One of the bodies gets a fine tree in the middle of the walk.
      if (body == 1) a.CountVisits(1000000);
      if (body == 2) b.CountVisits(1000000);
      const SceneBodies bodies{&a, {&b}};
      const TravelDirection direction({0.25, 0.125, -1.0});
      const RangeScale scale(1.0);
      const Scene<float> scene(bodies, direction, scale, Question(), true);
      MeetingPairs meeting{scene, {}, {}};
      std::vector<NodePair<float>> stack;
      const Watch none;
      Walk<float, MeetingPairs> walk(scene, meeting, none, stack);
      EXPECT_EQ(walk.Run(), WalkEnd::Done);
      EXPECT_EQ(a.FineIfMade() != nullptr, body == 1);
      EXPECT_EQ(b.FineIfMade() != nullptr, body == 2);
      counts[body] = meeting.count;
    }
    EXPECT_GT(counts[0], 1000u);
    EXPECT_EQ(counts[1], counts[0]);
    EXPECT_EQ(counts[2], counts[0]);
  }
}

TEST(Walk, SeesEveryPairOfSeveralBodiesWhenItGoesOnWithFineTrees) {
  // The walk comes to the bowl first, which is the second body. The first body is one leaf.
  for (int size = 30; size < 34; ++size) {
    SCOPED_TRACE(size);
    const Mesh bowl = Bowl(size, 0.3);
    const Mesh above = sweep_shapes::Moved(bowl, {0.013, -0.021, 2.0});
    Mesh floor;
    sweep_shapes::AddQuad(floor, {-1, -1, -2}, {1, -1, -2}, {1, 1, -2}, {-1, 1, -2});
    std::size_t counts[3];
    for (const int body : {0, 1, 2}) {
      const PreparedBody a(ViewOf(above));
      const PreparedBody b(ViewOf(floor));
      const PreparedBody c(ViewOf(bowl));
      if (body == 1) a.CountVisits(1000000);
      if (body == 2) c.CountVisits(1000000);
      const SceneBodies bodies{&a, {&b, &c}};
      const TravelDirection direction({0.25, 0.125, -1.0});
      const RangeScale scale(1.0);
      const Scene<float> scene(bodies, direction, scale, Question(), true);
      MeetingPairs meeting{scene, {}, {}};
      std::vector<NodePair<float>> stack;
      const Watch none;
      Walk<float, MeetingPairs> walk(scene, meeting, none, stack);
      EXPECT_EQ(walk.Run(), WalkEnd::Done);
      EXPECT_EQ(a.FineIfMade() != nullptr, body == 1);
      EXPECT_EQ(c.FineIfMade() != nullptr, body == 2);
      counts[body] = meeting.count;
    }
    EXPECT_GT(counts[0], 1000u);
    EXPECT_EQ(counts[1], counts[0]);
    EXPECT_EQ(counts[2], counts[0]);
  }
}

/// Takes every pair of leaves, which costs so many visits.
struct AllLeaves {
  static constexpr bool kFromEnd = false;
  TravelRange<float> Range() const { return {0.0f, 16.0f}; }
  bool IsSettled(const NodePair<float>&) const { return false; }
  bool Judge(const NodePair<float>&) {
    ++judged;
    return true;
  }
  std::size_t ExtraVisits() const { return cost * judged; }

  std::size_t cost = 0, judged = 0;
};

/// A walk of a surface down to its copy, with the calls of its watch.
struct WatchedWalk {
  WatchedWalk(int size, std::size_t cost, Rule rule)
      : fixed(ViewOf(Bowl(size, 0.3))),
        moving(ViewOf(sweep_shapes::Moved(Bowl(size, 0.3), {0.0, 0.0, 2.0}))) {
    const SceneBodies bodies{&moving, {&fixed}};
    const TravelDirection direction({0.25, 0.125, -1.0});
    const RangeScale scale(1.0);
    Question question;
    question.rule = rule;
    const Scene<float> scene(bodies, direction, scale, question, true);
    AllLeaves leaves;
    leaves.cost = cost;
    std::vector<NodePair<float>> stack;
    const Watch watch = [this](double) { return ++calls > 0; };
    Walk<float, AllLeaves> walk(scene, leaves, watch, stack);
    EXPECT_EQ(walk.Run(), WalkEnd::Done);
    judged = leaves.judged;
  }

  PreparedBody fixed, moving;
  std::size_t calls = 0, judged = 0;
};

TEST(Walk, CallsTheWatchForWhatItsPairsCost) {
  // A call comes after 1024 visits, so after 11 pairs of leaves of 100 each. The visits of the walk
  // itself are far fewer.
  const WatchedWalk free(20, 0, Rule::Touch);
  const WatchedWalk costly(20, 100, Rule::Touch);
  EXPECT_EQ(costly.judged, free.judged);
  EXPECT_EQ(costly.calls - free.calls, costly.judged / 11);
}

TEST(Walk, MakesWhatItDeserves) {
  // A call comes for 1024 visits. Slabs are made after 5000.
  const WatchedWalk brief(30, 0, Rule::Solid);
  ASSERT_GE(brief.calls, 1u);
  ASSERT_LE(brief.calls, 4u);
  EXPECT_EQ(brief.moving.SlabsIfMade(), nullptr);
  EXPECT_EQ(brief.fixed.SlabsIfMade(), nullptr);
  EXPECT_NE(brief.moving.FacingsIfMade(), nullptr);
  EXPECT_NE(brief.fixed.FacingsIfMade(), nullptr);
  const WatchedWalk longer(60, 0, Rule::Touch);
  ASSERT_GE(longer.calls, 5u);
  EXPECT_NE(longer.moving.SlabsIfMade(), nullptr);
  EXPECT_NE(longer.fixed.SlabsIfMade(), nullptr);
  EXPECT_EQ(longer.moving.FacingsIfMade(), nullptr);
}

TEST(FirstContact, APairOfBoxesIsSettledWhereAnAxisKeepsItApartForAsLong) {
  // A corner falls on a floor from a height of 4.
  Mesh moving, fixed;
  sweep_shapes::AddTriangle(moving, {0, 0, 4}, {1, 0, 5}, {0, 1, 5});
  sweep_shapes::AddTriangle(fixed, {-8, -8, 0}, {8, -8, 0}, {0, 8, 0});
  const PreparedBody a(ViewOf(moving));
  const PreparedBody b(ViewOf(fixed));
  const SceneBodies bodies{&a, {&b}};
  const TravelDirection direction({0.25, 0.5, -0.75}); // 4 / (3 / 4) is no double
  const RangeScale scale(8.0);
  const Scene<double> scene(bodies, direction, scale, Question(), true);
  const auto isSettled = [&](double height, double width) {
    LeafCache<double> caches[2];
    const Watch none;
    FirstContact<double> first(scene, std::numeric_limits<double>::infinity(), caches[0], caches[1],
                               none);
    NodePair<double> pair{};
    pair.moving = {a.DoubleTree().root, 0, a.DoubleTree().box, {}};
    pair.fixed = {b.DoubleTree().root, 0, b.DoubleTree().box, {}};
    EXPECT_FALSE(first.IsSettled(pair));
    EXPECT_TRUE(first.Judge(pair));
    EXPECT_TRUE(first.Best().any);
    pair.moving.box = {{0, 0, height}, {width, width, 5}};
    pair.from = scene.WalkTravel(first.Best().travel.rounded.hi);
    return first.IsSettled(pair);
  };
  EXPECT_TRUE(isSettled(4.0, 1.0));
  EXPECT_TRUE(isSettled(std::nextafter(4.0, 5.0), 1.0));
  EXPECT_TRUE(isSettled(4.0 + 0x1p-40, 1.0));
  EXPECT_FALSE(isSettled(std::nextafter(4.0, 0.0), 1.0));
  EXPECT_FALSE(isSettled(4.0 - 0x1p-40, 1.0));
}

} // namespace
