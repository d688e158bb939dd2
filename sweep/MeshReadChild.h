#ifndef GSL_SWEEP_MESH_READ_CHILD_H
#define GSL_SWEEP_MESH_READ_CHILD_H

#include "Mesh.h"

#include <string>

namespace gsl_sweep {

using MeshReader = Mesh (*)(const std::string& path);

/// Runs a reader that was not written for damaged files in a child process, so that a crash, a
/// runaway allocation or chatter on the standard streams stays there. The child ends when its
/// parent does.
///
/// Errors     MeshError: the reader's own, or that it did not survive the file.
Mesh ReadInChildProcess(const std::string& path, MeshReader read);

} // namespace gsl_sweep

#endif
