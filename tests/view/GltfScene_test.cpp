#include "GltfScene.h"

#include "OutputFile.h"
#include "TemporaryFolder.h"
#include "ViewSamples.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using gsl_arithmetic::Coord3;
using gsl_sweep::ContactKind;
using gsl_view::ViewScene;
using view_samples::BoxCorners;
using view_samples::FallingBox;
using view_samples::Sample;
using view_samples::ViewOf;
using Json = nlohmann::json;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::uint32_t NumberAt(const std::string& bytes, std::size_t at) {
  std::uint32_t number = 0;
  for (std::size_t k = 4; k-- > 0;)
    number = number << 8 | static_cast<unsigned char>(bytes.at(at + k));
  return number;
}

/// A binary glTF file, read by the rules of the format.
class Glb {
public:
  explicit Glb(const std::string& bytes) {
    EXPECT_EQ(bytes.substr(0, 4), "glTF");
    EXPECT_EQ(NumberAt(bytes, 4), 2u);
    EXPECT_EQ(NumberAt(bytes, 8), bytes.size());
    const std::size_t size = NumberAt(bytes, 12);
    EXPECT_EQ(size % 4, 0u);
    EXPECT_EQ(bytes.substr(16, 4), "JSON");
    json = Json::parse(bytes.substr(20, size));
    EXPECT_EQ(NumberAt(bytes, 20 + size) % 4, 0u);
    EXPECT_EQ(bytes.substr(24 + size, 4), std::string("BIN\0", 4));
    m_binary = bytes.substr(28 + size);
    EXPECT_EQ(NumberAt(bytes, 20 + size), m_binary.size());
    EXPECT_EQ(json.at("buffers").at(0).at("byteLength"), m_binary.size());
    EXPECT_EQ(json.at("asset").at("version"), "2.0");
  }

  /// Returns the node with a name, which must be there once.
  const Json& Node(const std::string& name) const {
    const Json* found = nullptr;
    for (const Json& node : json.at("nodes")) {
      if (node.at("name") != name) continue;
      EXPECT_EQ(found, nullptr) << name;
      found = &node;
    }
    if (found == nullptr) throw std::runtime_error("no node " + name);
    return *found;
  }

  bool HasNode(const std::string& name) const {
    for (const Json& node : json.at("nodes")) {
      if (node.at("name") == name) return true;
    }
    return false;
  }

  /// Returns nine numbers for each triangle of a node, by its place in the scene.
  std::vector<double> CornersOf(const Json& node) const {
    const Json& part =
        json.at("meshes").at(node.at("mesh").get<std::size_t>()).at("primitives").at(0);
    const auto vertices = Numbers<float>(part.at("attributes").at("POSITION"), 5126, "VEC3", 3);
    const auto corners = Numbers<std::uint32_t>(part.at("indices"), 5125, "SCALAR", 1);
    ExpectBounds(json.at("accessors").at(part.at("attributes").at("POSITION").get<std::size_t>()),
                 vertices);
    std::vector<double> numbers;
    for (const std::uint32_t corner : corners) {
      const double place[] = {vertices.at(3 * corner), vertices.at(3 * corner + 1),
                              vertices.at(3 * corner + 2)};
      const Coord3 p = Turned(node, place);
      const double turned[] = {p.x, p.y, p.z};
      for (std::size_t axis = 0; axis < 3; ++axis)
        numbers.push_back(turned[axis] + node.at("translation").at(axis).get<double>());
    }
    return numbers;
  }

  Json json;

private:
  /// Returns q * (scale * p) * conjugate(q), by products of quaternions.
  static Coord3 Turned(const Json& node, const double (&place)[3]) {
    double p[4] = {0, 0, 0, 0}, q[4] = {0, 0, 0, 1};
    for (std::size_t axis = 0; axis < 3; ++axis)
      p[axis] = node.at("scale").at(axis).get<double>() * place[axis];
    if (node.contains("rotation")) {
      for (std::size_t k = 0; k < 4; ++k)
        q[k] = node.at("rotation").at(k).get<double>();
    }
    double half[4] = {}, whole[4] = {};
    Multiply(q, p, half);
    const double back[4] = {-q[0], -q[1], -q[2], q[3]};
    Multiply(half, back, whole);
    return {whole[0], whole[1], whole[2]};
  }

