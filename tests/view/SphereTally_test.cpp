#include "SphereTally.h"

#include <gtest/gtest.h>

using namespace gsl_view;
using gsl_sweep::Answer;
using gsl_sweep::SweepStatus;

namespace {

Answer AnswerOf(SweepStatus status, double travel = 0.0, double errorBound = 0.0) {
  Answer answer;
  answer.status = status;
  answer.contact.travel = travel;
  answer.errorBound = errorBound;
  return answer;
}

} // namespace

TEST(SphereTally, CountsEachStatus) {
  const SphereTally tally =
      TallyOf({AnswerOf(SweepStatus::None), AnswerOf(SweepStatus::Start, 0.0, 0.5),
               AnswerOf(SweepStatus::Contact, 3.0, 0.25), AnswerOf(SweepStatus::Cancelled),
               AnswerOf(SweepStatus::Contact, 2.0)});
  EXPECT_EQ(tally.free, 2u);
  EXPECT_EQ(tally.start, 1u);
  EXPECT_EQ(tally.contact, 2u);
  EXPECT_EQ(tally.errorBound, 0.5);
  EXPECT_EQ(tally.least, 4u);
  EXPECT_EQ(tally.greatest, 2u);
  EXPECT_EQ(tally.ShownFirst(), 2u);
}

TEST(SphereTally, TheFirstOfEqualTravelsIsNamed) {
  const SphereTally tally =
      TallyOf({AnswerOf(SweepStatus::Start), AnswerOf(SweepStatus::Contact, 2.0),
               AnswerOf(SweepStatus::Contact, 2.0)});
  EXPECT_EQ(tally.least, 1u);
  EXPECT_EQ(tally.greatest, 1u);
}

TEST(SphereTally, WithoutATravelTheFirstAnswerIsShown) {
  const SphereTally tally = TallyOf({AnswerOf(SweepStatus::Start), AnswerOf(SweepStatus::None)});
  EXPECT_FALSE(tally.least);
  EXPECT_FALSE(tally.greatest);
  EXPECT_EQ(tally.ShownFirst(), 0u);
}

TEST(SphereTally, TravelsAreThoseAfterTheStart) {
  EXPECT_EQ(TravelsOf({AnswerOf(SweepStatus::Contact, 3.0), AnswerOf(SweepStatus::Start),
                       AnswerOf(SweepStatus::None), AnswerOf(SweepStatus::Contact, 1.0)}),
            (std::vector<double>{3.0, 1.0}));
}
