// Feeds any bytes to the mesh readers. Each returns a mesh of whole triangles, or one line that
// names the file.
//
// The first byte chooses the reader. Assimp's formats are left out: its importers run in a separate
// program because such input makes them crash.

#include "Mesh.h"
#include "MeshForeign.h"
#include "MeshRead.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

gsl_mesh::MeshFormat FormatOf(std::uint8_t choice) {
  switch (choice) {
  case 's':
    return gsl_mesh::MeshFormat::Stl;
  case 'o':
    return gsl_mesh::MeshFormat::Obj;
  case 'p':
    return gsl_mesh::MeshFormat::Ply;
  default:
    return gsl_mesh::MeshFormat::Off;
  }
}

void Require(bool holds) {
  if (!holds) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  // A copy of the exact size, so that a read beyond its end is noticed.
  const std::string bytes(reinterpret_cast<const char*>(data + 1), size - 1);
  const std::string name = "input";
  gsl_mesh::DetectMeshFormat(bytes, name);
  Require(gsl_mesh::ForeignFile(bytes, name).find('\n') == std::string::npos);
  try {
    const gsl_mesh::Mesh mesh = gsl_mesh::ReadMeshFromMemory(bytes, name, FormatOf(data[0]));
    Require(mesh.TriangleCount() > 0 && mesh.corners.size() == 3 * mesh.TriangleCount());
  } catch (const gsl_mesh::MeshError& e) {
    const std::string_view message = e.what();
    Require(message.substr(0, name.size() + 2) == name + ": ");
    Require(message.find('\n') == message.npos);
  }
  return 0;
}
