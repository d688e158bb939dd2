#ifndef GSL_VIEW_PAGE_SPHERE_H
#define GSL_VIEW_PAGE_SPHERE_H

#include "gsl_Sweep.h"

#include <cstdint>
#include <vector>

namespace gsl_view {

/// The answers to many directions as the viewer page keeps them: arrays of numbers, the same
/// doubles as in the answers.
struct PageSphere {
  /// The names of these are in the page, in this order.
  static constexpr gsl_sweep::SweepStatus kStatuses[] = {
      gsl_sweep::SweepStatus::None, gsl_sweep::SweepStatus::Contact, gsl_sweep::SweepStatus::Start};
  static constexpr gsl_sweep::ContactKind kKinds[] = {
      gsl_sweep::ContactKind::VertexVertex, gsl_sweep::ContactKind::VertexEdge,
      gsl_sweep::ContactKind::EdgeVertex,   gsl_sweep::ContactKind::VertexFace,
      gsl_sweep::ContactKind::FaceVertex,   gsl_sweep::ContactKind::EdgeEdge,
      gsl_sweep::ContactKind::Overlap,      gsl_sweep::ContactKind::Inside};

  /// In each code: the number in kStatuses, from bit 0; the number in kKinds, from bit 2.
  static constexpr std::uint32_t kKindShift = 2;
  static constexpr std::uint32_t kHasNormal = 1u << 8, kOverlapsAtStart = 1u << 9,
                                 kMovingPlace = 1u << 10, kFixedPlace = 1u << 11,
                                 kIsExact = 1u << 12;

  std::vector<double> directions;   ///< x, y, z of each answer
  std::vector<std::uint32_t> codes; ///< one of each answer
  /// Eleven of each answer with a contact: the travel, its error bound, the moving point, the fixed
  /// point and the normal.
  std::vector<double> contacts;
  /// Three of each answer with a contact: the moving triangle, the fixed triangle and the fixed
  /// body, as the answer numbers them.
  std::vector<std::uint32_t> triangles;

  static PageSphere Of(const std::vector<gsl_sweep::Answer>& answers);
};

} // namespace gsl_view

#endif
