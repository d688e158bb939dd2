#include "AnswerNames.h"

namespace gsl_view {

using gsl_sweep::ContactKind;
using gsl_sweep::Rule;
using gsl_sweep::SweepStatus;

const char* KindName(ContactKind kind) {
  switch (kind) {
  case ContactKind::VertexVertex:
    return "vertex-vertex";
  case ContactKind::VertexEdge:
    return "vertex-edge";
  case ContactKind::EdgeVertex:
    return "edge-vertex";
  case ContactKind::VertexFace:
    return "vertex-face";
  case ContactKind::FaceVertex:
    return "face-vertex";
  case ContactKind::EdgeEdge:
    return "edge-edge";
  case ContactKind::Inside:
    return "inside";
  case ContactKind::Overlap:
    break;
  }
  return "overlap";
}

const char* RuleName(Rule rule) {
  switch (rule) {
  case Rule::NotLeaving:
    return "not-leaving";
  case Rule::Solid:
    return "solid";
  case Rule::Touch:
    break;
  }
  return "touch";
}

const char* StatusName(SweepStatus status) {
  switch (status) {
  case SweepStatus::Contact:
    return "contact";
  case SweepStatus::Start:
    return "start";
  case SweepStatus::None:
  case SweepStatus::Cancelled:
    break;
  }
  return "none";
}

} // namespace gsl_view
