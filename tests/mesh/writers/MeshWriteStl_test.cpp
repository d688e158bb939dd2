#include "MeshWrite.h"

#include "MeshSamples.h"
#include "Numbers.h"
#include "OutputFile.h"

#include <limits>
#include <random>

using namespace gsl_mesh_samples;
using gsl_mesh::OutputError;
using gsl_mesh::ReadMesh;
using gsl_mesh::WriteMesh;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

float FloatAt(const std::string& bytes, std::size_t offset) {
  float value = 0.0F;
  std::memcpy(&value, bytes.data() + offset, sizeof value);
  return value;
}

} // namespace

TEST(MeshWriteStl, WrittenAndReadIsExactInSinglePrecision) {
  const TemporaryFolder folder;
  std::mt19937 random(15);
  Mesh mesh;
  // Any pattern of bits: large, tiny, subnormal, NaN and infinite numbers.
  for (int k = 0; k < 3 * 3000; ++k) {
    float c[3];
    for (float& value : c) {
      const std::uint32_t bits = static_cast<std::uint32_t>(random());
      std::memcpy(&value, &bits, sizeof value);
    }
    mesh.corners.push_back(
        {static_cast<double>(c[0]), static_cast<double>(c[1]), static_cast<double>(c[2])});
  }
  const std::string path = folder.Path("part.stl");
  WriteMesh(path, mesh, false);
  const Mesh read = ReadMesh(path);
  ASSERT_EQ(read.corners.size(), mesh.corners.size());
  for (std::size_t k = 0; k < mesh.corners.size(); ++k) {
    const double written[] = {mesh.corners[k].x, mesh.corners[k].y, mesh.corners[k].z};
    const double back[] = {read.corners[k].x, read.corners[k].y, read.corners[k].z};
    for (int c = 0; c < 3; ++c) {
      if (std::isnan(written[c]))
        EXPECT_TRUE(std::isnan(back[c]));
      else
        EXPECT_EQ(back[c], written[c]);
    }
  }
}

TEST(MeshWriteStl, CoordinatesAreRoundedToNearest) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("part.stl");
  WriteMesh(path, {"", {{0.1, 1.0 / 3.0, 1e-50}, {1, 0, 0}, {0, 1, 0}}, {}}, false);
  const Mesh read = ReadMesh(path);
  EXPECT_EQ(read.corners[0].x, 0.100000001490116119384765625);
  EXPECT_EQ(read.corners[0].y, 0.3333333432674407958984375);
  EXPECT_EQ(read.corners[0].z, 0.0);
}

TEST(MeshWriteStl, FollowsTheLayoutOfTheFormat) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("part.stl");
  WriteMesh(path, {"", {{0, 0, 5}, {2, 0, 5}, {0, 3, 5}}, {}}, false);
  const std::string bytes = BytesOf(path);
  ASSERT_EQ(bytes.size(), 134U);
  EXPECT_NE(bytes.substr(0, 5), "solid");
  EXPECT_EQ(bytes.substr(80, 4), std::string("\x01\0\0\0", 4));
  const float expected[] = {0, 0, 1, 0, 0, 5, 2, 0, 5, 0, 3, 5};
  for (std::size_t k = 0; k < 12; ++k)
    EXPECT_EQ(FloatAt(bytes, 84 + 4 * k), expected[k]);
  EXPECT_EQ(bytes.substr(132), std::string(2, '\0'));
}

TEST(MeshWriteStl, NormalOfATriangleWithoutAreaIsZero) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("part.stl");
  const double nan = std::numeric_limits<double>::quiet_NaN();
  WriteMesh(path,
            {"",
             {{0, 0, 0},
              {1, 1, 1},
              {2, 2, 2},
              {nan, 0, 0},
              {1, 0, 0},
              {0, 1, 0},
              {0, 0, 0},
              {infinity, 0, 0},
              {0, 1, 0}},
             {}},
            false);
  const std::string bytes = BytesOf(path);
  ASSERT_EQ(bytes.size(), 84U + 3 * 50);
  for (const std::size_t record : {0U, 1U, 2U}) {
    for (const std::size_t k : {0U, 1U, 2U}) {
      EXPECT_EQ(FloatAt(bytes, 84 + 50 * record + 4 * k), 0.0F);
    }
  }
}

TEST(MeshWriteStl, CoordinateBeyondSinglePrecisionIsRefused) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("part.stl");
  const double largest = std::numeric_limits<float>::max();
  WriteMesh(path, {"", {{largest, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {}}, false);
  EXPECT_EQ(ReadMesh(path).corners[0].x, largest);
  const double beyond = numbers::Above(largest);
  try {
    WriteMesh(path, {"", {{0, 0, 0}, {1, -beyond, 0}, {0, 1, 0}}, {}}, true);
    ADD_FAILURE() << "not refused";
  } catch (const OutputError& e) {
    EXPECT_EQ(e.what(), path + ": a coordinate is too large for the single precision of STL");
  }
  EXPECT_EQ(ReadMesh(path).corners[0].x, largest);
}
