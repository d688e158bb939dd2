// Feeds any bytes to the reader of the format GSL_FUZZ_FORMAT. It returns a mesh of whole
// triangles, or one line that names the file.
//
// Assimp's formats are left out: its importers run in a separate program because such input makes
// them crash.

#include "FuzzInput.h"
#include "Mesh.h"
#include "MeshForeign.h"
#include "MeshRead.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // A copy of the exact size, so that a read beyond its end is noticed.
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  const std::string name = "input";
  gsl_mesh::DetectMeshFormat(bytes, name);
  Require(gsl_mesh::ForeignFile(bytes, name).find('\n') == std::string::npos);
  try {
    const gsl_mesh::Mesh mesh =
        gsl_mesh::ReadMeshFromMemory(bytes, name, gsl_mesh::MeshFormat::GSL_FUZZ_FORMAT);
    Require(mesh.TriangleCount() > 0 && mesh.corners.size() == 3 * mesh.TriangleCount());
    for (const std::string& warning : mesh.warnings)
      Require(warning.find('\n') == warning.npos);
  } catch (const gsl_mesh::MeshError& e) {
    const std::string_view message = e.what();
    Require(message.substr(0, name.size() + 2) == name + ": ");
    Require(message.find('\n') == message.npos);
  }
  return 0;
}
