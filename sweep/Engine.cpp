#include "Engine.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <string>

namespace gsl_sweep {

namespace {

bool IsFinite(const Coord3& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

double Largest(const Coord3& p) {
  return std::max({std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
}

/// Returns true when each component is zero or has a magnitude from `least` to `most`.
bool IsWithin(const Coord3& p, double least, double most) {
  for (const double c : {p.x, p.y, p.z}) {
    const double magnitude = std::fabs(c);
    if (magnitude != 0.0 && !(magnitude >= least && magnitude <= most)) return false;
  }
  return true;
}

/// Returns the bounds of a body moved by an offset. They are exact, because rounding keeps order.
Box<double> ShiftedBounds(const PreparedBody& body, const Coord3& offset) {
  Box<double> bounds = body.Bounds();
  const double o[3] = {offset.x, offset.y, offset.z};
  for (int k = 0; k < 3; ++k) {
    bounds.low[k] += o[k];
    bounds.high[k] += o[k];
  }
  return bounds;
}

double LargestOf(const Box<double>& bounds) {
  double largest = 0.0;
  for (int k = 0; k < 3; ++k)
    largest = std::max({largest, std::fabs(bounds.low[k]), std::fabs(bounds.high[k])});
  return largest;
}

/// Returns the largest magnitude of a coordinate, or 0 for empty bodies.
double LargestOfScene(const SceneBodies& bodies, const Coord3& offset) {
  double largest = 0.0;
  if (!bodies.moving->IsEmpty()) largest = LargestOf(ShiftedBounds(*bodies.moving, offset));
  for (const PreparedBody* body : bodies.fixed) {
    if (!body->IsEmpty()) largest = std::max(largest, LargestOf(body->Bounds()));
  }
  return largest;
}

/// Returns true when rounding to single precision would be coarse for a body: its distance from the
/// origin is more than 2^14 times its size. Up to that distance the boxes of whole bodies are exact
/// to a thousandth.
bool IsFar(const Box<double>& bounds) {
  return LargestOf(bounds) > 0x1p14 * bounds.Size();
}

/// Returns true when every product of the filters stays in the range in which rounding is relative,
/// in the coordinates of the bodies. An offset makes numbers that are whole multiples of 2^-152 at
/// least.
bool AreComfortable(const SceneBodies& bodies, const Question& question) {
  const auto isComfortable = [](const PreparedBody* body) { return body->IsComfortable(); };
  return bodies.moving->IsComfortable() &&
         std::all_of(bodies.fixed.begin(), bodies.fixed.end(), isComfortable) &&
         IsWithin(question.offset, 0x1p-100, 0x1p120) && question.clearance <= 0x1p119;
}

/// Returns true when the products of the filters stay in that range in the coordinates of the
/// kernel. These are below 1, and those other than zero are at least 2^-230, so their differences
/// are at least 2^-283. The smallest product has three differences and a component of the
/// direction: at least 2^-910.
bool AreComfortableInKernel(const SceneBodies& bodies, const Question& question,
                            const RangeScale& scale) {
  const double least = std::ldexp(0x1p-230, scale.Exponent());
  const auto isAbove = [least](const PreparedBody* body) {
    return body->LeastMagnitude() >= least;
  };
  return isAbove(bodies.moving) && std::all_of(bodies.fixed.begin(), bodies.fixed.end(), isAbove) &&
         IsWithin(question.offset, least, std::numeric_limits<double>::infinity());
}

bool CanUseSingle(const SceneBodies& bodies, const Question& question) {
  const bool hasOffset = Largest(question.offset) != 0.0;
  if ((hasOffset || !bodies.moving->Triangles().IsSingle()) && !bodies.moving->IsEmpty() &&
      IsFar(ShiftedBounds(*bodies.moving, question.offset))) {
    return false;
  }
  return std::none_of(bodies.fixed.begin(), bodies.fixed.end(), [](const PreparedBody* body) {
    return !body->Triangles().IsSingle() && !body->IsEmpty() && IsFar(body->Bounds());
  });
}

template <class Scalar>
void WriteContact(const Scene<Scalar>& scene, const FoundTriangles& found,
                  const PairContact& contact, Contact& told) {
  told.travel = scene.scale.UpTravel(contact.travel);
  told.kind = contact.kind;
  told.movingTriangle = found.moving;
  told.fixedBody = static_cast<std::size_t>(found.fixed >> 32);
  told.fixedTriangle = static_cast<std::size_t>(found.fixed & 0xffffffffu);
  told.movingPoint = scene.scale.UpPoint(contact.onMoving);
  told.fixedPoint = scene.scale.UpPoint(contact.onFixed);
  told.hasNormal = ContactNormal(scene.direction, found.movingTriangle, found.fixedTriangle,
                                 contact, told.normal);
}

/// Returns the first contact of a pair that touches at the start or ahead.
PairContact FirstContactOf(const TravelDirection& direction, const FoundTriangles& found,
                           bool isStart) {
  ContactInterval interval{};
  FindContactInterval(direction, found.movingTriangle, found.fixedTriangle, interval);
  return isStart ? ContactAtStart(interval) : interval.first;
}

/// Returns the triangle with its facing along a direction.
Triangle Facing(const TravelDirection& direction, const Triangle& t) {
  return MakeTriangle(direction, t.corner[0], t.corner[1], t.corner[2]);
}

/// Answers for solids whose interiors overlap at the start, or when it is cancelled. Returns false
/// when they do not overlap.
template <class Scalar>
bool OverlapAtStart(const Scene<Scalar>& scene, const Question& question, const Watch& watch,
                    SolidsAtRest& rest, Answer& answer) {
  if (!rest.IsOf(scene.bodies, question.offset)) {
    SolidStart<Scalar> solids(scene, watch);
    const SolidState state = solids.Run();
    const FoundTriangles& first = solids.Best();
    rest = {false, scene.bodies, question.offset, state, first, solids.Inside()};
    rest.isKnown = rest.state != SolidState::Cancelled;
  }
  if (rest.state == SolidState::Apart) return false;
  if (rest.state == SolidState::Cancelled) {
    answer = Answer();
    return true;
  }
  answer.status = SweepStatus::Start;
  if (rest.state == SolidState::Inside) {
    answer.contact = rest.inside;
    return true;
  }
  FoundTriangles found = rest.first;
  found.movingTriangle = Facing(scene.direction, found.movingTriangle);
  found.fixedTriangle = Facing(scene.direction, found.fixedTriangle);
  WriteContact(scene, found, FirstContactOf(scene.direction, found, true), answer.contact);
  answer.contact.overlapsAtStart = true;
  return true;
}

/// Returns a watch to which the part that is done, which is kept in `done`, never decreases, though
/// a walk may begin again.
Watch Rising(const Watch& watch, double& done) {
  if (!watch) return {};
  return [&watch, &done](double part) { return watch(done = std::max(done, part)); };
}

/// Walks to the first contact, and again where it is of two triangles of solids that are turned
/// over.
template <class Scalar>
WalkEnd WalkToFirst(const Scene<Scalar>& scene, const Watch& watch, Workspace<Scalar>& workspace,
                    FirstContact<Scalar>& first) {
  const auto walk = [&] {
    workspace.movingLeaves.Forget();
    workspace.fixedLeaves.Forget();
    const WalkEnd end =
        Walk<Scalar, FirstContact<Scalar>>(scene, first, watch, workspace.stack).Run();
    return first.IsCancelled() ? WalkEnd::Cancelled : end;
  };
  const WalkEnd end = walk();
  if (end != WalkEnd::Done) return end;
  const bool isTurnedOver = first.IsBestTurnedOver();
  if (first.IsCancelled()) return WalkEnd::Cancelled;
  if (!isTurnedOver) return end;
  first.BeginAgain();
  const WalkEnd again = walk();
  if (again == WalkEnd::Done) first.KeepTravel();
  return again;
}

/// `found` receives the pair.
template <class Scalar>
Answer SearchFirst(const Scene<Scalar>& scene, const Question& question, const Watch& watch,
                   Workspace<Scalar>& workspace, FoundPair& found) {
  Answer answer;
  answer.unitDirection = scene.direction.Unit();
  if (scene.rule == Rule::Solid &&
      OverlapAtStart(scene, question, watch, workspace.solids, answer)) {
    return answer;
  }
  double done = 0.0;
  const Watch rising = Rising(watch, done);
  FirstContact<Scalar> first(scene, question.maxDistance, workspace.movingLeaves,
                             workspace.fixedLeaves, rising);
  const WalkEnd end = WalkToFirst(scene, rising, workspace, first);
  if (end == WalkEnd::Cancelled) return {};
  answer.status = SweepStatus::None;
  if (end == WalkEnd::Stopped) {
    StartSearch<Scalar> start(scene, workspace.movingLeaves, workspace.fixedLeaves, watch,
                              workspace.stack);
    if (start.Run() == WalkEnd::Cancelled) return {};
    found = start.Best();
    answer.status = SweepStatus::Start;
    WriteContact(scene, found, FirstContactOf(scene.direction, found, true), answer.contact);
  } else if (first.Best().any) {
    found = first.Best();
    // Solids can begin to overlap at once.
    const bool isAtStart = found.travel.numerator.Sign() == 0;
    answer.status = isAtStart ? SweepStatus::Start : SweepStatus::Contact;
    WriteContact(scene, found, found.contact, answer.contact);
  }
  return answer;
}

/// Returns a bound of the errors of an answer about a clearance: four units in the last place of
/// the largest coordinate or of the travel.
double ClearanceError(double largest, double travel) {
  int exponent = 0;
  std::frexp(std::max(largest, travel), &exponent);
  return 4.0 * std::max(std::ldexp(1.0, exponent - 53), std::numeric_limits<double>::denorm_min());
}

/// Returns how the pair is within the clearance at the start.
template <class Scalar>
PairContact WithinAtStart(const Scene<Scalar>& scene, const FoundPair& found) {
  PairContact unused{};
  ExactRatio unusedTravel;
  const PairOutcome outcome = JudgePair(scene.direction, found.movingTriangle, found.fixedTriangle,
                                        Rule::Touch, 0.0, unused, unusedTravel);
  return outcome == PairOutcome::Touching
             ? FirstContactOf(scene.direction, found, true)
             : ClosestAtRest(scene.direction, found.movingTriangle, found.fixedTriangle);
}

/// Finds the first contact of the bodies of a question with a clearance, without it. Where there is
/// one, the bodies come within the clearance at its travel or before it. `multiple` receives that
/// travel, or infinity; WalkEnd::Stopped means contact at the start.
template <class Scalar>
WalkEnd TouchBefore(const Scene<Scalar>& scene, const Question& question, const Watch& watch,
                    Workspace<Scalar>& workspace, double& multiple) {
  workspace.movingLeaves.Forget();
  workspace.fixedLeaves.Forget();
  Question touching = question;
  touching.clearance = 0.0;
  const Scene<Scalar> bare(scene.bodies, scene.direction, scene.scale, touching, scene.filters,
                           scene.team);
  FirstContact<Scalar> first(bare, question.maxDistance, workspace.movingLeaves,
                             workspace.fixedLeaves, watch);
  Walk<Scalar, FirstContact<Scalar>> walk(bare, first, watch, workspace.stack);
  const WalkEnd end = walk.Run();
  multiple = first.Best().any ? Enlarged(first.Best().travel.rounded.hi)
                              : std::numeric_limits<double>::infinity();
  return end;
}

template <class Scalar>
Answer SearchClearance(const Scene<Scalar>& scene, const Question& question, const Watch& watch,
                       Workspace<Scalar>& workspace) {
  double done = 0.0;
  const Watch rising = Rising(watch, done);
  const auto walk = [&](ClearanceSearch<Scalar>& judgement) {
    workspace.movingLeaves.Forget();
    workspace.fixedLeaves.Forget();
    return Walk<Scalar, ClearanceSearch<Scalar>>(scene, judgement, rising, workspace.stack).Run();
  };
  ClearanceSearch<Scalar> search(scene, question.maxDistance, workspace.movingLeaves,
                                 workspace.fixedLeaves);
  WalkEnd end = walk(search);
  if (search.WantsLimit()) {
    double touching = 0.0;
    end = TouchBefore(scene, question, rising, workspace, touching);
    search.Lower(touching);
    if (end == WalkEnd::Done) end = walk(search);
  }
  if (end == WalkEnd::Cancelled) return {};
  Answer answer;
  answer.unitDirection = scene.direction.Unit();
  answer.status = SweepStatus::None;
  answer.isExact = false;
  FoundPair found;
  if (end == WalkEnd::Stopped) {
    workspace.movingLeaves.Forget();
    workspace.fixedLeaves.Forget();
    StartSearch<Scalar> start(scene, workspace.movingLeaves, workspace.fixedLeaves, rising,
                              workspace.stack);
    if (start.Run() == WalkEnd::Cancelled) return {};
    found = start.Best();
    found.contact = WithinAtStart(scene, found);
  } else {
    found = search.Finish();
  }
  if (!found.any) return answer;
  answer.status = end == WalkEnd::Stopped ? SweepStatus::Start : SweepStatus::Contact;
  WriteContact(scene, found, found.contact, answer.contact);
  answer.errorBound =
      ClearanceError(LargestOfScene(scene.bodies, question.offset), answer.contact.travel);
  return answer;
}

template <class Scalar>
Answer SearchLast(const Scene<Scalar>& scene, const Question& question, const Watch& watch,
                  Workspace<Scalar>& workspace) {
  workspace.movingLeaves.Forget();
  workspace.fixedLeaves.Forget();
  LastContact<Scalar> last(scene, question.maxDistance, workspace.movingLeaves,
                           workspace.fixedLeaves);
  Walk<Scalar, LastContact<Scalar>> walk(scene, last, watch, workspace.stack);
  if (walk.Run() == WalkEnd::Cancelled) return {};
  Answer answer;
  answer.unitDirection = scene.direction.Unit();
  answer.status = SweepStatus::None;
  const FoundPair& found = last.Best();
  if (!found.any) return answer;
  const PairContact contact =
      last.IsCut() ? ContactAtCut(scene.direction, found.movingTriangle, found.fixedTriangle,
                                  scene.scale.DownLength(question.maxDistance))
                   : found.contact;
  WriteContact(scene, found, contact, answer.contact);
  // Adding zero turns a negative zero into a positive one.
  if (last.IsCut()) answer.contact.travel = question.maxDistance + 0.0;
  const bool isStart = last.IsCut() ? question.maxDistance == 0.0 : contact.travel == 0.0;
  answer.status = isStart ? SweepStatus::Start : SweepStatus::Contact;
  return answer;
}

/// Returns a watch of one of two halves of the work.
Watch HalfOf(const Watch& watch, double from) {
  if (!watch) return {};
  return [&watch, from](double part) { return watch(from + 0.5 * part); };
}

template <class Scalar>
PatchSummary SearchPatch(const Scene<Scalar>& scene, const Question& question, Contact* out,
                         std::size_t capacity, const Watch& watch, Workspace<Scalar>& workspace) {
  PatchSummary summary;
  FoundPair first;
  summary.first = SearchFirst(scene, question, HalfOf(watch, 0.0), workspace, first);
  if (!first.any) return summary;
  const bool isStart = summary.first.status == SweepStatus::Start;
  PatchSearch<Scalar> patch(scene, first, isStart, capacity, workspace.movingLeaves,
                            workspace.fixedLeaves);
  const Watch secondHalf = HalfOf(watch, 0.5);
  Walk<Scalar, PatchSearch<Scalar>> walk(scene, patch, secondHalf, workspace.stack);
  if (walk.Run() == WalkEnd::Cancelled) return {};
  summary.pairCount = patch.Count();
  summary.low = scene.scale.UpPoint(patch.Points().low);
  summary.high = scene.scale.UpPoint(patch.Points().high);
  for (const FoundTriangles& pair : patch.Kept()) {
    WriteContact(scene, pair, FirstContactOf(scene.direction, pair, isStart), *out);
    // Equal travels of other numbers may be rounded to another double.
    out++->travel = summary.first.contact.travel;
  }
  return summary;
}

template <class Scalar>
Workspace<Scalar>& Need(std::unique_ptr<Workspace<Scalar>>& workspace) {
  if (!workspace) workspace = std::make_unique<Workspace<Scalar>>();
  return *workspace;
}

TravelDirection DirectionOf(const Question& question) {
  return TravelDirection(RangeScale(Largest(question.direction)).Down(question.direction));
}

/// Counts the triangles that face as `refused` says.
std::size_t CountFacing(const PreparedBody& body, const TravelDirection& direction,
                        const Placement<double>& placement, int refused) {
  const Corners& corners = body.Triangles();
  std::size_t count = 0;
  for (std::size_t place = 0; place < corners.Count(); ++place) {
    const Triangle triangle =
        MakeTriangle(direction, placement.At(corners.At(place, 0)),
                     placement.At(corners.At(place, 1)), placement.At(corners.At(place, 2)));
    if (triangle.facing == refused) ++count;
  }
  return count;
}

/// Calls `work` with the bodies and the question. Where an offset takes corners out of the range of
/// double, the moving body is passed without them.
template <class Work>
auto WithFiniteOffset(const SceneBodies& bodies, const Question& question, const Work& work) {
  const bool isFinite = bodies.moving->IsEmpty() ||
                        std::isfinite(LargestOf(ShiftedBounds(*bodies.moving, question.offset)));
  if (isFinite) return work(bodies, question);
  // Without the triangles beyond the range the body would not be closed.
  if (question.rule == Rule::Solid) {
    throw std::overflow_error("the offset moves the solid beyond the range of double");
  }
  const PreparedBody moved(*bodies.moving, ShiftedVertices(*bodies.moving, question.offset));
  SceneBodies movedBodies = bodies;
  movedBodies.moving = &moved;
  Question movedQuestion = question;
  movedQuestion.offset = {0.0, 0.0, 0.0};
  return work(movedBodies, movedQuestion);
}

/// Returns the question with a clearance that suits the size of the bodies. Bodies of coordinates
/// up to L are never more than 3.5 L apart, so a clearance of 4 L decides as a greater one does,
/// which would leave few bits of the coordinates.
Question WithFittingClearance(const Question& question, double largest) {
  Question fitting = question;
  if (largest > 0.0) fitting.clearance = std::min(question.clearance, 4.0 * largest);
  return fitting;
}

/// Calls `work` with the scene of a question, the question and a workspace.
template <class Work>
auto WithScene(const SceneBodies& bodies, const Question& question, Workspaces& workspaces,
               const Work& work) {
  Team& team = workspaces.team != nullptr ? *workspaces.team : Team::Alone();
  return WithFiniteOffset(bodies, question, [&](const SceneBodies& finite, const Question& any) {
    const TravelDirection direction = DirectionOf(any);
    const double largest = LargestOfScene(finite, any.offset);
    const Question asked = WithFittingClearance(any, largest);
    const RangeScale scale(std::max(largest, asked.clearance));
    const bool isAlongEnough = IsWithin(direction.Vector(), 0x1p-60, 1.0);
    if (isAlongEnough && AreComfortable(finite, asked) && CanUseSingle(finite, asked)) {
      const Scene<float> scene(finite, direction, scale, asked, true, team);
      return work(scene, asked, Need(workspaces.single));
    }
    const bool canFilter = isAlongEnough && AreComfortableInKernel(finite, asked, scale);
    const Scene<double> scene(finite, direction, scale, asked, canFilter, team);
    return work(scene, asked, Need(workspaces.forDouble));
  });
}

} // namespace

bool SolidsAtRest::IsOf(const SceneBodies& asked, const Coord3& askedOffset) const {
  return isKnown && bodies.moving == asked.moving && bodies.fixed == asked.fixed &&
         offset.x == askedOffset.x && offset.y == askedOffset.y && offset.z == askedOffset.z;
}

void RequireQuestion(const Question& question) {
  if (!IsFinite(question.direction) || Largest(question.direction) == 0.0) {
    throw std::invalid_argument("the direction must be finite and not zero");
  }
  if (!IsFinite(question.offset)) throw std::invalid_argument("the offset must be finite");
  if (!(question.maxDistance >= 0.0)) {
    throw std::invalid_argument("the greatest distance must be at least 0");
  }
  if (!(question.clearance >= 0.0) || !std::isfinite(question.clearance)) {
    throw std::invalid_argument("the clearance must be finite and at least 0");
  }
  if (question.clearance != 0.0 && question.rule != Rule::Touch) {
    throw std::invalid_argument("a clearance is for Rule::Touch, not for the other rules");
  }
}

std::vector<const PreparedBody*> AllBodies(const SceneBodies& bodies) {
  std::vector<const PreparedBody*> all = bodies.fixed;
  all.push_back(bodies.moving);
  std::sort(all.begin(), all.end(), std::less<>());
  all.erase(std::unique(all.begin(), all.end()), all.end());
  return all;
}

void DecideSolids(const std::vector<const PreparedBody*>& bodies, Team& team) {
  if (team.IsAlone()) return; // each is decided when it is needed
  std::vector<const PreparedBody*> undecided;
  std::copy_if(bodies.begin(), bodies.end(), std::back_inserter(undecided),
               [](const PreparedBody* body) { return !body->IsDecided(); });
  team.ForEach(undecided.size(), [&](std::size_t k) { undecided[k]->AsSolid(); });
}

void RequireSolids(const SceneBodies& bodies, const Question& question) {
  if (question.rule != Rule::Solid) return;
  const auto require = [](const PreparedBody& body, const std::string& name) {
    const Solidity& solidity = body.AsSolid();
    if (!solidity) throw std::invalid_argument(name + " is not a solid: " + solidity.Reason());
  };
  require(*bodies.moving, "the moving body");
  for (std::size_t k = 0; k < bodies.fixed.size(); ++k)
    require(*bodies.fixed[k], "fixed body " + std::to_string(k));
}

Answer AnswerQuestion(const SceneBodies& bodies, const Question& question, const Watch& watch,
                      Workspaces& workspaces) {
  return WithScene(bodies, question, workspaces,
                   [&](const auto& scene, const Question& asked, auto& workspace) {
                     if (asked.clearance > 0.0)
                       return SearchClearance(scene, asked, watch, workspace);
                     FoundPair unused;
                     return SearchFirst(scene, asked, watch, workspace, unused);
                   });
}

Answer AnswerLast(const SceneBodies& bodies, const Question& question, const Watch& watch,
                  Workspaces& workspaces) {
  return WithScene(bodies, question, workspaces,
                   [&](const auto& scene, const Question& asked, auto& workspace) {
                     return SearchLast(scene, asked, watch, workspace);
                   });
}

PatchSummary AnswerPatch(const SceneBodies& bodies, const Question& question, Contact* out,
                         std::size_t capacity, const Watch& watch, Workspaces& workspaces) {
  return WithScene(bodies, question, workspaces,
                   [&](const auto& scene, const Question& asked, auto& workspace) {
                     return SearchPatch(scene, asked, out, capacity, watch, workspace);
                   });
}

LeftOut CountLeftOut(const SceneBodies& bodies, const Question& question) {
  if (!question.oneSided || question.rule == Rule::Solid) return {};
  return WithFiniteOffset(bodies, question, [](const SceneBodies& finite, const Question& asked) {
    const TravelDirection direction = DirectionOf(asked);
    const RangeScale scale(LargestOfScene(finite, asked.offset));
    LeftOut count;
    count.moving =
        CountFacing(*finite.moving, direction, Placement<double>(asked.offset, scale), -1);
    for (const PreparedBody* body : finite.fixed) {
      count.fixed += CountFacing(*body, direction, Placement<double>({0.0, 0.0, 0.0}, scale), 1);
    }
    return count;
  });
}

} // namespace gsl_sweep
