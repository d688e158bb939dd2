#include "mem_Memory.h"

#include <cstdlib>

void* mem_Malloc(std::size_t size) {
  if (size == 0) return nullptr;
  return std::malloc(size);
}

void* mem_Realloc(void* block, std::size_t size) {
  if (size == 0) {
    std::free(block);
    return nullptr;
  }
  return std::realloc(block, size);
}

void mem_Free(void* block) {
  std::free(block);
}