  static void Multiply(const double (&a)[4], const double (&b)[4], double (&out)[4]) {
    out[0] = a[3] * b[0] + a[0] * b[3] + a[1] * b[2] - a[2] * b[1];
    out[1] = a[3] * b[1] - a[0] * b[2] + a[1] * b[3] + a[2] * b[0];
    out[2] = a[3] * b[2] + a[0] * b[1] - a[1] * b[0] + a[2] * b[3];
    out[3] = a[3] * b[3] - a[0] * b[0] - a[1] * b[1] - a[2] * b[2];
  }

  static void ExpectBounds(const Json& accessor, const std::vector<float>& vertices) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      float low = vertices.at(axis), high = low;
      for (std::size_t k = axis; k < vertices.size(); k += 3) {
        low = std::min(low, vertices[k]);
        high = std::max(high, vertices[k]);
      }
      EXPECT_EQ(accessor.at("min").at(axis).get<float>(), low);
      EXPECT_EQ(accessor.at("max").at(axis).get<float>(), high);
    }
  }

  template <class Number>
  std::vector<Number> Numbers(const Json& index, int component, const std::string& type,
                              std::size_t width) const {
    const Json& accessor = json.at("accessors").at(index.get<std::size_t>());
    EXPECT_EQ(accessor.at("componentType"), component);
    EXPECT_EQ(accessor.at("type"), type);
    const Json& view = json.at("bufferViews").at(accessor.at("bufferView").get<std::size_t>());
    const std::size_t from = view.at("byteOffset"), size = view.at("byteLength");
    EXPECT_EQ(size, 4 * width * accessor.at("count").get<std::size_t>());
    EXPECT_EQ(from % 4, 0u);
    EXPECT_LE(from + size, m_binary.size());
    std::vector<Number> numbers(size / 4);
    for (std::size_t k = 0; k < numbers.size(); ++k) {
      const std::uint32_t bits = NumberAt(m_binary, from + 4 * k);
      std::memcpy(&numbers[k], &bits, sizeof bits);
    }
    return numbers;
  }

  std::string m_binary;
};

/// Returns the file of a sample, whose moving body has gone its travel along z.
std::string FileOf(const ViewScene& scene) {
  std::vector<double> moved;
  const gsl_sweep::TriangleView& view = scene.moving.triangles;
  const Coord3& d = scene.answer.unitDirection;
  const double travel = scene.answer.contact.travel;
  const double step[] = {d.x * travel, d.y * travel, d.z * travel};
  for (std::size_t k = 0; k < 9 * view.triangleCount; ++k)
    moved.push_back(view.vertices[k] + step[k % 3]);
  std::string bytes;
  gsl_view::MakeGltfScene(scene, ViewOf(moved), [&](std::string_view part) { bytes += part; });
  return bytes;
}

void ExpectNear(const std::vector<double>& numbers, const std::vector<double>& expected,
                double error) {
  ASSERT_EQ(numbers.size(), expected.size());
  for (std::size_t k = 0; k < numbers.size(); ++k)
    EXPECT_NEAR(numbers[k], expected[k], error) << k;
}

Coord3 PointOf(const Json& json) {
  return {json.at(0), json.at(1), json.at(2)};
}

