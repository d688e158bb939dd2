#include "MeshRead.h"

#include "MeshSamples.h"

#include <cstdlib>
#include <filesystem>
#include <random>

using namespace gsl_mesh_samples;

namespace {

/// Reads as ReadMesh does, but without a file unless a child process must open it.
Mesh ReadDamaged(const TemporaryFolder& folder, const std::string& name, const std::string& bytes,
                 std::string& path) {
  path = name;
  const MeshFormat format = gsl_mesh::DetectMeshFormat(bytes, name);
  if (format != MeshFormat::Assimp) return gsl_mesh::ReadMeshFromMemory(bytes, name, format);
  path = folder.Write(name, bytes);
  return gsl_mesh::ReadMesh(path);
}

/// Checks that a damaged file is read as a mesh or refused in one clear line that names the file.
void ExpectAnAnswer(const TemporaryFolder& folder, const std::string& name,
                    const std::string& bytes) {
  std::string path;
  try {
    const Mesh mesh = ReadDamaged(folder, name, bytes, path);
    EXPECT_GT(mesh.corners.size(), 0U);
    EXPECT_EQ(mesh.corners.size() % 3, 0U);
  } catch (const MeshError& e) {
    const std::string message = e.what();
    EXPECT_EQ(message.find(path + ": "), 0U) << message;
    EXPECT_EQ(message.find('\n'), std::string::npos) << message;
    EXPECT_GT(message.size(), path.size() + 5) << message;
  }
}

std::string Truncated(std::string bytes, std::mt19937& random) {
  bytes.resize(random() % bytes.size());
  return bytes;
}

std::string Flipped(std::string bytes, std::mt19937& random) {
  const std::size_t flips = 1 + random() % 8;
  for (std::size_t k = 0; k < flips; ++k) {
    bytes[random() % bytes.size()] = static_cast<char>(random() & 0xffU);
  }
  return bytes;
}

/// Replaces a number, which is a word of digits or four bytes.
std::string Recounted(std::string bytes, std::mt19937& random) {
  static const char* const numbers[] = {
      "0", "-1", "1", "65536", "5", "3", "4294967295", "99999999999999999999", "1e9"};
  const std::size_t at = random() % bytes.size();
  const std::size_t begin = bytes.find_first_of("0123456789", at);
  if (begin == std::string::npos || random() % 3 == 0) {
    const std::uint32_t values[] = {0, 1, 0xffffffffU, 0x7fffffffU, 0x01000000U};
    const std::size_t size = std::min<std::size_t>(4, bytes.size() - at);
    std::memcpy(bytes.data() + at, &values[random() % 5], size);
    return bytes;
  }
  const std::size_t end = std::min(bytes.find_first_not_of("0123456789", begin), bytes.size());
  return bytes.replace(begin, end - begin, numbers[random() % 9]);
}

/// Exchanges two parts of the file.
std::string Exchanged(const std::string& bytes, std::mt19937& random) {
  std::size_t cuts[3] = {random() % bytes.size(), random() % bytes.size(), random() % bytes.size()};
  std::sort(cuts, cuts + 3);
  return bytes.substr(0, cuts[0]) + bytes.substr(cuts[1], cuts[2] - cuts[1]) +
         bytes.substr(cuts[0], cuts[1] - cuts[0]) + bytes.substr(cuts[2]);
}

void ReadMutations(const Sample& sample, int rounds, std::mt19937& random) {
  const TemporaryFolder folder;
  for (int k = 0; k < rounds; ++k) {
    SCOPED_TRACE(sample.name + " round " + std::to_string(k));
    ExpectAnAnswer(folder, sample.name, Truncated(sample.bytes, random));
    ExpectAnAnswer(folder, sample.name, Flipped(sample.bytes, random));
    ExpectAnAnswer(folder, sample.name, Recounted(sample.bytes, random));
    ExpectAnAnswer(folder, sample.name, Exchanged(sample.bytes, random));
  }
}

} // namespace

TEST(MeshMutation, EveryTruncationOfASampleIsReadOrRefused) {
  const TemporaryFolder folder;
  for (const Sample& sample : AllSamples()) {
    const bool ours = gsl_mesh::DetectMeshFormat(sample.bytes, sample.name) != MeshFormat::Assimp;
    // A child process for every length would take long.
    const std::size_t step = ours ? 1 : 97;
    for (std::size_t size = 0; size < sample.bytes.size(); size += step) {
      SCOPED_TRACE(sample.name + " " + std::to_string(size));
      ExpectAnAnswer(folder, sample.name, sample.bytes.substr(0, size));
    }
  }
}

TEST(MeshMutation, DamagedSamplesAreReadOrRefused) {
  const unsigned seed = 4;
  std::printf("seed %u\n", seed);
  std::mt19937 random(seed);
  for (const Sample& sample : AllSamples()) {
    const bool ours = gsl_mesh::DetectMeshFormat(sample.bytes, sample.name) != MeshFormat::Assimp;
    ReadMutations(sample, ours ? 250 : 25, random);
  }
}

TEST(MeshMutation, DamagedRealMeshesAreReadOrRefused) {
  const char* const folder = std::getenv("GSL_MESH_DIR");
  if (folder == nullptr) {
    std::printf("GSL_MESH_DIR is not set: no real meshes are damaged\n");
    return;
  }
  const unsigned seed = 5;
  std::printf("seed %u\n", seed);
  std::mt19937 random(seed);
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file() || entry.path().extension() == ".md") continue;
    const Sample sample{entry.path().filename().string(), BytesOf(entry.path().string())};
    ReadMutations(sample, sample.bytes.size() > 100000 ? 2 : 10, random);
  }
}
