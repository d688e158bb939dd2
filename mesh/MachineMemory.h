#ifndef GSL_MESH_MACHINE_MEMORY_H
#define GSL_MESH_MACHINE_MEMORY_H

#include <cstdint>

namespace gsl_mesh {

/// Returns the physical memory in bytes; 0 when it is not known.
std::uint64_t MemoryOfMachine();

} // namespace gsl_mesh

#endif
