#include "GltfScene.h"

#include "AnswerNames.h"
#include "ContactPlaces.h"
#include "CornerBox.h"
#include "LittleEndian.h"
#include "MeshFormat.h"
#include "OutputFile.h"
#include "PageBody.h"
#include "PictureStyle.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace gsl_view {

namespace {

using gsl_arithmetic::Add;
using gsl_arithmetic::Coord3;
using gsl_arithmetic::Multiply;
using gsl_arithmetic::Subtract;
using gsl_sweep::Contact;
using gsl_sweep::TriangleView;
using Json = nlohmann::ordered_json;

// Numbers of the glTF format.
constexpr std::uint32_t kMagic = 0x46546c67, kVersion = 2; // "glTF"
constexpr std::uint32_t kJsonChunk = 0x4e4f534a, kBinaryChunk = 0x004e4942;
constexpr int kVertexTarget = 34962, kIndexTarget = 34963;
constexpr int kFloat = 5126, kUnsigned = 5125;
constexpr std::size_t kHeaderSize = 12, kChunkHeaderSize = 8;

// The marker of a contact, by the diagonal of the box around all bodies and of the smaller body;
// its normal, by the marker.
constexpr double kMarkerPart = 0.006, kMarkerPartOfBody = 0.1;
constexpr double kNormalLength = 9.0, kNormalRadius = 0.4;
// Bodies that are farther from the origin than this many times their size get another origin:
// single precision would round their places by more than 1e-5 of it.
constexpr double kFarthest = 128.0;
constexpr double kPi = 3.14159265358979323846;
constexpr int kMarkerRings = 12, kMarkerSectors = 24;

constexpr Colour kContactColour{0.80, 0.05, 0.40};

enum Material { kMovingMaterial, kFixedMaterial, kContactMaterial };

/// Vertices of three numbers, and three numbers of vertices for each triangle.
struct Surface {
  std::vector<float> vertices;
  std::vector<std::uint32_t> triangles;
};

/// A unit sphere around the origin.
Surface SphereSurface() {
  Surface sphere;
  const auto add = [&](double x, double y, double z) {
    for (const double number : {x, y, z})
      sphere.vertices.push_back(static_cast<float>(number));
  };
  for (int ring = 0; ring <= kMarkerRings; ++ring) {
    const double latitude = kPi * ring / kMarkerRings;
    for (int sector = 0; sector < kMarkerSectors; ++sector) {
      const double longitude = 2.0 * kPi * sector / kMarkerSectors;
      add(std::sin(latitude) * std::cos(longitude), std::sin(latitude) * std::sin(longitude),
          std::cos(latitude));
    }
  }
  for (std::uint32_t ring = 0; ring < kMarkerRings; ++ring) {
    for (std::uint32_t sector = 0; sector < kMarkerSectors; ++sector) {
      const std::uint32_t next = (sector + 1) % kMarkerSectors;
      const std::uint32_t upper = ring * kMarkerSectors, lower = upper + kMarkerSectors;
      // The rings at the poles have no size, so each of their squares is one triangle.
      if (ring > 0) {
        sphere.triangles.insert(sphere.triangles.end(),
                                {upper + sector, lower + next, upper + next});
      }
      if (ring + 1 < kMarkerRings) {
        sphere.triangles.insert(sphere.triangles.end(),
                                {upper + sector, lower + sector, lower + next});
      }
    }
  }
  return sphere;
}

/// A cone of radius 1 around the z axis, from its base at z = 0 to its tip at z = 1.
Surface ConeSurface() {
  Surface cone;
  cone.vertices = {0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f};
  for (std::uint32_t sector = 0; sector < kMarkerSectors; ++sector) {
    const double angle = 2.0 * kPi * sector / kMarkerSectors;
    cone.vertices.push_back(static_cast<float>(std::cos(angle)));
    cone.vertices.push_back(static_cast<float>(std::sin(angle)));
    cone.vertices.push_back(0.0f);
    const std::uint32_t next = (sector + 1) % kMarkerSectors;
    cone.triangles.insert(cone.triangles.end(), {0u, 2 + sector, 2 + next});
    cone.triangles.insert(cone.triangles.end(), {1u, 2 + next, 2 + sector});
  }
  return cone;
}

Json JsonOf(const Coord3& p) {
  return Json::array({p.x, p.y, p.z});
}

/// Fails when single precision cannot hold a point.
void RequireSingle(const Coord3& point) {
  for (const double number : {point.x, point.y, point.z}) {
    if (!(std::fabs(number) <= double{std::numeric_limits<float>::max()})) {
      throw std::range_error("a coordinate is too large for the single precision of glTF");
    }
  }
}

/// Returns the quaternion of the shortest turn from the z axis to a unit vector.
Json TurnTo(const Coord3& normal) {
  // The half-way vector, which does not exist for the opposite of the axis.
  const double w = 1.0 + normal.z;
  if (w < 1e-8) return Json::array({1.0, 0.0, 0.0, 0.0});
  const double length = std::sqrt(w * w + normal.x * normal.x + normal.y * normal.y);
  return Json::array({-normal.y / length, normal.x / length, 0.0, w / length});
}

/// Returns a colour of the screen in the linear numbers of a material.
Json LinearColour(const Colour& colour) {
  Json json = Json::array();
  for (const double part : {colour.red, colour.green, colour.blue}) {
    const double linear = part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    // Few digits, so that no C library changes them.
    json.push_back(std::round(linear * 1e4) / 1e4);
  }
  json.push_back(1.0);
  return json;
}

Json MaterialOf(const char* name, const Colour& colour) {
  Json json;
  json["name"] = name;
  json["pbrMetallicRoughness"] = {
      {"baseColorFactor", LinearColour(colour)}, {"metallicFactor", 0.0}, {"roughnessFactor", 0.8}};
  // A file may have its triangles in any order of corners.
  json["doubleSided"] = true;
  return json;
}

/// A box of vertices.
struct VertexBox {
  float low[3], high[3];

