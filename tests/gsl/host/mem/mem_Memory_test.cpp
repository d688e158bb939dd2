#include "mem_Memory.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

TEST(MemMemory, BlocksAreAlignedForAnyType) {
  for (const std::size_t size : {1u, 7u, 16u, 33u, 4096u}) {
    void* const block = mem_Malloc(size);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignof(std::max_align_t), 0u) << size;
    std::memset(block, 0xAB, size);
    mem_Free(block);
  }
}

TEST(MemMemory, NothingIsAllocatedForNoBytes) {
  EXPECT_EQ(mem_Malloc(0), nullptr);
  EXPECT_EQ(mem_Realloc(nullptr, 0), nullptr);
}

TEST(MemMemory, ReallocKeepsTheBytesThatBothSizesHave) {
  auto* block = static_cast<unsigned char*>(mem_Malloc(100));
  for (unsigned char i = 0; i < 100; ++i)
    block[i] = i;
  block = static_cast<unsigned char*>(mem_Realloc(block, 100000));
  ASSERT_NE(block, nullptr);
  for (unsigned char i = 0; i < 100; ++i)
    EXPECT_EQ(block[i], i);
  std::memset(block + 100, 0, 100000 - 100);
  block = static_cast<unsigned char*>(mem_Realloc(block, 10));
  ASSERT_NE(block, nullptr);
  for (unsigned char i = 0; i < 10; ++i)
    EXPECT_EQ(block[i], i);
  mem_Free(block);
}

TEST(MemMemory, ReallocOfNothingAllocates) {
  void* const block = mem_Realloc(nullptr, 64);
  ASSERT_NE(block, nullptr);
  std::memset(block, 1, 64);
  mem_Free(block);
}

TEST(MemMemory, ReallocToNothingFrees) {
  // A leak checker sees the block if it is not freed.
  EXPECT_EQ(mem_Realloc(mem_Malloc(64), 0), nullptr);
}

TEST(MemMemory, FreeingNullDoesNothing) {
  mem_Free(nullptr);
}
