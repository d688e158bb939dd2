#ifndef XH_MEMORY_H
#define XH_MEMORY_H

#include "xh_Export.h"

/// The recorder of this host's memory. It counts each request of the whole process: the global
/// allocation operators and the arrays of the object model.
namespace xh_Memory {

/// Returns the number of requests that succeeded.
XH_API unsigned long Requests();
/// Returns the number of blocks that nobody has released.
XH_API long LiveBlocks();
/// Lets `count` further requests of this thread succeed. Every request after them fails.
XH_API void FailAfter(unsigned long count);
/// Ends FailAfter.
XH_API void StopFailing();

/// Return null when there is no memory.
XH_API void* Take(unsigned long size, unsigned long alignment);
XH_API void Release(void* block);

} // namespace xh_Memory

#endif