  explicit VertexBox(const std::vector<float>& vertices) {
    std::fill(low, low + 3, std::numeric_limits<float>::infinity());
    std::fill(high, high + 3, -std::numeric_limits<float>::infinity());
    for (std::size_t k = 0; k < vertices.size(); ++k) {
      low[k % 3] = std::min(low[k % 3], vertices[k]);
      high[k % 3] = std::max(high[k % 3], vertices[k]);
    }
  }
};

Coord3 CornerOf(const float (&numbers)[3]) {
  return {double{numbers[0]}, double{numbers[1]}, double{numbers[2]}};
}

/// Builds the document and keeps the surfaces.
class Document {
public:
  explicit Document(const ViewScene& scene) {
    m_json["asset"] = {{"version", "2.0"}, {"generator", "gsl-sweep " + scene.toolVersion}};
    m_json["scene"] = 0;
    m_json["scenes"] = Json::array();
    for (const char* const list : {"nodes", "meshes", "accessors", "bufferViews"})
      m_json[list] = Json::array();
    m_json["materials"] = Json::array({MaterialOf("moving body", kMovingColour),
                                       MaterialOf("fixed body", kFixedColour),
                                       MaterialOf("contact", kContactColour)});
  }

  std::size_t AddNode(Json node) { return Push("nodes", std::move(node)); }

  /// Adds a surface, which must have a triangle, and returns the number of its mesh.
  std::size_t AddMesh(const std::string& name, Surface surface, Material material) {
    const VertexBox box(surface.vertices);
    Json places;
    places["bufferView"] = AddView(surface.vertices.size(), kVertexTarget);
    places["componentType"] = kFloat;
    places["count"] = surface.vertices.size() / 3;
    places["type"] = "VEC3";
    places["min"] = Json(box.low);
    places["max"] = Json(box.high);
    Json corners;
    corners["bufferView"] = AddView(surface.triangles.size(), kIndexTarget);
    corners["componentType"] = kUnsigned;
    corners["count"] = surface.triangles.size();
    corners["type"] = "SCALAR";
    Json part;
    part["attributes"]["POSITION"] = Push("accessors", std::move(places));
    part["indices"] = Push("accessors", std::move(corners));
    part["material"] = static_cast<int>(material);
    Json mesh;
    mesh["name"] = name;
    mesh["primitives"] = Json::array({std::move(part)});
    m_surfaces.push_back(std::move(surface));
    return Push("meshes", std::move(mesh));
  }

  void SetScene(Json scene) { Push("scenes", std::move(scene)); }

