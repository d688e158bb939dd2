#ifndef GSL_SWEEP_H
#define GSL_SWEEP_H

#include "gsl_Arithmetic.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <vector>

class gsl_Matrix;

#if defined(__GNUC__)
#define GSL_SWEEP_API __attribute__((visibility("default")))
#else
#define GSL_SWEEP_API
#endif

/// The first contact of bodies, one of which travels along a direction: decided exactly, prepared
/// once, asked as often as is wanted.
///
/// Units      travel and points are in those of the vertices.
/// Decision   exact: whether there is a contact, whether there is one at the start, which comes
///            first. Coordinates below 2^-288 of the largest, and such components of the direction,
///            are rounded to 2^-339 of it.
/// Ties       of exactly equal travels: the first moving triangle, then the first fixed one, then
///            the first kind; of pairs that touch at the start, the first in that order.
/// Same bits  for any number of threads, any executor, any order of questions and any compiler.
/// Degenerate triangles are the segments or points that they are.
/// NaN        Triangles with a NaN or infinite corner take no part; a body counts them.
/// Threads    every const member may be called from any threads at once.
namespace gsl_sweep {

using gsl_arithmetic::Coord3;

/// Triangles in the caller's memory, which is read during construction of a body only.
struct TriangleView {
  const double* vertices = nullptr; ///< x, y, z of one after the other
  std::size_t vertexCount = 0;
  const std::uint32_t* corners = nullptr; ///< three a triangle; null: every three vertices are one
  std::size_t triangleCount = 0;          ///< with null corners a third of vertexCount
};

class PreparedBody;
struct PairState;

/// Triangles, ready to be asked about. Immutable; copies share what they hold.
class GSL_SWEEP_API Body {
public:
  /// Triangles keep their order and their numbers.
  ///
  /// Errors     std::invalid_argument for a corner that is not the number of a vertex (names the
  ///            first) and for counts that do not fit; std::length_error for more than 2^31 - 1
  ///            triangles.
  explicit Body(const TriangleView& view);
  ~Body();
  Body(const Body&);
  Body& operator=(const Body&);
  Body(Body&&) noexcept;
  Body& operator=(Body&&) noexcept;

  /// The body with every corner exactly where gsl_Matrix::Transform puts it. What was prepared is
  /// used again. Any affine matrix is taken; one that mirrors turns the triangles over.
  Body Moved(const gsl_Matrix& matrix) const;

  std::size_t TriangleCount() const;
  /// Triangles with a NaN or infinite corner.
  std::size_t SkippedCount() const;
  /// The least and the greatest coordinates of the triangles that take part; both zero for none.
  void GetBounds(Coord3& low, Coord3& high) const;
  /// Bytes that the body holds at present; a body grows when it is first asked.
  std::size_t MemoryBytes() const;

private:
  friend class Pair;
  explicit Body(std::shared_ptr<const PreparedBody> prepared);

  std::shared_ptr<const PreparedBody> m_prepared;
};

/// Features that meet: of the moving body first. Overlap stands for bodies that share a point from
/// the start and had already met before it, so that no single features meet there.
enum class ContactKind : unsigned char {
  VertexVertex,
  VertexEdge,
  EdgeVertex,
  VertexFace,
  FaceVertex,
  EdgeEdge,
  Overlap
};

enum class SweepStatus : unsigned char {
  Contact,  ///< they touch after a positive travel
  Start,    ///< they touch before any travel
  None,     ///< they never touch, only before the start, or not within the greatest distance
  Cancelled ///< the question was not answered
};

struct Question {
  Coord3 direction{0.0, 0.0, 0.0}; ///< any length but zero; finite
  /// Added to each corner of the moving body, each sum rounded once. Finite.
  Coord3 offset{0.0, 0.0, 0.0};
  /// At least 0. A contact at exactly this travel counts: the exact travel is compared, and the
  /// answer has the rounded one, which may be maxDistance where the exact one is beyond.
  double maxDistance = std::numeric_limits<double>::infinity();
  /// Leaves out triangles of the moving body whose normal points against the direction, and of the
  /// fixed one whose normal points along it. Edge-on and degenerate triangles point neither way
  /// and stay.
  bool oneSided = false;
};

struct Contact {
  double travel = 0.0;
  ContactKind kind = ContactKind::Overlap;
  std::size_t fixedBody = 0;                         ///< in the order of the pair
  std::size_t movingTriangle = 0, fixedTriangle = 0; ///< numbers in their bodies
  Coord3 movingPoint{0.0, 0.0, 0.0};                 ///< with the offset, before the travel
  Coord3 fixedPoint{0.0, 0.0, 0.0};
  /// Of length one, against the direction, of the plane in which the features meet; only where they
  /// define one.
  bool hasNormal = false;
  Coord3 normal{0.0, 0.0, 0.0};
};

struct Answer {
  SweepStatus status = SweepStatus::Cancelled;
  Coord3 unitDirection{0.0, 0.0, 0.0}; ///< rounded from twice the precision; zero when cancelled
  Contact contact;                     ///< of Contact and Start; as made otherwise
};

/// Runs job(0) .. job(count - 1), each once, on any threads, and returns when all have returned. A
/// job does not throw.
using Executor =
    std::function<void(std::size_t count, const std::function<void(std::size_t)>& job)>;

/// How work is run. None of it changes an answer.
struct Run {
  /// 0: as many as there are processors. Without meaning where there is an executor.
  unsigned threads = 0;
  /// Called with the part done, from 0 to 1, which never falls; false cancels. Calls never overlap,
  /// but may come from any thread that works.
  std::function<bool(double)> progress;
  Executor executor;
};

/// How many triangles a one-sided question leaves out.
struct LeftOut {
  std::size_t moving = 0, fixed = 0;
};

/// A moving body and fixed ones, which answer as one body of all their triangles in order would.
///
/// Errors     of the questions: std::invalid_argument for a direction that is zero or not finite,
///            an offset that is not finite, a maxDistance that is negative or NaN (in a batch the
///            text names the question, and nothing is answered); std::overflow_error for a
///            travel or a point beyond the range of double (in a batch: the first such question is
///            named after the others are answered).
class GSL_SWEEP_API Pair {
public:
  /// Prepares the bodies that are not prepared yet, as `run` says; cancelling leaves the rest to
  /// the first question.
  Pair(Body moving, std::vector<Body> fixed, const Run& run = {});

  Answer First(const Question& question, const Run& run = {}) const;

  /// Answers `count` questions in parallel. What is not reached is Cancelled.
  void First(const Question* questions, std::size_t count, Answer* answers,
             const Run& run = {}) const;

  /// One answer for each fixed body, as if it were alone with the moving one.
  std::vector<Answer> FirstOfEach(const Question& question, const Run& run = {}) const;

  /// Looks at every triangle. Nothing is left out by a question that is not one-sided.
  LeftOut CountLeftOut(const Question& question) const;

private:
  std::shared_ptr<PairState> m_state;
};

} // namespace gsl_sweep

#endif
