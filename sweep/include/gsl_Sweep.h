#ifndef GSL_SWEEP_H
#define GSL_SWEEP_H

#include "gsl_Arithmetic.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

class gsl_Matrix;

#if defined(__GNUC__)
#define GSL_SWEEP_API __attribute__((visibility("default")))
#else
#define GSL_SWEEP_API
#endif

/// Finds the first and the last contact of bodies, one of which travels along a direction, and all
/// pairs of triangles that touch at the first. The decision is exact. Bodies are prepared once and
/// can be asked any number of times.
///
/// Units      travel and points have the units of the vertices.
/// Decision   exact: whether there is a contact, whether there is one at the start, and which comes
///            first. A coordinate below 2^-288 times the largest is first rounded to a multiple of
///            2^-339 times the largest; so is a component of the direction.
/// Ties       among exactly equal travels: the lowest moving triangle, then the lowest fixed
///            triangle, then the first kind in the order of ContactKind. The same order holds among
///            pairs that touch at the start.
/// Same bits  for any number of threads, any executor, any order of questions and any compiler.
/// Degenerate triangles count as the segments or points that they are.
/// NaN        triangles with a NaN or infinite corner are skipped; Body::SkippedCount counts them.
/// Threads    any threads may call every const member at once.
namespace gsl_sweep {

using gsl_arithmetic::Coord3;

/// Triangles in the caller's memory, which is read during construction of a body only.
struct TriangleView {
  const double* vertices = nullptr; ///< x, y, z of each vertex in turn
  std::size_t vertexCount = 0;      ///< vertices, of three numbers each
  /// Three numbers of vertices for each triangle. If null, each three vertices in turn are a
  /// triangle.
  const std::uint32_t* corners = nullptr;
  std::size_t triangleCount = 0; ///< with null corners a third of vertexCount
};

/// What keeps triangles from being the surface of a solid.
enum class SolidityFault : unsigned char {
  None,
  OpenEdge,         ///< one triangle alone uses the edge
  NonManifoldEdge,  ///< three or more use it, and not as often in one direction as in the other
  WrongOrientation, ///< two use it in the same direction, or a whole component is inside out
  NoVolume          ///< the surface is closed and encloses a volume of zero, or no triangle counts
};

/// Whether triangles are the surface of a solid: closed, with every edge used as often in one
/// direction as in the other, with a positive volume, and with no component that is inside out. A
/// component is inside out when the surface winds the wrong way around points beside it; a cavity
/// within a solid is not.
///
/// Vertices   equal coordinates are one vertex; -0.0 equals 0.0. A vertex inside an edge does not
///            divide the edge.
/// Solids     may have cavities, and components that touch or overlap each other. Triangles that
///            are joined by edges form one component. At an edge of more than two triangles, those
///            are joined that bound the same part of the solid.
/// Degenerate A triangle with two equal corners counts as absent. Any other triangle counts with
///            its three edges, so a triangle of no area closes the gap where a vertex is inside an
///            edge.
/// NaN        triangles that the body skips count as absent.
/// Limits     A surface that crosses itself, an inside-out component that crosses another, and one
///            at a common edge that triangles without area use too, may not be noticed. The
///            questions of Rule::Solid then have no meaning. Crossings finds surfaces that cross
///            elsewhere than in common corners and edges.
struct GSL_SWEEP_API Solidity {
  SolidityFault fault = SolidityFault::None; ///< None for a solid
  bool hasEdge = false; ///< false when the fault is of a component or of the whole
  /// With an edge: the lowest triangle at a wrong edge, and the next triangle that uses that edge,
  /// or the same for an open edge. Without: the first triangle with area of the component that is
  /// inside out, and 0.
  std::size_t triangle = 0, otherTriangle = 0;
  Coord3 edgeFrom{0.0, 0.0, 0.0}, edgeTo{0.0, 0.0, 0.0}; ///< in the direction of `triangle`

