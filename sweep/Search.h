#ifndef GSL_SWEEP_SEARCH_H
#define GSL_SWEEP_SEARCH_H

#include "Mesh.h"
#include "PairKernel.h"

#include <cstddef>
#include <functional>
#include <limits>

/// The first contact of two bodies, one of which travels along a direction.
namespace gsl_sweep {

enum class SweepStatus {
  Contact, ///< they touch after a positive travel
  Start,   ///< they touch before any travel
  None     ///< they never touch, only behind, or not within the greatest distance
};

struct SweepQuestion {
  Coord3 direction{0.0, 0.0, 0.0}; ///< any length but zero; finite
  /// Leaves out triangles of the moving body whose normal points against the direction, and of the
  /// fixed one whose normal points along it. Edge-on and degenerate triangles point neither way
  /// and stay.
  bool oneSided = false;
  /// At least 0. A contact at exactly this travel counts.
  double maxDistance = std::numeric_limits<double>::infinity();
  unsigned threads = 1;
  /// Called on the calling thread with the part done, from 0 to 1, now and then.
  std::function<void(double)> progress;
};

struct SweptBody {
  std::size_t triangles = 0;   ///< of the mesh
  std::size_t skipped = 0;     ///< with a NaN or infinite corner
  std::size_t leftOut = 0;     ///< by oneSided
  std::size_t triangle = 0;    ///< that touches
  Coord3 point{0.0, 0.0, 0.0}; ///< on that triangle, before the move
};

struct SweepAnswer {
  SweepStatus status = SweepStatus::None;
  double travel = 0.0;
  Coord3 direction{0.0, 0.0, 0.0}; ///< of length one
  ContactKind kind = ContactKind::Overlap;
  SweptBody moving, fixed;
  /// Of length one, against the direction; see ContactNormal. Only with a contact, and only where
  /// its features define a plane.
  bool hasNormal = false;
  Coord3 normal{0.0, 0.0, 0.0};
};

/// Finds the first contact.
///
/// Units      travel and points in those of the meshes.
/// Decision   exact: whether there is a contact, whether there is one at the start, and which comes
///            first. Coordinates below 2^-288 of the largest, and such components of the direction,
///            are rounded to 2^-339 of it. maxDistance is compared with the exact travel, of which
///            the answer has the rounded one: that may be maxDistance where the exact one is
///            beyond.
/// Ties       of exactly equal travels: the first moving triangle, then the first fixed one, then
///            the first kind; of pairs that touch at the start, the first in that order. The answer
///            is the same bits for any number of threads.
/// Untouched  without a contact, triangle, point and normal.
/// Errors     std::invalid_argument for a direction that is zero or not finite and for a negative
/// or
///            NaN maxDistance; std::length_error for more than 2^32 - 1 triangles;
///            std::overflow_error for a travel beyond the range of double.
SweepAnswer Sweep(const Mesh& moving, const Mesh& fixed, const SweepQuestion& question);

} // namespace gsl_sweep

#endif