  /// Sends the whole file.
  void Send(const PageSink& sink) {
    m_json["buffers"][0]["byteLength"] = m_size;
    std::string text = m_json.dump(-1, ' ', false, Json::error_handler_t::replace);
    text.append((4 - text.size() % 4) % 4, ' ');
    const std::size_t size = kHeaderSize + 2 * kChunkHeaderSize + text.size() + m_size;
    if (size > std::numeric_limits<std::uint32_t>::max()) {
      throw std::length_error("the scene is too large for glTF, which ends at 4 GiB");
    }
    std::string head;
    for (const std::size_t number :
         {std::size_t{kMagic}, std::size_t{kVersion}, size, text.size(), std::size_t{kJsonChunk}})
      AppendBytes(static_cast<std::uint32_t>(number), head);
    sink(head + text);
    head.clear();
    AppendBytes(static_cast<std::uint32_t>(m_size), head);
    AppendBytes(kBinaryChunk, head);
    sink(head);
    for (const Surface& surface : m_surfaces) {
      SendBytes(surface.vertices, sink);
      SendBytes(surface.triangles, sink);
    }
  }

private:
  std::size_t Push(const char* list, Json item) {
    m_json[list].push_back(std::move(item));
    return m_json[list].size() - 1;
  }

  std::size_t AddView(std::size_t count, int target) {
    Json view;
    view["buffer"] = 0;
    view["byteOffset"] = m_size;
    view["byteLength"] = 4 * count;
    view["target"] = target;
    m_size += 4 * count;
    return Push("bufferViews", std::move(view));
  }

