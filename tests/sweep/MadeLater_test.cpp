#include "MadeLater.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

namespace {

using gsl_sweep::MadeLater;
using Asked = std::function<bool()>;

std::unique_ptr<const int> Seven(const Asked&) {
  return std::make_unique<const int>(7);
}

TEST(MadeLater, IsMadeOnce) {
  MadeLater<int> number;
  EXPECT_EQ(number.IfMade(), nullptr);
  number.MakeOnce({}, Seven);
  ASSERT_NE(number.IfMade(), nullptr);
  EXPECT_EQ(*number.IfMade(), 7);
  const int* made = number.IfMade();
  number.MakeOnce({}, [](const Asked&) -> std::unique_ptr<const int> {
    ADD_FAILURE();
    return nullptr;
  });
  EXPECT_EQ(number.IfMade(), made);
}

TEST(MadeLater, IsMadeAfterAnyFailureButAShortageOfMemory) {
  MadeLater<int> number;
  number.MakeOnce({}, [](const Asked&) { return std::unique_ptr<const int>(); });
  EXPECT_EQ(number.IfMade(), nullptr);
  const auto throws = [](const Asked&) -> std::unique_ptr<const int> {
    throw std::runtime_error("the executor is shut down");
  };
  EXPECT_THROW(number.MakeOnce({}, throws), std::runtime_error);
  const auto throwsNumber = [](const Asked&) -> std::unique_ptr<const int> { throw 5; };
  EXPECT_THROW(number.MakeOnce({}, throwsNumber), int);
  EXPECT_EQ(number.IfMade(), nullptr);
  number.MakeOnce({}, Seven);
  EXPECT_NE(number.IfMade(), nullptr);
}

TEST(MadeLater, IsGivenUpForGoodWithoutMemory) {
  MadeLater<int> number;
  number.MakeOnce({}, [](const Asked&) -> std::unique_ptr<const int> { throw std::bad_alloc(); });
  number.MakeOnce({}, Seven);
  EXPECT_EQ(number.IfMade(), nullptr);
}

TEST(MadeLater, DoesNotAskAgainAfterTheCallerHasThrownOrCancelled) {
  for (const bool throws : {false, true}) {
    MadeLater<int> number;
    int calls = 0;
    const Asked goesOn = [&] {
      ++calls;
      if (throws) throw std::runtime_error("no");
      return false;
    };
    const auto make = [](const Asked& asked) {
      EXPECT_FALSE(asked());
      EXPECT_FALSE(asked());
      return std::unique_ptr<const int>();
    };
    if (throws) {
      EXPECT_THROW(number.MakeOnce(goesOn, make), std::runtime_error);
    } else {
      number.MakeOnce(goesOn, make);
    }
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(number.IfMade(), nullptr);
    number.MakeOnce({}, Seven);
    EXPECT_NE(number.IfMade(), nullptr);
  }
}

TEST(MadeLater, WhatTheCallerThrowsIsNotLostInAShortageOfMemory) {
  MadeLater<int> number;
  const Asked goesOn = []() -> bool { throw std::runtime_error("no"); };
  const auto make = [](const Asked& asked) -> std::unique_ptr<const int> {
    asked();
    throw std::bad_alloc();
  };
  EXPECT_THROW(number.MakeOnce(goesOn, make), std::runtime_error);
  number.MakeOnce({}, Seven);
  EXPECT_NE(number.IfMade(), nullptr);
}

} // namespace
