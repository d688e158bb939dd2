#include "MachineMemory.h"

#include <sys/mman.h>
#include <unistd.h>

namespace gsl_mesh {

std::uint64_t MemoryOfMachine() {
  const auto pages = sysconf(_SC_PHYS_PAGES);
  const auto pageSize = sysconf(_SC_PAGESIZE);
  if (pages <= 0 || pageSize <= 0) return 0;
  return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize);
}

void PreferLargePages(void* begin, std::size_t bytes) {
#if defined(MADV_HUGEPAGE)
  constexpr std::size_t kLeast = std::size_t{4} << 20; // holds at least one large page
  if (bytes < kLeast) return;
  // The call takes whole pages.
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  const std::size_t skipped = (page - reinterpret_cast<std::uintptr_t>(begin) % page) % page;
  madvise(static_cast<char*>(begin) + skipped, (bytes - skipped) / page * page, MADV_HUGEPAGE);
#else
  static_cast<void>(begin);
  static_cast<void>(bytes);
#endif
}

} // namespace gsl_mesh
