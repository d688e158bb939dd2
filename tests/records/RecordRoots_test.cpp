#include "RecordRoots.h"

#include <gtest/gtest.h>

#include <string>

using gsl_records::kNone;
using gsl_records::RecordRoots;

TEST(RecordRoots, RootsThatWereWrittenFollowThoseThatWereRead) {
  const std::string name = "name";
  RecordRoots roots;
  gsl_records::Number* const room = roots.RoomToRead(2);
  room[0] = 5;
  roots.AddFilled(1);
  EXPECT_EQ(roots.RoomToRead(1), room + 1);
  roots.AddRead(6);
  EXPECT_EQ(roots.FirstFrom(0), 2u);
  roots.MakeRoomToStart();
  roots.AddStarted({10, 7, 1});
  EXPECT_EQ(roots.Record(2), kNone);
  roots.SetLastRecord(7);
  roots.MakeRoomForLastName();
  roots.SetLastName(&name);
  roots.MakeRoomToStart();
  roots.AddStarted({20, 8, 2});
  ASSERT_EQ(roots.Size(), 4u);
  EXPECT_EQ(roots.Records()[1], 6u);
  EXPECT_EQ(roots.Record(2), 7u);
  EXPECT_EQ(roots.Name(0), nullptr);
  EXPECT_EQ(roots.Name(2), &name);
  EXPECT_EQ(roots.Name(3), nullptr);
  EXPECT_EQ(roots.FirstFrom(10), 2u);
  EXPECT_EQ(roots.FirstFrom(11), 3u);
  EXPECT_EQ(roots.FirstFrom(21), 4u);
  EXPECT_EQ(roots.StartOf(3).recordsBefore, 8u);
  EXPECT_EQ(roots.StartOf(2).objectsBefore, 1u);
  roots.Truncate(2);
  EXPECT_EQ(roots.Size(), 2u);
  EXPECT_EQ(roots.FirstFrom(0), 2u);
  roots.MakeRoomToStart();
  roots.AddStarted({30, 9, 3});
  EXPECT_EQ(roots.Name(2), nullptr);
  EXPECT_EQ(roots.StartOf(2).key, 30u);
}