  Json m_json;
  std::vector<Surface> m_surfaces;
  std::size_t m_size = 0; ///< of the binary part
};

/// A body where it is at the contact.
struct PlacedBody {
  std::string name;
  Material material;
  PageBody surface;
  CornerBox box;
};

PlacedBody PlacedBodyOf(const std::string& name, const TriangleView& triangles, Material material) {
  PlacedBody placed{name, material, PageBody::Of(triangles), {}};
  if (placed.surface.TriangleCount() == 0) return placed;
  const VertexBox vertices(placed.surface.vertices);
  for (const Coord3& corner : {CornerOf(vertices.low), CornerOf(vertices.high)})
    placed.box.Take(Add(placed.surface.centre, Multiply(corner, placed.surface.scale)));
  return placed;
}

/// Returns the point that becomes the origin of the file: that of the meshes, unless the bodies are
/// so far from it that single precision would move them against each other.
Coord3 OriginOf(const CornerBox& box) {
  const Coord3 none{0.0, 0.0, 0.0};
  double farthest = 0.0;
  for (const Coord3& p : {box.low, box.high})
    farthest = std::max({farthest, std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
  const double size = box.Diagonal();
  if (!(farthest > kFarthest * size) || size == 0.0) return none;
  // A number with few digits, which people can read and subtract.
  const double step = std::ldexp(1.0, std::ilogb(size) + 1);
  const Coord3 centre = box.Centre();
  return {step * std::round(centre.x / step), step * std::round(centre.y / step),
          step * std::round(centre.z / step)};
}

/// Adds the node of a body, with its surface if it has any.
std::size_t AddBody(PlacedBody placed, const Coord3& origin, Document& document) {
  Json node;
  node["name"] = placed.name;
  PageBody& body = placed.surface;
  if (body.TriangleCount() > 0) {
    RequireSingle(Subtract(placed.box.low, origin));
    RequireSingle(Subtract(placed.box.high, origin));
    if (placed.box.Diagonal() == 0.0) body.scale = 1.0; // all vertices are the centre
    // The power of two may be too large although all coordinates fit.
    if (body.scale > double{std::numeric_limits<float>::max()}) {
      body.scale *= 0.5;
      for (float& number : body.vertices)
        number *= 2.0f;
    }
    if (body.scale < double{std::numeric_limits<float>::min()}) {
      throw std::range_error("the bodies are too small for the single precision of glTF");
    }
    node["mesh"] = document.AddMesh(
        placed.name, {std::move(body.vertices), std::move(body.triangles)}, placed.material);
    node["translation"] = JsonOf(Subtract(body.centre, origin));
    node["scale"] = JsonOf({body.scale, body.scale, body.scale});
  }
  return document.AddNode(std::move(node));
}

/// Adds the marks of the contact under one node and returns it.
std::size_t AddContact(const ViewScene& scene, double radius, const Coord3& origin,
                       Document& document) {
  const Contact& contact = scene.answer.contact;
  Json children = Json::array();
  const std::size_t sphere = document.AddMesh("contact point", SphereSurface(), kContactMaterial);
  const auto addPoint = [&](const char* name, const Coord3& point) {
    const Coord3 place = Subtract(point, origin);
    RequireSingle(place);
    Json node;
    node["name"] = name;
    node["mesh"] = sphere;
    node["translation"] = JsonOf(place);
    node["scale"] = JsonOf({radius, radius, radius});
    children.push_back(document.AddNode(std::move(node)));
  };
  const Coord3 reached =
      Add(contact.movingPoint, Multiply(scene.answer.unitDirection, contact.travel));
  const ContactPlaces places = PlacesOf(scene.answer);
  const Coord3& place = places.fixed ? contact.fixedPoint : reached;
  addPoint("contact point", place);
  if (scene.question.clearance > 0.0) addPoint("contact point of the moving body", reached);
  if (contact.hasNormal) {
    Json node;
    node["name"] = "contact normal";
    node["mesh"] = document.AddMesh("contact normal", ConeSurface(), kContactMaterial);
    node["translation"] = JsonOf(Subtract(place, origin));
    node["rotation"] = TurnTo(contact.normal);
    node["scale"] =
        JsonOf({kNormalRadius * radius, kNormalRadius * radius, kNormalLength * radius});
    children.push_back(document.AddNode(std::move(node)));
  }
  Json node;
  node["name"] = "contact";
  node["children"] = std::move(children);
  return document.AddNode(std::move(node));
}

Json PlaceAsJson(const std::string& name, bool hasPlace, std::size_t triangle,
                 const Coord3& point) {
  Json json;
  json["file"] = name;
  json["triangle"] = hasPlace ? Json(triangle) : Json();
  json["point"] = hasPlace ? JsonOf(point) : Json();
  return json;
}

/// Returns what the file says of the answer.
Json AnswerAsJson(const ViewScene& scene, const Coord3& origin) {
  const Contact& contact = scene.answer.contact;
  const ContactPlaces places = PlacesOf(scene.answer);
  Json json;
  json["origin"] = JsonOf(origin);
  json["status"] = StatusName(scene.answer.status);
  json["last"] = scene.last;
  json["clearance"] = scene.question.clearance;
  json["exact"] = scene.answer.isExact;
  json["error_bound"] = scene.answer.errorBound;
  json["direction"] = JsonOf(scene.answer.unitDirection);
  json["travel"] = contact.travel;
  json["kind"] = KindName(contact.kind);
  json["normal"] = contact.hasNormal ? JsonOf(contact.normal) : Json();
  json["moving"] =
      PlaceAsJson(scene.moving.name, places.moving, contact.movingTriangle, contact.movingPoint);
  json["fixed"] = PlaceAsJson(scene.fixed.at(contact.fixedBody).name, places.fixed,
                              contact.fixedTriangle, contact.fixedPoint);
  json["fixed_body"] = contact.fixedBody;
  return json;
}

} // namespace

bool IsGltfName(const std::string& path) {
  return gsl_mesh::ExtensionOf(path) == "glb";
}

Coord3 MakeGltfScene(const ViewScene& scene, const TriangleView& atContact, const PageSink& sink) {
  std::vector<PlacedBody> bodies = {PlacedBodyOf(scene.moving.name, atContact, kMovingMaterial)};
  for (const ViewBody& body : scene.fixed)
    bodies.push_back(PlacedBodyOf(body.name, body.triangles, kFixedMaterial));
  CornerBox box;
  for (const PlacedBody& body : bodies) {
    if (body.box.isEmpty) continue;
    box.Take(body.box.low);
    box.Take(body.box.high);
  }
  const Coord3 origin = OriginOf(box);
  const double smaller = std::min(bodies.front().box.Diagonal(),
                                  bodies.at(1 + scene.answer.contact.fixedBody).box.Diagonal());
  const double radius = std::min(kMarkerPart * box.Diagonal(), kMarkerPartOfBody * smaller);
  Document document(scene);
  Json nodes = Json::array();
  for (PlacedBody& body : bodies)
    nodes.push_back(AddBody(std::move(body), origin, document));
  if (scene.answer.contact.kind != gsl_sweep::ContactKind::Inside) {
    nodes.push_back(AddContact(scene, radius, origin, document));
  }
  Json root;
  root["name"] = "contact";
  root["nodes"] = std::move(nodes);
  root["extras"] = AnswerAsJson(scene, origin);
  document.SetScene(std::move(root));
  document.Send(sink);
  return origin;
}

Coord3 WriteGltfScene(const std::string& path, const ViewScene& scene,
                      const TriangleView& atContact, bool force) {
  gsl_mesh::OutputFile file(path, force);
  Coord3 origin{0.0, 0.0, 0.0};
  try {
    origin = MakeGltfScene(scene, atContact,
                           [&](std::string_view part) { file.Write(part.data(), part.size()); });
  } catch (const std::range_error& error) {
    throw gsl_mesh::OutputError(path + ": " + error.what());
  } catch (const std::length_error& error) {
    throw gsl_mesh::OutputError(path + ": " + error.what());
  }
  file.Commit();
  return origin;
}

} // namespace gsl_view
