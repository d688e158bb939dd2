#include <cstdlib>

namespace {

// The tests are not in the folder of the import program, so they name its path.
[[maybe_unused]] const int named = setenv("GSL_MESH_IMPORT", GSL_IMPORT_PROGRAM, 1);

} // namespace
