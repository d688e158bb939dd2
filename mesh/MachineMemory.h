#ifndef GSL_MESH_MACHINE_MEMORY_H
#define GSL_MESH_MACHINE_MEMORY_H

#include <cstddef>
#include <cstdint>

namespace gsl_mesh {

/// Returns the physical memory in bytes; 0 when it is not known.
std::uint64_t MemoryOfMachine();

/// Asks the system for large pages under memory that has not been written to. Small memory keeps
/// its pages. It is a hint, which changes the time alone.
void PreferLargePages(void* begin, std::size_t bytes);

/// Reserves room in a vector or a string that will be filled. The first touch of ordinary pages
/// would take longer than filling them.
template <class Container>
void ReserveLarge(Container& container, std::size_t count) {
  container.reserve(count);
  PreferLargePages(container.data(), count * sizeof(*container.data()));
}

} // namespace gsl_mesh

#endif
