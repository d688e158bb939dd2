#ifndef MEM_MEMORY_H
#define MEM_MEMORY_H

#include "xh_Export.h"

#include <cstddef>

XH_API void* mem_Malloc(std::size_t size);
XH_API void mem_Free(void* block);

#endif