TEST(GltfScene, HoldsTheMovedBodyAndTheFixedBody) {
  const Sample sample = FallingBox();
  const Glb file(FileOf(sample.scene));
  // The box falls by 2 from 3, onto the slab.
  ExpectNear(file.CornersOf(file.Node("moving.stl")), BoxCorners({0.25, 0.25, 1}, {1.25, 1.25, 2}),
             0x1p-22);
  ExpectNear(file.CornersOf(file.Node("fixed.stl")), BoxCorners({-1, -1, 0}, {3, 2, 1}), 0x1p-22);
  EXPECT_EQ(file.json.at("scene"), 0);
  EXPECT_EQ(file.json.at("scenes").at(0).at("nodes").size(), 3u);
  EXPECT_EQ(file.json.at("asset").at("generator"), "gsl-sweep 1.2.3");
}

TEST(GltfScene, ASmallBodyKeepsItsShape) {
  Sample sample(BoxCorners({90, 0, 3}, {90.001, 0.001, 3.001}),
                {BoxCorners({80, -1, 0}, {100, 2, 1})}, {0.0, 0.0, -1.0});
  sample.Ask();
  const Glb file(FileOf(sample.scene));
  ExpectNear(file.CornersOf(file.Node("moving.stl")),
             BoxCorners({90, 0, 1}, {90.001, 0.001, 1.001}), 1e-10);
}

TEST(GltfScene, AMarkIsSmallBesideASmallBody) {
  Sample sample(BoxCorners({90, 0, 3}, {90.001, 0.001, 3.001}),
                {BoxCorners({80, -1, 0}, {100, 2, 1})}, {0.0, 0.0, -1.0});
  sample.Ask();
  const Glb file(FileOf(sample.scene));
  EXPECT_NEAR(file.Node("contact point").at("scale").at(0).get<double>(),
              0.1 * 0.001 * std::sqrt(3.0), 1e-9);
}

/// Returns what a viewer has that keeps places in single precision.
double Rounded(const Json& number) {
  return double{number.get<float>()};
}

TEST(GltfScene, BodiesFarFromTheOriginStayWhereTheyAreToEachOther) {
  // Two cubes of 0.1 meet side by side; single precision at 5.4e6 has steps of 0.5.
  const double far = 5.4e6, high = far + 0.1;
  Sample sample(BoxCorners({far + 0.5, 1e6, 0}, {far + 0.6, 1e6 + 0.1, 0.1}),
                {BoxCorners({far, 1e6, 0}, {high, 1e6 + 0.1, 0.1})}, {-1.0, 0.0, 0.0});
  sample.Ask();
  const Glb file(FileOf(sample.scene));
  const Json& moving = file.Node("moving.stl").at("translation");
  const Json& fixed = file.Node("fixed.stl").at("translation");
  EXPECT_NEAR(Rounded(moving[0]) - Rounded(fixed[0]), 0.1, 1e-7);
  EXPECT_NEAR(Rounded(moving[1]), Rounded(fixed[1]), 1e-7);
  const Json& extras = file.json.at("scenes").at(0).at("extras");
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const double middle[] = {far + 0.05, 1e6 + 0.05, 0.05};
    EXPECT_NEAR(extras.at("origin")[axis].get<double>() + fixed[axis].get<double>(), middle[axis],
                1e-9);
    EXPECT_NEAR(file.Node("contact point").at("translation")[axis].get<double>() +
                    extras.at("origin")[axis].get<double>(),
                extras.at("fixed").at("point")[axis].get<double>(), 1e-9);
  }
}

TEST(GltfScene, BodiesNearTheOriginKeepIt) {
  // Up to 128 times the size of the scene.
  for (const double far : {0.0, 500.0}) {
    Sample asked(BoxCorners({far, 0, 3}, {far + 1, 1, 4}),
                 {BoxCorners({far, 0, 0}, {far + 3, 3, 1})}, {0.0, 0.0, -1.0});
    asked.Ask();
    const Glb file(FileOf(asked.scene));
    EXPECT_EQ(file.json.at("scenes").at(0).at("extras").at("origin"), Json({0.0, 0.0, 0.0}));
    EXPECT_EQ(file.Node("fixed.stl").at("translation")[0].get<double>(), far + 1.5);
  }
}

