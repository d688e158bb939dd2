#include "PlainBuffer.h"

#include <gtest/gtest.h>

#include <cstddef>

using gsl_records::FillingLargePages;
using gsl_records::kLargePage;
using gsl_records::kSmallPage;
using gsl_records::PlainBuffer;

TEST(PlainBuffer, LargeBlocksFillTheirLastPageWhereTheyUseHalfOfIt) {
  // What the allocator keeps fits into a small page.
  const std::size_t half = kLargePage / 2 - kSmallPage;
  EXPECT_EQ(FillingLargePages(0), 0u);
  EXPECT_EQ(FillingLargePages(half - 1), half - 1);
  EXPECT_EQ(FillingLargePages(half), kLargePage - kSmallPage);
  EXPECT_EQ(FillingLargePages(kLargePage - kSmallPage - 1), kLargePage - kSmallPage);
  EXPECT_EQ(FillingLargePages(kLargePage - kSmallPage), kLargePage - kSmallPage);
  EXPECT_EQ(FillingLargePages(3 * kLargePage + half - 1), 3 * kLargePage + half - 1);
  EXPECT_EQ(FillingLargePages(3 * kLargePage + half), 4 * kLargePage - kSmallPage);
}

TEST(PlainBuffer, SizesAtTheEndOfAllNumbersStayAsTheyAre) {
  const std::size_t most = ~std::size_t{0};
  for (const std::size_t size : {most, most - kSmallPage + 1, most - kSmallPage})
    EXPECT_EQ(FillingLargePages(size), size);
}

TEST(PlainBuffer, ALargeArrayKeepsItsValuesWhileItGrows) {
  PlainBuffer<unsigned int> buffer;
  constexpr unsigned int kCount = 1500000;
  buffer.Room(kCount);
  EXPECT_GE(buffer.BytesHeld(), kCount * sizeof(unsigned int));
  for (unsigned int i = 0; i < 2 * kCount; ++i)
    buffer.Append(i);
  ASSERT_EQ(buffer.Size(), 2 * kCount);
  for (unsigned int i = 0; i < 2 * kCount; ++i)
    ASSERT_EQ(buffer[i], i);
}
