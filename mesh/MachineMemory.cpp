#include "MachineMemory.h"

#include <unistd.h>

namespace gsl_mesh {

std::uint64_t MemoryOfMachine() {
  const auto pages = sysconf(_SC_PHYS_PAGES);
  const auto pageSize = sysconf(_SC_PAGESIZE);
  if (pages <= 0 || pageSize <= 0) return 0;
  return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize);
}

} // namespace gsl_mesh