TEST(GltfScene, TheContactIsMarkedWithItsNormal) {
  const Sample sample = FallingBox();
  const Glb file(FileOf(sample.scene));
  const Json& contact = file.Node("contact");
  ASSERT_EQ(contact.at("children").size(), 2u);
  const Coord3 point = sample.scene.answer.contact.fixedPoint;
  EXPECT_EQ(point.z, 1.0);
  const Json& marker = file.Node("contact point");
  EXPECT_EQ(PointOf(marker.at("translation")).x, point.x);
  EXPECT_EQ(PointOf(marker.at("translation")).z, 1.0);
  // The box around both bodies is 4 by 3 by 2; a tenth of the smaller body is more.
  const double radius = 0.006 * std::sqrt(16.0 + 9.0 + 4.0);
  const std::vector<double> corners = file.CornersOf(marker);
  ASSERT_FALSE(corners.empty());
  for (std::size_t k = 0; k < corners.size(); k += 3) {
    EXPECT_NEAR(std::hypot(corners[k] - point.x, corners[k + 1] - point.y, corners[k + 2] - 1.0),
                radius, 1e-6 * radius);
  }
  // The cone begins at the point and ends above it.
  double highest = 0.0;
  const std::vector<double> cone = file.CornersOf(file.Node("contact normal"));
  for (std::size_t k = 2; k < cone.size(); k += 3) {
    EXPECT_GE(cone[k], 1.0 - 1e-6 * radius);
    highest = std::max(highest, cone[k]);
  }
  EXPECT_NEAR(highest, 1.0 + 9.0 * radius, 1e-6 * radius);
}

/// Returns six times the volume that triangles enclose, which is positive when they face outwards.
double SixVolumes(const std::vector<double>& c) {
  double sum = 0.0;
  for (std::size_t k = 0; k + 9 <= c.size(); k += 9) {
    sum += c[k] * (c[k + 4] * c[k + 8] - c[k + 5] * c[k + 7]) +
           c[k + 1] * (c[k + 5] * c[k + 6] - c[k + 3] * c[k + 8]) +
           c[k + 2] * (c[k + 3] * c[k + 7] - c[k + 4] * c[k + 6]);
  }
  return sum;
}

TEST(GltfScene, TheNormalTurnsWithTheContactAndMarksFaceOutwards) {
  const double part = std::sqrt(1.0 / 3.0);
  for (const Coord3& normal :
       {Coord3{0, 0, 1}, Coord3{0, 0, -1}, Coord3{1, 0, 0}, Coord3{0, -1, 0}, Coord3{0.6, 0, -0.8},
        Coord3{part, part, -part}, Coord3{-part, part, part}}) {
    Sample sample = FallingBox();
    sample.scene.answer.contact.normal = normal;
    const Glb file(FileOf(sample.scene));
    const Coord3 point = sample.scene.answer.contact.fixedPoint;
    std::vector<double> cone = file.CornersOf(file.Node("contact normal"));
    double farthest = 0.0;
    Coord3 tip{0, 0, 0};
    for (std::size_t k = 0; k < cone.size(); k += 3) {
      const Coord3 p{cone[k] - point.x, cone[k + 1] - point.y, cone[k + 2] - point.z};
      const double length = std::hypot(p.x, p.y, p.z);
      if (length <= farthest) continue;
      farthest = length;
      tip = p;
    }
    EXPECT_NEAR(tip.x / farthest, normal.x, 1e-6);
    EXPECT_NEAR(tip.y / farthest, normal.y, 1e-6);
    EXPECT_NEAR(tip.z / farthest, normal.z, 1e-6);
    EXPECT_GT(SixVolumes(cone), 0.0);
    EXPECT_GT(SixVolumes(file.CornersOf(file.Node("contact point"))), 0.0);
  }
}

TEST(GltfScene, AContactWithoutANormalHasNoCone) {
  Sample sample = FallingBox();
  sample.scene.answer.contact.hasNormal = false;
  const Glb file(FileOf(sample.scene));
  EXPECT_FALSE(file.HasNode("contact normal"));
  EXPECT_TRUE(file.json.at("scenes").at(0).at("extras").at("normal").is_null());
}

