#include "PageSphere.h"

#include <gtest/gtest.h>

using namespace gsl_view;
using gsl_sweep::Answer;
using gsl_sweep::ContactKind;
using gsl_sweep::SweepStatus;

namespace {

Answer Meeting() {
  Answer answer;
  answer.status = SweepStatus::Contact;
  answer.unitDirection = {0.0, 0.6, -0.8};
  answer.errorBound = 0.125;
  answer.isExact = false;
  answer.contact.travel = 0.1 + 0.2;
  answer.contact.kind = ContactKind::VertexFace;
  answer.contact.movingTriangle = 7;
  answer.contact.fixedTriangle = 8;
  answer.contact.fixedBody = 2;
  answer.contact.movingPoint = {1, 2, 3};
  answer.contact.fixedPoint = {4, 5, 6};
  answer.contact.hasNormal = true;
  answer.contact.normal = {0, 0, 1};
  return answer;
}

} // namespace

TEST(PageSphere, KeepsTheNumbersOfEachContact) {
  Answer free;
  free.status = SweepStatus::None;
  free.unitDirection = {1, 0, 0};
  const PageSphere sphere = PageSphere::Of({free, Meeting()});
  EXPECT_EQ(sphere.directions, (std::vector<double>{1, 0, 0, 0.0, 0.6, -0.8}));
  EXPECT_EQ(sphere.contacts, (std::vector<double>{0.1 + 0.2, 0.125, 1, 2, 3, 4, 5, 6, 0, 0, 1}));
  EXPECT_EQ(sphere.triangles, (std::vector<std::uint32_t>{7, 8, 2}));
  ASSERT_EQ(sphere.codes.size(), 2u);
  EXPECT_EQ(sphere.codes[0], PageSphere::kIsExact);
  // The status 1 and the kind 3.
  EXPECT_EQ(sphere.codes[1], 1u + (3u << 2u) + PageSphere::kHasNormal + PageSphere::kMovingPlace +
                                 PageSphere::kFixedPlace);
}

TEST(PageSphere, EachKindAndStatusHasItsPlace) {
  Answer answer = Meeting();
  std::uint32_t number = 0;
  for (const ContactKind kind : PageSphere::kKinds) {
    answer.contact.kind = kind;
    EXPECT_EQ(PageSphere::Of({answer}).codes[0] >> PageSphere::kKindShift & 7u, number++);
  }
  EXPECT_EQ(number, 8u);
  answer.status = SweepStatus::Start;
  answer.contact.overlapsAtStart = true;
  const std::uint32_t code = PageSphere::Of({answer}).codes[0];
  EXPECT_EQ(code & 3u, 2u);
  EXPECT_NE(code & PageSphere::kOverlapsAtStart, 0u);
}

TEST(PageSphere, TheBodyAroundTheOtherHasNoPlace) {
  Answer answer = Meeting();
  answer.status = SweepStatus::Start;
  answer.contact.kind = ContactKind::Inside;
  for (const bool movingIsInside : {true, false}) {
    answer.contact.movingIsInside = movingIsInside;
    const std::uint32_t code = PageSphere::Of({answer}).codes[0];
    EXPECT_EQ((code & PageSphere::kMovingPlace) != 0, movingIsInside);
    EXPECT_EQ((code & PageSphere::kFixedPlace) != 0, !movingIsInside);
  }
}
