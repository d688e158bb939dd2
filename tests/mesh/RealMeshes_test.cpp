#include "MeshRead.h"

#include "MeshSamples.h"

#include <cstdlib>

using namespace gsl_mesh_samples;
using gsl_mesh::ReadMesh;

/// The meshes are in the folder that the environment variable GSL_MESH_DIR names. Without that
/// folder these tests are skipped.
namespace {

const char* MeshFolder() {
  const char* const folder = std::getenv("GSL_MESH_DIR");
  if (folder == nullptr) std::printf("GSL_MESH_DIR is not set: no real mesh is read\n");
  return folder;
}

struct Expected {
  const char* name;
  std::size_t triangles;
  std::size_t notFinite;
  std::size_t withoutArea; ///< among the finite triangles
};

std::size_t CountNotFinite(const Mesh& mesh) {
  std::size_t count = 0;
  for (std::size_t k = 0; k < mesh.TriangleCount(); ++k) {
    if (!std::isfinite(TriangleArea(mesh, k))) ++count;
  }
  return count;
}

std::size_t CountWithoutArea(const Mesh& mesh) {
  std::size_t count = 0;
  for (std::size_t k = 0; k < mesh.TriangleCount(); ++k) {
    if (TriangleArea(mesh, k) == 0.0) ++count;
  }
  return count;
}

} // namespace

TEST(RealMeshes, HaveTheirTriangles) {
  const char* const folder = MeshFolder();
  if (folder == nullptr) return;
  const Expected rows[] = {{"featuretype.stl", 3476, 0, 0},
                           {"adis16480.stl", 7436, 0, 0},
                           {"counter_unitsmm.stl", 83750, 0, 0},
                           {"idler_riser.stl", 1572, 0, 0},
                           {"cycloidal.ply", 43368, 0, 0},
                           {"nist_insert.stl", 3956, 0, 15},
                           {"nist_pump_base.stl", 1344, 0, 0},
                           {"nist_regulator.stl", 528, 0, 1},
                           {"nefertiti_lowres.obj", 70000, 0, 0},
                           {"koala.obj", 99994, 0, 0},
                           {"sword.obj", 44582, 0, 0},
                           {"broken_pump_base.stl", 1319, 2, 1}};
  for (const Expected& row : rows) {
    SCOPED_TRACE(row.name);
    const auto start = std::chrono::steady_clock::now();
    const Mesh mesh = ReadMesh(std::string(folder) + "/" + row.name);
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    std::printf("%-22s %6zu triangles %.4f s\n", row.name, mesh.TriangleCount(), time.count());
    EXPECT_EQ(mesh.TriangleCount(), row.triangles);
    EXPECT_EQ(CountNotFinite(mesh), row.notFinite);
    EXPECT_EQ(CountWithoutArea(mesh), row.withoutArea);
    EXPECT_TRUE(mesh.warnings.empty());
  }
}

TEST(RealMeshes, ConcavePolygonsAndContinuedLinesKeepTheirArea) {
  const char* const folder = MeshFolder();
  if (folder == nullptr) return;
  const Mesh mesh = ReadMesh(std::string(folder) + "/wallhole.obj");
  EXPECT_EQ(mesh.TriangleCount(), 66U);
  // Two squares of 10 by 10, two with a notch of 5 by 2, the three sides of the room in the wall,
  // two halves of the front, and four oblique triangles of 5 by 5.
  const double expected =
      2 * 100.0 + 2 * 90.0 + 2 * 50.0 + 20.0 + 2 * 40.0 + 4 * 25 * std::sqrt(2.0);
  EXPECT_NEAR(Area(mesh), expected, 1e-9);
}

TEST(RealMeshes, HostileFilesAreReadOrRefused) {
  const char* const folder = MeshFolder();
  if (folder == nullptr) return;
  const struct {
    const char* name;
    std::size_t triangles;
    const char* message; ///< null when the file can be read
  } rows[] = {{"comments.off", 12, nullptr},
              {"empty.stl", 0, "holds no triangles"},
              {"face_in_group_name.obj", 0, "holds no triangles"},
              {"jacked.obj", 12, nullptr},
              {"multibody.stl", 32, nullptr},
              {"nancolor.obj", 12, nullptr},
              {"negative_indices.obj", 12, nullptr},
              {"notenoughindices.obj", 1, nullptr},
              {"origin_inside.stl", 28, nullptr},
              {"plane.ply", 2, nullptr},
              {"ply_empty_bin.ply", 0, "holds no triangles"},
              {"polygonfaces.obj", 3, nullptr},
              {"soup.stl", 100, nullptr},
              {"stl_empty_ascii.stl", 0, "holds no triangles"},
              {"stl_empty_bin.stl", 0, "holds no triangles"},
              {"two_objects.obj", 16, nullptr},
              {"whitespace.off", 12, nullptr}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string path = std::string(folder) + "/hostile/" + row.name;
    if (row.message != nullptr) {
      EXPECT_EQ(ErrorOfFile(path), path + ": " + row.message);
    } else {
      EXPECT_EQ(ReadMesh(path).TriangleCount(), row.triangles);
    }
  }
}
