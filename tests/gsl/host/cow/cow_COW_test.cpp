#include "cow_COW.h"

#include "FailingAllocation.h"
#include "cow_Virtual.h"

#include <gtest/gtest.h>
#include <memory>
#include <utility>

namespace {

/// A base with a virtual copy that counts its live objects and its copies.
class Shape {
public:
  explicit Shape(int n = 0) : number(n) { ++live; }
  Shape(const Shape& other) : number(other.number) {
    ++live;
    ++copies;
  }
  Shape& operator=(const Shape&) = delete;
  virtual ~Shape() { --live; }
  virtual Shape* Copy() const { return copyable ? new (std::nothrow) Shape(*this) : nullptr; }

  int number;

  static inline int live = 0;
  static inline int copies = 0;
  static inline bool copyable = true;
};

class Circle : public Shape {
public:
  using Shape::Shape;
  Circle* Copy() const override { return new (std::nothrow) Circle(*this); }
};

using Holder = cow_COW<Shape, cow_Virtual<Shape>>;

class CowCOW : public testing::Test {
protected:
  void SetUp() override {
    Shape::copies = 0;
    Shape::copyable = true;
    ASSERT_EQ(Shape::live, 0);
  }
  void TearDown() override { EXPECT_EQ(Shape::live, 0); }
};

TEST_F(CowCOW, DefaultIsEmpty) {
  Holder holder;
  EXPECT_TRUE(holder.IsEmpty());
  EXPECT_FALSE(holder);
  EXPECT_EQ(holder.Get(), nullptr);
  EXPECT_EQ(holder.Owners(), 0u);
  EXPECT_EQ(holder.Unshared(), nullptr);
}

TEST_F(CowCOW, HoldsACloneOfTheSource) {
  const Shape shape(7);
  const Holder holder(shape);
  ASSERT_TRUE(holder);
  EXPECT_NE(holder.Get(), &shape);
  EXPECT_EQ((*holder).number, 7);
  EXPECT_EQ(holder->number, 7);
  EXPECT_EQ(holder.Owners(), 1u);
  EXPECT_EQ(Shape::copies, 1);
}

TEST_F(CowCOW, KeepsTheDynamicTypeOfTheSource) {
  const Circle circle(7);
  const Holder holder(circle);
  EXPECT_NE(dynamic_cast<const Circle*>(holder.Get()), nullptr);
}

TEST_F(CowCOW, AdoptTakesTheObjectItselfOver) {
  auto* const shape = new Shape(7);
  const Holder holder = Holder::Adopt(shape);
  EXPECT_EQ(holder.Get(), shape);
  EXPECT_EQ(Shape::copies, 0);
}

TEST_F(CowCOW, AdoptOfNullIsEmpty) {
  EXPECT_TRUE(Holder::Adopt(nullptr).IsEmpty());
}

TEST_F(CowCOW, CopiesShareAndCount) {
  Holder a = Holder::Adopt(new Shape(7));
  {
    const Holder b(a);
    const Holder c(b);
    EXPECT_EQ(a.Get(), c.Get());
    EXPECT_TRUE(a.SharesWith(b));
    EXPECT_EQ(a.Owners(), 3u);
  }
  EXPECT_EQ(a.Owners(), 1u);
  EXPECT_EQ(Shape::copies, 0);
  EXPECT_EQ(Shape::live, 1);
}

TEST_F(CowCOW, EmptyHoldersShareNothing) {
  const Holder a;
  const Holder b;
  EXPECT_FALSE(a.SharesWith(b));
  EXPECT_FALSE(a.SharesWith(a));
}

TEST_F(CowCOW, HoldersOfEqualObjectsDoNotShare) {
  const Shape shape(7);
  EXPECT_FALSE(Holder(shape).SharesWith(Holder(shape)));
}

TEST_F(CowCOW, AssignmentSharesAndReleases) {
  Holder a = Holder::Adopt(new Shape(1));
  const Holder b = Holder::Adopt(new Shape(2));
  EXPECT_EQ(Shape::live, 2);
  a = b;
  EXPECT_EQ(Shape::live, 1);
  EXPECT_EQ(a->number, 2);
  EXPECT_EQ(b.Owners(), 2u);
  a = Holder();
  EXPECT_TRUE(a.IsEmpty());
  EXPECT_EQ(b.Owners(), 1u);
}

TEST_F(CowCOW, AssignmentOfTheSameObjectChangesNothing) {
  Holder a = Holder::Adopt(new Shape(1));
  const Holder b(a);
  const Holder& self = a;
  a = self;
  a = b;
  EXPECT_EQ(a.Owners(), 2u);
  EXPECT_EQ(a->number, 1);
}

TEST_F(CowCOW, MovesLeaveTheSourceEmpty) {
  Holder a = Holder::Adopt(new Shape(1));
  Holder b(std::move(a));
  EXPECT_TRUE(a.IsEmpty());
  EXPECT_EQ(b.Owners(), 1u);
  Holder c = Holder::Adopt(new Shape(2));
  c = std::move(b);
  EXPECT_TRUE(b.IsEmpty());
  EXPECT_EQ(c->number, 1);
  EXPECT_EQ(Shape::live, 1);
  Holder& self = c;
  c = std::move(self);
  EXPECT_EQ(c->number, 1);
}

TEST_F(CowCOW, ClearReleasesTheObject) {
  Holder a = Holder::Adopt(new Shape(1));
  const Holder b(a);
  a.Clear();
  EXPECT_TRUE(a.IsEmpty());
  EXPECT_EQ(b.Owners(), 1u);
  a.Clear();
  EXPECT_TRUE(a.IsEmpty());
}

TEST_F(CowCOW, UnsharedOfASoleHolderClonesNothing) {
  Holder a = Holder::Adopt(new Shape(1));
  const Shape* const held = a.Get();
  EXPECT_EQ(a.Unshared(), held);
  EXPECT_EQ(Shape::copies, 0);
}

TEST_F(CowCOW, UnsharedOfASharedObjectClonesItForThisHolder) {
  Holder a = Holder::Adopt(new Circle(1));
  const Holder b(a);
  Shape* const own = a.Unshared();
  ASSERT_NE(own, nullptr);
  EXPECT_NE(own, b.Get());
  EXPECT_EQ(own, a.Get());
  EXPECT_NE(dynamic_cast<Circle*>(own), nullptr);
  own->number = 9;
  EXPECT_EQ(b->number, 1);
  EXPECT_EQ(a.Owners(), 1u);
  EXPECT_EQ(b.Owners(), 1u);
  EXPECT_EQ(Shape::copies, 1);
}

TEST_F(CowCOW, SourceWithoutACloneMakesAnEmptyHolder) {
  const Shape shape(7);
  Shape::copyable = false;
  const Holder holder(shape);
  EXPECT_TRUE(holder.IsEmpty());
}

TEST_F(CowCOW, UnsharedWithoutACloneIsNullAndKeepsSharing) {
  Holder a = Holder::Adopt(new Shape(1));
  const Holder b(a);
  Shape::copyable = false;
  EXPECT_EQ(a.Unshared(), nullptr);
  EXPECT_TRUE(a.SharesWith(b));
  EXPECT_EQ(b.Owners(), 2u);
}

TEST_F(CowCOW, NoMemoryForTheSharedBlockCountsLikeNoClone) {
  auto* const shape = new Shape(1);
  {
    const FailingAllocation failing(0);
    EXPECT_TRUE(Holder::Adopt(shape).IsEmpty());
  }
  EXPECT_EQ(Shape::live, 0);
  Holder a = Holder::Adopt(new Shape(2));
  const Holder b(a);
  {
    // The clone is made, the block for it is not.
    const FailingAllocation failing(1);
    EXPECT_EQ(a.Unshared(), nullptr);
  }
  EXPECT_TRUE(a.SharesWith(b));
  EXPECT_EQ(Shape::live, 1);
}

} // namespace