  /// Returns whether the triangles are the surface of a solid.
  explicit operator bool() const { return fault == SolidityFault::None; }
  /// Returns the fault in words, in one line; empty for a solid.
  std::string Reason() const;
};

class PreparedBody;
struct Crossing;
struct PairState;
struct Run;

/// Triangles that are prepared for questions. A body is immutable, and copies share their contents.
class GSL_SWEEP_API Body {
public:
  /// Triangles keep their order and their numbers.
  ///
  /// Errors     std::invalid_argument for a corner that is not the number of a vertex (the text
  ///            names the first) and for counts that do not fit; std::length_error for more than
  ///            2^31 - 1 triangles; std::bad_alloc, as from every member that makes or asks.
  explicit Body(const TriangleView& view);
  /// Does the same on the threads of `run`, or with its executor. The constructor above uses as
  /// many threads as there are processors. The calling thread alone copies fewer than 2^17
  /// triangles, unless there is an executor. `progress` is not called.
  ///
  /// Errors     the same, and what the executor throws.
  Body(const TriangleView& view, const Run& run);
  ~Body();
  Body(const Body&);
  Body& operator=(const Body&);
  Body(Body&&) noexcept;
  Body& operator=(Body&&) noexcept;

  /// Returns the body made thicker by e > 0, or thinner by e < 0. Each corner is moved so that the
  /// planes of the triangles around it move by e along their normals. Where they cannot all do so,
  /// the squares of the differences from e are least, each weighed by the angle of its triangle at
  /// the corner; among several places the nearest is taken.
  ///
  /// Corners    equal coordinates are one corner; -0.0 equals 0.0.
  /// Accuracy   the places are rounded. A corner of a box along the axes gets each coordinate
  ///            plus or minus e, rounded once. A corner does not move in a direction that lowers
  ///            the mean square of the differences by less than 1e-8 of e squared. `deviation`,
  ///            unless null, receives the greatest difference between e and the travel of a plane
  ///            at one of its corners.
  /// Degenerate A triangle without area has no plane, and follows its corners. So does a sliver,
  ///            unless a corner has slivers alone: a triangle whose height is at most 2^-22 of its
  ///            longest edge, or, if all its coordinates are numbers in single precision, of its
  ///            largest coordinate. It is not part of the deviation.
  /// Numbers    of triangles stay, and SkippedCount.
  /// Errors     std::invalid_argument for an infinite or NaN e, and when a triangle that is not a
  ///            sliver turns over, loses its area, or turns around in its plane, as all do in a
  ///            body that is turned inside out, or when one leaves the range of double; the text
  ///            names the first. Surfaces that cross each other are not noticed.
  Body Grown(double e, double* deviation = nullptr) const;

  /// Returns the body with every corner exactly where gsl_Matrix::Transform puts it. The
  /// preparation is used again. Any affine matrix is accepted; a mirroring matrix turns the
  /// triangles over.
  Body Moved(const gsl_Matrix& matrix) const;

  /// Returns the number of triangles, skipped triangles included.
  std::size_t TriangleCount() const;
  /// Returns the number of triangles with a NaN or infinite corner.
  std::size_t SkippedCount() const;
  /// Writes the least and the greatest coordinates of the finite triangles. Writes zeros for a
  /// body without finite triangles. The first call prepares part of the body, as MemoryBytes does.
  void GetBounds(Coord3& low, Coord3& high) const;
  /// Writes x, y, z of the three corners of each triangle, nine numbers for each of TriangleCount()
  /// triangles. Those of a triangle that the body skips are NaN.
  void GetTriangles(double* corners) const;
  /// Returns whether the triangles are the surface of a solid. The decision is exact, and the first
  /// call makes it for all copies.
  Solidity IsSolid() const;
  /// Returns the bytes that the body holds at present. The first question increases it.
  std::size_t MemoryBytes() const;

private:
  friend class Pair;
  friend std::size_t Crossings(const Body& body, Crossing* out, std::size_t capacity,
                               const Run& run);
  explicit Body(std::shared_ptr<const PreparedBody> prepared);

