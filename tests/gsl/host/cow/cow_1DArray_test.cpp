#include "cow_1DArray.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <utility>

TEST(Cow1DArray, AppendsAndReads) {
  cow_1DArray<std::string> array;
  EXPECT_TRUE(array.IsEmpty());
  array.Append("a");
  array.Append("b");
  EXPECT_EQ(array.Count(), 2u);
  EXPECT_EQ(array[1], "b");
}

TEST(Cow1DArray, CopiesShareUntilOneWrites) {
  cow_1DArray<std::string> array;
  array.Append("a");
  cow_1DArray<std::string> copy(array);
  EXPECT_TRUE(copy.SharesWith(array));
  EXPECT_EQ(&copy[0], &array[0]);
  copy.Writable(0) = "changed";
  EXPECT_FALSE(copy.SharesWith(array));
  EXPECT_EQ(array[0], "a");
  EXPECT_EQ(copy[0], "changed");
}

TEST(Cow1DArray, OnlyOwnerWritesInPlace) {
  cow_1DArray<std::string> array;
  array.Append("a");
  const std::string* const place = &array[0];
  array.Writable(0) = "b";
  EXPECT_EQ(&array[0], place);
}

TEST(Cow1DArray, ClearLeavesCopiesAlone) {
  cow_1DArray<std::string> array;
  array.Append("a");
  const cow_1DArray<std::string> copy(array);
  array.Clear();
  EXPECT_TRUE(array.IsEmpty());
  EXPECT_EQ(copy[0], "a");
}

TEST(Cow1DArray, IteratesOverItsElementsInOrder) {
  cow_1DArray<std::string> array;
  EXPECT_EQ(array.begin(), array.end());
  array.Append("a");
  array.Append("b");
  std::string all;
  for (const std::string& text : array)
    all += text;
  EXPECT_EQ(all, "ab");
}

TEST(Cow1DArray, MoveLeavesItsSourceEmpty) {
  cow_1DArray<std::string> source, array;
  source.Append("a");
  array.Append("before");
  array = std::move(source);
  EXPECT_EQ(array[0], "a");
  // NOLINTBEGIN(bugprone-use-after-move): what a moved array holds is said.
  EXPECT_TRUE(source.IsEmpty());
  source.Append("again");
  EXPECT_EQ(source[0], "again");
  // NOLINTEND(bugprone-use-after-move)
  cow_1DArray<std::string>& same = array;
  array = std::move(same);
  EXPECT_EQ(array[0], "a");
}

/// An element whose first copy drops another array, as another thread may do at any time.
struct Dropper {
  std::string text;
  cow_1DArray<Dropper>** victim;

  Dropper(const char* t, cow_1DArray<Dropper>** v) : text(t), victim(v) {}
  Dropper& operator=(const Dropper&) = default;
  Dropper(const Dropper& other) : text(other.text), victim(other.victim) {
    delete *victim;
    *victim = nullptr;
  }
};

TEST(Cow1DArray, OwnElementIsAppendedWhileTheOtherOwnerReleasesIt) {
  cow_1DArray<Dropper>* victim = nullptr;
  cow_1DArray<Dropper> array;
  array.Append(Dropper("a text too long to be kept within the string", &victim));
  victim = new cow_1DArray<Dropper>(array);
  array.Append(array[0]);
  EXPECT_EQ(victim, nullptr);
  EXPECT_EQ(array[1].text, "a text too long to be kept within the string");
}

TEST(Cow1DArray, CopiesMayBeChangedInDifferentThreads) {
  cow_1DArray<int> array;
  array.Append(0);
  const auto work = [](cow_1DArray<int> copy) {
    for (int i = 0; i < 1000; ++i) {
      cow_1DArray<int> other(copy);
      other.Append(i);
      copy.Writable(0) = i;
      EXPECT_EQ(copy[0], i);
    }
  };
  std::thread first(work, array);
  std::thread second(work, array);
  first.join();
  second.join();
  EXPECT_EQ(array[0], 0);
}
