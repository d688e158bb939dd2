#include "AnswerNames.h"

#include <gtest/gtest.h>

namespace {

using gsl_sweep::ContactKind;
using gsl_sweep::Rule;
using gsl_sweep::SweepStatus;
using namespace gsl_view;

TEST(AnswerNames, KindsAreNamedTheMovingBodyFirst) {
  EXPECT_STREQ(KindName(ContactKind::VertexVertex), "vertex-vertex");
  EXPECT_STREQ(KindName(ContactKind::VertexEdge), "vertex-edge");
  EXPECT_STREQ(KindName(ContactKind::EdgeVertex), "edge-vertex");
  EXPECT_STREQ(KindName(ContactKind::VertexFace), "vertex-face");
  EXPECT_STREQ(KindName(ContactKind::FaceVertex), "face-vertex");
  EXPECT_STREQ(KindName(ContactKind::EdgeEdge), "edge-edge");
  EXPECT_STREQ(KindName(ContactKind::Overlap), "overlap");
  EXPECT_STREQ(KindName(ContactKind::Inside), "inside");
}

TEST(AnswerNames, RulesAndStatusesAreNamed) {
  EXPECT_STREQ(RuleName(Rule::Touch), "touch");
  EXPECT_STREQ(RuleName(Rule::NotLeaving), "not-leaving");
  EXPECT_STREQ(RuleName(Rule::Solid), "solid");
  EXPECT_STREQ(StatusName(SweepStatus::Contact), "contact");
  EXPECT_STREQ(StatusName(SweepStatus::Start), "start");
  EXPECT_STREQ(StatusName(SweepStatus::None), "none");
  EXPECT_STREQ(StatusName(SweepStatus::Cancelled), "none");
}

} // namespace