  std::shared_ptr<const PreparedBody> m_prepared;
};

/// The features that meet, the moving body's first. Overlap means that no pair of features can be
/// named: the triangles share a point, but their contact began earlier and ends later. This happens
/// at the start and where a last contact is cut at the greatest distance.
enum class ContactKind : unsigned char {
  VertexVertex,
  VertexEdge,
  EdgeVertex,
  VertexFace,
  FaceVertex,
  EdgeEdge,
  Overlap,
  /// Under Rule::Solid: a component of one body is inside another body before any travel, and their
  /// surfaces do not touch. The triangle of the component is its first; the other triangle is 0.
  Inside
};

/// What became of a question.
enum class SweepStatus : unsigned char {
  Contact,  ///< they touch after a positive travel
  Start,    ///< they touch before any travel; under Rule::Solid, see there
  None,     ///< no contact at or after the start, or none within the greatest distance
  Cancelled ///< the question was not answered
};

/// Which pairs of triangles count. A pair touches during one closed interval of travel.
enum class Rule : unsigned char {
  Touch, ///< every pair
  /// Every pair except those whose interval ends at travel zero exactly, so that a body may leave
  /// what it touches at the start. Where closed bodies press into each other right after the start,
  /// some pair counts. Open surfaces that lie face to face may pass through each other.
  NotLeaving,
  /// The bodies are solids, and their interiors must stay disjoint. The contact is at the greatest
  /// travel T such that they are disjoint at every travel from 0 to T. Surfaces may touch and
  /// slide: only a face that faces along the direction can meet a face that faces against it, and
  /// their shadows along the direction must share area. The status is Start when the interiors
  /// overlap at travel 0 or at every small positive travel; see Contact::overlapsAtStart.
  ///
  /// Errors   std::invalid_argument for a body that is not a solid, see Body::IsSolid, and for a
  ///          question about the last contact or a patch.
  /// Walls    of zero thickness, which are two faces of one body that coincide with nothing inside
  ///          them, count as material. A body that only touches such a wall, face to face, overlaps
  ///          it. Where the wall lies in other faces of its body, it changes nothing.
  /// Limits   A cavity must not touch a face of its own body from inside, at a point inside that
  ///          face. This is not checked, and the answer for such a body is not specified.
  ///          Rounding, in a file or by an offset, can turn a thin triangle over. Within the plane
  ///          of its neighbours, which then cover it, that changes nothing. Beside an edge between
  ///          two planes the surface then has a notch or a burr as small as the rounding. Where the
  ///          other body touches it, the bodies may be reported to overlap at the start.
  ///          A wall that lies partly in other faces of its body and reaches out of them may not be
  ///          noticed where all corners of what it shares with the other body lie in these faces.
  ///          The same holds for triangles of one body that cover each other in one plane, where
  ///          each is turned over in a part of it alone.
  /// oneSided is ignored.
  Solid
};

/// One question about a pair: a direction, and how far and by which rule it is asked.
struct Question {
  Coord3 direction{0.0, 0.0, 0.0}; ///< any length but zero; finite
  /// The offset is added to each corner of the moving body, and each sum is rounded once. It must
  /// be finite.
  Coord3 offset{0.0, 0.0, 0.0};
  /// The greatest travel must be at least 0. A contact at exactly this travel counts. The exact
  /// travel is compared, and the answer holds the rounded travel. So a question that takes a
  /// reported travel as its maxDistance may find no contact.
  double maxDistance = std::numeric_limits<double>::infinity();
  /// A one-sided question leaves out triangles of the moving body whose normal points against the
  /// direction, and of the fixed body whose normal points along it. Edge-on and degenerate
  /// triangles point neither way and stay.
  bool oneSided = false;
  Rule rule = Rule::Touch; ///< which pairs of triangles count
  /// With a positive clearance the contact is at the least travel at which the distance between the
  /// bodies is at most the clearance. Its pair of triangles is one at that distance. The status is
  /// Start when the distance is at most the clearance before any travel. Surfaces count: a body
  /// that is wholly inside another is as far from it as their surfaces are.
  ///
  /// Decision   exact: whether there is such a travel, and whether it is zero. The travel is a root
  ///            of a quadratic, which is rounded; see Answer::isExact.
  /// Kind       the features that are closest. Where two pairs of features are, the first kind.
  /// Ties       among travels that are equal when rounded. At the start: the lowest triangles that
  ///            are within the clearance.
  /// maxDistance is compared with the rounded travel.
  /// Cost       many pairs whose distance becomes the clearance at the same travel, up to rounding,
  ///            can take tens or hundreds of microseconds each; progress is called meanwhile.
  /// Errors     std::invalid_argument for a negative, infinite or NaN clearance, for one with a
  ///            rule other than Touch, and for a question about the last contact or a patch.
  double clearance = 0.0;
};

/// Where two bodies meet.
struct Contact {
  double travel = 0.0;                     ///< along the direction, in the units of the vertices
  ContactKind kind = ContactKind::Overlap; ///< which features meet
  /// Set under Rule::Solid when the interiors overlap before any travel. The pair is then the first
  /// in which one triangle, from a point inside the other, reaches its inner side, or in which both
  /// share area in one plane and face the same way. If there is no such pair, it is the first pair
  /// that touches and has the other body just under one of its triangles.
  bool overlapsAtStart = false;
  /// Set for Inside when the component is of the moving body.
  bool movingIsInside = false;
  std::size_t fixedBody = 0;                         ///< in the order of the pair
  std::size_t movingTriangle = 0, fixedTriangle = 0; ///< numbers in their bodies
  Coord3 movingPoint{0.0, 0.0, 0.0};                 ///< with the offset, before the travel
  Coord3 fixedPoint{0.0, 0.0, 0.0};                  ///< where the fixed body is met
  /// The normal of the plane in which the features meet, of length one. It is set only where they
  /// define such a plane. Its product with the direction, whose components below 2^-288 of the
  /// largest are rounded, is negative without rounding: where the rounding of the components of the
  /// normal would turn it across the direction, one of them is moved by up to 2^-52.
  bool hasNormal = false;
  Coord3 normal{0.0, 0.0, 0.0}; ///< zeros without a normal
};

/// The answer to one question.
struct Answer {
  SweepStatus status = SweepStatus::Cancelled; ///< what was found
  Coord3 unitDirection{0.0, 0.0, 0.0}; ///< rounded from twice the precision; zero when cancelled
  Contact contact;                     ///< set for Contact and Start only
  /// False for a question with a clearance that is answered; a cancelled answer says nothing and
  /// leaves it true. The travel, and each coordinate of the two points, then
  /// differ from their true values by at most `errorBound`.
  bool isExact = true;
  /// Four units in the last place of the largest coordinate of the bodies, with the offset, or of
  /// the travel where it is larger. It is 0 when the answer is exact or there is no contact.
  double errorBound = 0.0;
};

/// All pairs that touch at the first contact.
struct PatchSummary {
  Answer first;              ///< as Pair::First returns it
  std::size_t pairCount = 0; ///< 0 unless the status of `first` is Contact or Start
  /// The box around all points of the fixed bodies at which the pairs touch, up to the rounding of
  /// its coordinates; zeros without a pair. Where the insides of two triangles cross at the start,
  /// the common part of their own boxes is in it.
  Coord3 low{0.0, 0.0, 0.0}, high{0.0, 0.0, 0.0};
};

/// Runs job(0) to job(count - 1), each once, on any threads, and returns when all have returned. A
/// job does not throw, does not call the executor, and does not wait for a job that has not begun.
/// So one thread is enough. While a thread waits in the executor, it may run any other job, also a
/// question about the same bodies.
///
/// Errors     what the executor throws reaches the caller. No job may run afterwards. A
///            std::bad_alloc counts as memory that runs short; where that only costs time, the
///            answer is given.
using Executor =
    std::function<void(std::size_t count, const std::function<void(std::size_t)>& job)>;

/// How work is run. These settings never change an answer.
struct Run {
  /// 0 means as many threads as there are processors. It is ignored when `executor` is set.
  unsigned threads = 0;
  /// Receives the part done, from 0 to 1, which never decreases; returning false cancels. Calls
  /// never overlap, but they may come from any working thread. What it throws cancels too, and
  /// reaches the caller. It must not wait for the executor.
  std::function<bool(double)> progress;
  Executor executor; ///< runs the jobs in place of threads of this library
};

/// Two triangles of one body that cross.
struct Crossing {
  std::size_t first = 0, second = 0; ///< numbers in the body, the lower first
};

/// Finds the pairs of triangles of a body that share a point other than a common corner or a point
/// of a common edge. Where components touch or overlap, as those of a solid may, they have some.
/// Writes the first `capacity` of them, by the lower number and then the other, and returns the
/// number of all, which is 0 when it is cancelled.
///
/// Decision   exact, as for Pair. Triangles that only touch count too.
/// Corners    with equal coordinates are common; -0.0 equals 0.0. Triangles with the same three
///            corners count.
/// Degenerate A triangle without area has no crossings. It may be what joins two edges of which
///            the one is a part of the other.
/// NaN        triangles that the body skips count as absent.
/// Run        the first call prepares part of the body, which cannot be cancelled. The threads of
///            `run` share this work; an executor gets no part of it.
std::size_t GSL_SWEEP_API Crossings(const Body& body, Crossing* out, std::size_t capacity,
                                    const Run& run = {});

/// The numbers of triangles that a one-sided question leaves out.
struct LeftOut {
  std::size_t moving = 0, fixed = 0; ///< of the moving body and of the fixed bodies
};

/// A moving body and fixed bodies. The answer is the same as if the triangles of all fixed bodies,
/// in order, were one body.
///
/// Errors     std::invalid_argument for a direction that is zero or not finite, for an offset that
///            is not finite, for a maxDistance that is negative or NaN, and for what Rule::Solid
///            and Question::clearance refuse. In a batch the text names the question, and no
///            question is answered. std::overflow_error for a travel or a point beyond the range of
///            double. In a batch every other question is answered first. The text names the first
///            such question, whose answer is Cancelled. std::bad_alloc, unless what lacks memory
///            only saves time. The answers of a batch that were not reached are then Cancelled, and
///            the pair can be asked again.
/// C++ move   After a move from a pair, it can only be assigned to or destroyed.
class GSL_SWEEP_API Pair {
public:
  /// Prepares the bodies that are not prepared yet, as `run` says. The threads of `run` share a
  /// large body; an executor gets whole bodies. If that is cancelled, the first question prepares
  /// the rest.
  Pair(Body moving, std::vector<Body> fixed, const Run& run = {});