TEST(GltfScene, AClearanceHasTwoPoints) {
  Sample sample = FallingBox();
  sample.scene.question.clearance = 0.5;
  sample.Ask();
  EXPECT_EQ(sample.scene.answer.contact.travel, 1.5);
  const Glb file(FileOf(sample.scene));
  EXPECT_EQ(PointOf(file.Node("contact point").at("translation")).z, 1.0);
  EXPECT_EQ(PointOf(file.Node("contact point of the moving body").at("translation")).z, 1.5);
}

TEST(GltfScene, ASolidInsideAnotherHasNoMark) {
  Sample sample(BoxCorners({1, 1, 1}, {2, 2, 2}), {BoxCorners({0, 0, 0}, {3, 3, 3})}, {0, 0, 1});
  sample.scene.question.rule = gsl_sweep::Rule::Solid;
  sample.Ask();
  ASSERT_EQ(sample.scene.answer.contact.kind, ContactKind::Inside);
  const Glb file(FileOf(sample.scene));
  EXPECT_FALSE(file.HasNode("contact"));
  const Json& extras = file.json.at("scenes").at(0).at("extras");
  EXPECT_EQ(extras.at("kind"), "inside");
  EXPECT_FALSE(extras.at("moving").at("point").is_null());
  EXPECT_TRUE(extras.at("fixed").at("point").is_null());
}

TEST(GltfScene, TheAnswerReadsBackAsTheSameDoubles) {
  Sample sample = FallingBox();
  sample.scene.answer.contact.travel = 0.1 + 0.2;
  sample.scene.answer.contact.movingPoint.x = 1.0 / 3.0;
  const Glb file(FileOf(sample.scene));
  const Json& extras = file.json.at("scenes").at(0).at("extras");
  EXPECT_EQ(extras.at("travel").get<double>(), 0.1 + 0.2);
  EXPECT_EQ(extras.at("moving").at("point").at(0).get<double>(), 1.0 / 3.0);
  EXPECT_EQ(extras.at("moving").at("file"), "moving.stl");
  EXPECT_EQ(extras.at("moving").at("triangle"), sample.scene.answer.contact.movingTriangle);
  EXPECT_EQ(extras.at("fixed").at("triangle"), sample.scene.answer.contact.fixedTriangle);
  EXPECT_EQ(extras.at("direction"), Json({0.0, 0.0, -1.0}));
  EXPECT_EQ(extras.at("status"), "contact");
  EXPECT_EQ(extras.at("fixed_body"), 0);
  EXPECT_EQ(extras.at("exact"), true);
  EXPECT_EQ(extras.at("clearance"), 0.0);
}

TEST(GltfScene, TrianglesThatAreNotFiniteAreLeftOut) {
  Sample sample = FallingBox();
  std::vector<double> broken = BoxCorners({-1, -1, 0}, {3, 2, 1});
  broken[13] = kNaN;
  const std::vector<double> nothing(9, kNaN);
  sample.scene.fixed = {{"broken.stl", ViewOf(broken)}, {"nothing.stl", ViewOf(nothing)}};
  const Glb file(FileOf(sample.scene));
  std::vector<double> expected = BoxCorners({-1, -1, 0}, {3, 2, 1});
  expected.erase(expected.begin() + 9, expected.begin() + 18);
  ExpectNear(file.CornersOf(file.Node("broken.stl")), expected, 0x1p-22);
  EXPECT_FALSE(file.Node("nothing.stl").contains("mesh"));
}

TEST(GltfScene, NamesMayHoldAnyBytes) {
  Sample sample = FallingBox();
  sample.scene.moving.name = "a \"quoted\"\\ b\xff.stl";
  const Glb file(FileOf(sample.scene));
  EXPECT_TRUE(file.HasNode("a \"quoted\"\\ b\xef\xbf\xbd.stl"));
}

