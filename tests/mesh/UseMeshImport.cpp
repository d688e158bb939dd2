#include <cstdlib>

namespace {

// The tests are in another folder than the import program, so they name it.
[[maybe_unused]] const int named = setenv("GSL_MESH_IMPORT", GSL_IMPORT_PROGRAM, 1);

} // namespace
