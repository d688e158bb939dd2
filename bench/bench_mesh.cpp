// Measures the reading of mesh files beside a plain read of the same bytes into memory.

#include "MeshRead.h"
#include "MeshWrite.h"
#include "RandomNumbers.h"
#include "TemporaryFolder.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <malloc.h>

namespace {

using gsl_arithmetic::Coord3;
using gsl_mesh::Mesh;

constexpr std::size_t kSide = 500; ///< squares on a side, with two triangles each

/// Returns a bumpy sheet with coordinates of single precision.
Mesh Sheet() {
  RandomNumbers random(20240229);
  std::vector<Coord3> vertices;
  const auto coordinate = [&](std::size_t k) {
    const float jitter = static_cast<float>(random.Next() % 1000) * 0.0007F;
    return static_cast<double>(static_cast<float>(k) + jitter);
  };
  for (std::size_t i = 0; i <= kSide; ++i) {
    for (std::size_t j = 0; j <= kSide; ++j)
      vertices.push_back({coordinate(i), coordinate(j), coordinate(0)});
  }
  Mesh mesh;
  const auto corner = [&](std::size_t i, std::size_t j) {
    mesh.corners.push_back(vertices[i * (kSide + 1) + j]);
  };
  for (std::size_t i = 0; i < kSide; ++i) {
    for (std::size_t j = 0; j < kSide; ++j) {
      corner(i, j);
      corner(i + 1, j);
      corner(i + 1, j + 1);
      corner(i, j);
      corner(i + 1, j + 1);
      corner(i, j + 1);
    }
  }
  return mesh;
}

/// Writes a PLY file of text, which the library itself does not write.
void WritePlyText(const std::string& path, const Mesh& mesh) {
  std::FILE* const file = std::fopen(path.c_str(), "w");
  if (file == nullptr) return;
  std::fprintf(file, "ply\nformat ascii 1.0\nelement vertex %zu\n", mesh.corners.size());
  std::fprintf(file, "property float x\nproperty float y\nproperty float z\n");
  std::fprintf(file, "element face %zu\nproperty list uchar int vertex_indices\nend_header\n",
               mesh.TriangleCount());
  for (const Coord3& p : mesh.corners)
    std::fprintf(file, "%.9g %.9g %.9g\n", p.x, p.y, p.z);
  for (std::size_t k = 0; k < mesh.TriangleCount(); ++k)
    std::fprintf(file, "3 %zu %zu %zu\n", 3 * k, 3 * k + 1, 3 * k + 2);
  std::fclose(file);
}

/// Writes an STL file of text, which the library itself does not write.
void WriteStlText(const std::string& path, const Mesh& mesh) {
  std::FILE* const file = std::fopen(path.c_str(), "w");
  if (file == nullptr) return;
  std::fprintf(file, "solid sheet\n");
  for (std::size_t k = 0; k < mesh.TriangleCount(); ++k) {
    std::fprintf(file, "  facet normal 0 0 1\n    outer loop\n");
    for (std::size_t c = 3 * k; c < 3 * k + 3; ++c) {
      const Coord3& p = mesh.corners[c];
      std::fprintf(file, "      vertex %.9g %.9g %.9g\n", p.x, p.y, p.z);
    }
    std::fprintf(file, "    endloop\n  endfacet\n");
  }
  std::fprintf(file, "endsolid sheet\n");
  std::fclose(file);
}

/// The files, which exist as long as the program runs.
class Files {
public:
  Files() {
    const Mesh mesh = Sheet();
    for (const char* name : {"sheet.stl", "sheet.ply", "sheet.obj", "sheet.off"})
      gsl_mesh::WriteMesh(PathOf(name), mesh, false);
    WritePlyText(PathOf("text.ply"), mesh);
    WriteStlText(PathOf("text.stl"), mesh);
  }

  std::string PathOf(const std::string& name) const { return m_folder.Path(name); }

private:
  TemporaryFolder m_folder;
};

const Files& SampleFiles() {
  static const Files files;
#if defined(M_MMAP_THRESHOLD)
  // A program reads a mesh into memory that it has not used before, so every pass gets such memory.
  mallopt(M_MMAP_THRESHOLD, 1 << 20);
#endif
  return files;
}

void CountBytes(benchmark::State& state, const std::string& path) {
  const auto size = static_cast<std::int64_t>(std::filesystem::file_size(path));
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * size);
}

void Ours(benchmark::State& state, const char* name) {
  const std::string path = SampleFiles().PathOf(name);
  for (auto _ : state) {
    const Mesh mesh = gsl_mesh::ReadMesh(path);
    if (mesh.TriangleCount() != 2 * kSide * kSide) state.SkipWithError("wrong number of triangles");
    benchmark::DoNotOptimize(mesh.corners.data());
  }
  CountBytes(state, path);
}

void PlainRead(benchmark::State& state, const char* name) {
  const std::string path = SampleFiles().PathOf(name);
  for (auto _ : state) {
    std::ifstream stream(path, std::ios::binary);
    std::vector<char> bytes(std::filesystem::file_size(path));
    stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!stream) state.SkipWithError("cannot be read");
    benchmark::DoNotOptimize(bytes.data());
  }
  CountBytes(state, path);
}

#define READ(NAME, FILE)                                                                           \
  BENCHMARK_CAPTURE(Ours, NAME, FILE)->Name("Read" #NAME "/ours")->Unit(benchmark::kMillisecond);  \
  BENCHMARK_CAPTURE(PlainRead, NAME, FILE)                                                         \
      ->Name("Read" #NAME "/PlainRead")                                                            \
      ->Unit(benchmark::kMillisecond)

READ(StlBinary, "sheet.stl");
READ(StlText, "text.stl");
READ(PlyBinary, "sheet.ply");
READ(PlyText, "text.ply");
READ(Obj, "sheet.obj");
READ(Off, "sheet.off");

} // namespace