TEST(GltfScene, TheSameSceneHasTheSameBytes) {
  const Sample sample = FallingBox();
  EXPECT_EQ(FileOf(sample.scene), FileOf(sample.scene));
}

TEST(GltfScene, CoordinatesBeyondSinglePrecisionAreRefused) {
  for (const double scale : {1e-30, 1e30}) {
    const Sample sample = FallingBox(scale);
    const Glb file(FileOf(sample.scene));
    ExpectNear(file.CornersOf(file.Node("fixed.stl")),
               BoxCorners({-scale, -scale, 0}, {3 * scale, 2 * scale, scale}), 1e-6 * scale);
  }
  const Sample sample = FallingBox(1e39);
  EXPECT_THROW(FileOf(sample.scene), std::range_error);
  const TemporaryFolder folder;
  try {
    gsl_view::WriteGltfScene(folder.Path("x.glb"), sample.scene, sample.scene.moving.triangles,
                             false);
    ADD_FAILURE() << "no error";
  } catch (const gsl_mesh::OutputError& error) {
    EXPECT_EQ(error.what(), folder.Path("x.glb") +
                                ": a coordinate is too large for the single precision of glTF");
  }
  EXPECT_TRUE(folder.Names().empty());
}

TEST(GltfScene, AllCoordinatesOfSinglePrecisionFit) {
  // The power of two above half the size is 2^128.
  const double most = 3e38;
  Sample sample(BoxCorners({-most, 0, 2e38}, {most, 1e38, 3e38}),
                {BoxCorners({-most, 0, -3e38}, {most, 1e38, 0})}, {0.0, 0.0, -1.0});
  sample.Ask();
  const Glb file(FileOf(sample.scene));
  ExpectNear(file.CornersOf(file.Node("fixed.stl")), BoxCorners({-most, 0, -3e38}, {most, 1e38, 0}),
             1e32);
  EXPECT_LT(file.Node("fixed.stl").at("scale")[0].get<double>(), 3.4e38);
}

TEST(GltfScene, BodiesTooSmallForSinglePrecisionAreRefused) {
  const Sample sample = FallingBox(1e-39);
  EXPECT_THROW(FileOf(sample.scene), std::range_error);
}

TEST(GltfScene, ABodyThatIsAPointIsThere) {
  Sample sample = FallingBox();
  const std::vector<double> point = {7, 7, 7, 7, 7, 7, 7, 7, 7};
  sample.scene.fixed.push_back({"point.stl", ViewOf(point)});
  const Glb file(FileOf(sample.scene));
  EXPECT_EQ(file.CornersOf(file.Node("point.stl")), point);
}

TEST(GltfScene, AFileIsWrittenWholeAndNotReplaced) {
  const Sample sample = FallingBox();
  const TemporaryFolder folder;
  const std::string path = folder.Write("x.glb", "kept");
  const gsl_sweep::TriangleView& view = sample.scene.moving.triangles;
  EXPECT_THROW(gsl_view::WriteGltfScene(path, sample.scene, view, false), gsl_mesh::OutputError);
  EXPECT_EQ(BytesOf(path), "kept");
  gsl_view::WriteGltfScene(path, sample.scene, view, true);
  const Glb file(BytesOf(path));
  // The body is where it is said to be at the contact.
  ExpectNear(file.CornersOf(file.Node("moving.stl")), BoxCorners({0.25, 0.25, 3}, {1.25, 1.25, 4}),
             0x1p-22);
}

TEST(GltfScene, NamesOfFilesEndInGlb) {
  EXPECT_TRUE(gsl_view::IsGltfName("a.glb"));
  EXPECT_TRUE(gsl_view::IsGltfName("b/a.GLB"));
  EXPECT_FALSE(gsl_view::IsGltfName("a.gltf"));
  EXPECT_FALSE(gsl_view::IsGltfName("glb"));
}

} // namespace