  /// Returns the first contact.
  Answer First(const Question& question, const Run& run = {}) const;

  /// Answers `count` questions in parallel. An answer that is not reached is Cancelled.
  void First(const Question* questions, std::size_t count, Answer* answers,
             const Run& run = {}) const;

  /// Returns one answer for each fixed body, as if it were alone with the moving body.
  /// The text of std::overflow_error names the fixed body.
  std::vector<Answer> FirstOfEach(const Question& question, const Run& run = {}) const;

  /// Returns the last contact: the greatest travel from 0 to maxDistance at which a pair that
  /// counts touches. After it no pair touches up to maxDistance. The status is Start when that
  /// travel is 0, and None when no pair touches in that range.
  ///
  /// Ties       as for the first contact, among the features that meet last.
  /// Cut        where pairs touch at maxDistance, that is the travel, and these pairs tie. If the
  ///            contact of the first of them neither begins nor ends there, the kind is Overlap.
  Answer Last(const Question& question, const Run& run = {}) const;

  /// Answers `count` questions in the same way, in parallel.
  void Last(const Question* questions, std::size_t count, Answer* answers,
            const Run& run = {}) const;

  /// Finds all pairs that count and touch at the travel of the first contact, or at the start, by
  /// moving triangle, fixed body and fixed triangle. Writes the first `capacity` of them and
  /// returns the number of all, which is 0 when there is no contact and when it is cancelled.
  ///
  /// Contacts   each has the travel of the first contact, and of the features of its pair that meet
  ///            there, those that First would name.
  /// Memory     about 400 bytes for each contact that is written; none for a pair that is counted.
  /// Errors     as for First. What `out` holds then is not specified.
  std::size_t Patch(const Question& question, Contact* out, std::size_t capacity,
                    const Run& run = {}) const;

  /// Does the same, and describes all pairs together.
  PatchSummary FindPatch(const Question& question, Contact* out, std::size_t capacity,
                         const Run& run = {}) const;

  /// Counts by looking at every triangle. A question that is not one-sided leaves nothing out.
  LeftOut CountLeftOut(const Question& question) const;

private:
  std::shared_ptr<PairState> m_state;
};

} // namespace gsl_sweep

#endif
