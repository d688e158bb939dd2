#ifndef MEM_MEMORY_H
#define MEM_MEMORY_H

#include "mem_Export.h"

#include <cstddef>

/// The process allocator. Blocks are aligned for any type and released with mem_Free.

/// Returns null when the system has no memory left or `size` is 0.
[[nodiscard]] GSL_HOST_API void* mem_Malloc(std::size_t size);

/// Grows or shrinks a block, keeping its first min(old, new) bytes; a null block is allocated.
/// Returns null, and keeps the block as it was, when there is no memory. Size 0 frees the block and
/// returns null.
[[nodiscard]] GSL_HOST_API void* mem_Realloc(void* block, std::size_t size);

/// Does nothing for null.
GSL_HOST_API void mem_Free(void* block);

#endif
