#include "ContactPlaces.h"

#include <gtest/gtest.h>

namespace {

using gsl_sweep::Answer;
using gsl_sweep::ContactKind;
using gsl_sweep::SweepStatus;
using namespace gsl_view;

Answer AnswerWith(SweepStatus status, ContactKind kind, bool movingIsInside) {
  Answer answer;
  answer.status = status;
  answer.contact.kind = kind;
  answer.contact.movingIsInside = movingIsInside;
  return answer;
}

TEST(ContactPlaces, BothBodiesHaveOneWhereTheyTouch) {
  for (const SweepStatus status : {SweepStatus::Contact, SweepStatus::Start}) {
    for (const ContactKind kind : {ContactKind::VertexFace, ContactKind::Overlap}) {
      const Answer answer = AnswerWith(status, kind, false);
      EXPECT_TRUE(Touches(answer));
      EXPECT_TRUE(PlacesOf(answer).moving);
      EXPECT_TRUE(PlacesOf(answer).fixed);
    }
  }
}

TEST(ContactPlaces, TheInnerBodyHasOneWhereOneIsInside) {
  const Answer inner = AnswerWith(SweepStatus::Start, ContactKind::Inside, true);
  EXPECT_TRUE(PlacesOf(inner).moving);
  EXPECT_FALSE(PlacesOf(inner).fixed);
  EXPECT_FALSE(PlacesOf(inner.contact).fixed);
  const Answer outer = AnswerWith(SweepStatus::Start, ContactKind::Inside, false);
  EXPECT_FALSE(PlacesOf(outer).moving);
  EXPECT_TRUE(PlacesOf(outer).fixed);
}

TEST(ContactPlaces, NoBodyHasOneWithoutAContact) {
  for (const SweepStatus status : {SweepStatus::None, SweepStatus::Cancelled}) {
    const Answer answer = AnswerWith(status, ContactKind::VertexFace, false);
    EXPECT_FALSE(Touches(answer));
    EXPECT_FALSE(PlacesOf(answer).moving);
    EXPECT_FALSE(PlacesOf(answer).fixed);
  }
}

} // namespace
