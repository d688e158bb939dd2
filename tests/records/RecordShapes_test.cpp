#include "RecordShapes.h"

#include "gsl_RecordError.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

using gsl_records::Number;
using gsl_records::RecordShapes;
using gsl_records::ShapeField;

namespace {

constexpr auto kNoCollection = gsl_RecordCollection::None;

} // namespace

TEST(RecordShapes, OneClassWithTheSameFieldsIsOneShape) {
  RecordShapes shapes;
  const auto shapeOf = [&](std::uint32_t typeId, const char* a, int index, std::uint8_t kind) {
    // A name of another place in memory is the same name.
    const std::string name(a);
    return shapes.ShapeOf(
        shapes.Next(shapes.Start(typeId, kNoCollection), name.c_str(), index, kind));
  };
  EXPECT_EQ(shapeOf(1, "a", 0, 1), 0u);
  EXPECT_EQ(shapeOf(2, "a", 0, 1), 1u);
  EXPECT_EQ(shapeOf(1, "b", 0, 1), 2u);
  EXPECT_EQ(shapeOf(1, "a", 1, 1), 3u);
  EXPECT_EQ(shapeOf(1, "a", 0, 2), 4u);
  // Class 65 has the place of class 1 among the classes that were used lately.
  EXPECT_EQ(shapeOf(65, "a", 0, 1), 5u);
  EXPECT_EQ(shapeOf(1, "a", 0, 1), 0u);
  EXPECT_EQ(shapes.Shapes().size(), 6u);
  EXPECT_EQ(shapes.Names().Size(), 2u);
}

TEST(RecordShapes, FieldsAreInWriteOrderWithAMarkAfterThem) {
  RecordShapes shapes;
  Number node = shapes.Start(7, kNoCollection);
  node = shapes.Next(node, "x", 3, 1);
  node = shapes.Next(node, "y", -1, 5);
  const auto& plain = shapes.Shapes()[shapes.ShapeOf(node)];
  EXPECT_EQ(plain.typeId, 7u);
  EXPECT_TRUE(plain.mayHaveObjects);
  const ShapeField* field = &shapes.Fields()[plain.firstField];
  EXPECT_EQ(field[0].name, "x");
  EXPECT_EQ(field[0].index, 3);
  EXPECT_EQ(field[1].name, "y");
  EXPECT_EQ(field[2].kind, ShapeField::End);
  const Number list = shapes.WithCollection(node, gsl_RecordCollection::Objects);
  const auto& ofList = shapes.Shapes()[shapes.ShapeOf(list)];
  field = &shapes.Fields()[ofList.firstField];
  EXPECT_EQ(field[1].name, "y");
  EXPECT_EQ(field[2].kind, ShapeField::Entries);
  EXPECT_EQ(ofList.collection, gsl_RecordCollection::Objects);
}

TEST(RecordShapes, NumberOfANameLeadsWhereTheNameLeads) {
  RecordShapes shapes;
  const Number start = shapes.Start(1, kNoCollection);
  const Number x = shapes.Next(start, "x", 0, 1);
  const Number y = shapes.Next(start, "y", 0, 1);
  EXPECT_EQ(shapes.NextOfNumber(start, 0, 0, 1), x);
  EXPECT_EQ(shapes.NextOfNumber(start, 1, 0, 1), y);
  const Number further = shapes.NextOfNumber(x, 1, 2, 3);
  EXPECT_EQ(shapes.Next(x, "y", 2, 3), further);
  EXPECT_NE(shapes.Next(x, "y", 2, 4), further);
}

TEST(RecordShapes, ClassesOfOnePlaceStayTwo) {
  RecordShapes shapes;
  const Number first = shapes.Start(1, kNoCollection);
  const Number second = shapes.Start(65, kNoCollection);
  EXPECT_NE(second, first);
  EXPECT_EQ(shapes.Start(1, kNoCollection), first);
  EXPECT_EQ(shapes.Start(65, kNoCollection), second);
}

TEST(RecordShapes, NameIsWhatFollowsItsFirstCharacter) {
  RecordShapes shapes;
  const Number start = shapes.Start(1, kNoCollection);
  const Number ab = shapes.Next(start, "ab", 0, 1);
  // The name "a", before which there is what follows the "a" of the other name.
  const char reversed[] = {'\0', 'b', 'a', '\0'};
  EXPECT_NE(shapes.Next(start, reversed + 2, 0, 1), ab);
  EXPECT_EQ(shapes.Names().Size(), 2u);
}

TEST(RecordShapes, MemoryCountsEachNodeAndEachShape) {
  RecordShapes shapes;
  // A step has three numbers, a kind and its padding, and leads to a number; about three pointers
  // are around it. A node has no less than the step.
  constexpr std::size_t kStep = 4 * sizeof(std::uint32_t);
  constexpr std::size_t kItem = kStep + sizeof(Number) + 3 * sizeof(void*);
  constexpr std::uint32_t kCount = 100;
  std::size_t least = ~std::size_t{0};
  for (std::uint32_t typeId = 0; typeId < kCount; ++typeId) {
    const std::size_t before = shapes.BytesHeld();
    shapes.Start(typeId, kNoCollection);
    least = std::min(least, shapes.BytesHeld() - before);
  }
  // Most nodes find room in the array.
  EXPECT_EQ(least, kItem);
  const std::size_t ofNodes = shapes.BytesHeld();
  EXPECT_GE(ofNodes, kCount * (kItem + kStep));
  shapes.ShapeOf(shapes.Start(0, kNoCollection));
  EXPECT_GE(shapes.BytesHeld(), ofNodes + sizeof(gsl_records::Shape) + sizeof(ShapeField));
}

TEST(RecordShapes, EmptyNameIsRefused) {
  RecordShapes shapes;
  EXPECT_THROW(shapes.Next(shapes.Start(1, kNoCollection), "", 0, 0), gsl_RecordError);
}

TEST(RecordShapes, WhatWasDroppedIsNewAgain) {
  RecordShapes shapes;
  const Number kept = shapes.Next(shapes.Start(1, kNoCollection), "kept", 0, 0);
  const auto before = shapes.Size();
  EXPECT_EQ(shapes.ShapeOf(shapes.Next(kept, "gone", 0, 0)), 0u);
  shapes.ShapeOf(kept);
  shapes.Truncate(before);
  EXPECT_TRUE(shapes.Shapes().empty());
  EXPECT_EQ(shapes.Names().Size(), 1u);
  EXPECT_EQ(shapes.ShapeOf(kept), 0u);
  EXPECT_EQ(shapes.ShapeOf(shapes.Next(kept, "other", 0, 0)), 1u);
  EXPECT_EQ(shapes.ShapeOf(shapes.Next(kept, "gone", 0, 0)), 2u);
}
