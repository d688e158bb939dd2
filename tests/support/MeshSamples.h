#ifndef GSL_TESTS_MESH_SAMPLES_H
#define GSL_TESTS_MESH_SAMPLES_H

#include "Mesh.h"
#include "MeshRead.h"
#include "TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

/// Small mesh files of every format, written by the tests themselves.
namespace gsl_mesh_samples {

using gsl_arithmetic::Coord3;
using gsl_mesh::Mesh;
using gsl_mesh::MeshError;
using gsl_mesh::MeshFormat;

inline bool operator==(const Coord3& a, const Coord3& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

/// Returns the message with which reading fails, or "no error".
inline std::string ErrorOf(MeshFormat format, std::string_view bytes) {
  try {
    gsl_mesh::ReadMeshFromMemory(bytes, "sample", format);
  } catch (const MeshError& e) {
    return e.what();
  }
  return "no error";
}

inline std::string ErrorOfFile(const std::string& path) {
  try {
    gsl_mesh::ReadMesh(path);
  } catch (const MeshError& e) {
    return e.what();
  }
  return "no error";
}

inline double TriangleArea(const Mesh& mesh, std::size_t k) {
  const Coord3* t = &mesh.corners[3 * k];
  return gsl_arithmetic::Length(gsl_arithmetic::Cross(gsl_arithmetic::Subtract(t[1], t[0]),
                                                      gsl_arithmetic::Subtract(t[2], t[0]))) /
         2;
}

inline double Area(const Mesh& mesh) {
  double sum = 0.0;
  for (std::size_t k = 0; k < mesh.TriangleCount(); ++k)
    sum += TriangleArea(mesh, k);
  return sum;
}

/// Four corners whose coordinates are exact in single precision.
inline std::vector<Coord3> TetrahedronVertices() {
  return {{0.5, -0.25, 0.125}, {3.0, 0.0, 0.0}, {0.0, 2.0, -1.0}, {1.0, 1.0, 4.0}};
}

inline std::vector<std::array<int, 3>> TetrahedronFaces() {
  return {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}};
}

inline std::vector<Coord3> TetrahedronCorners() {
  const std::vector<Coord3> vertices = TetrahedronVertices();
  std::vector<Coord3> corners;
  for (const auto& face : TetrahedronFaces()) {
    for (const int k : face)
      corners.push_back(vertices[static_cast<std::size_t>(k)]);
  }
  return corners;
}

inline void ExpectCorners(const Mesh& mesh, const std::vector<Coord3>& expected) {
  ASSERT_EQ(mesh.corners.size(), expected.size());
  for (std::size_t k = 0; k < expected.size(); ++k) {
    EXPECT_TRUE(mesh.corners[k] == expected[k])
        << "corner " << k << ": " << mesh.corners[k].x << ' ' << mesh.corners[k].y << ' '
        << mesh.corners[k].z;
  }
}

/// Returns a number in as many digits as its double needs.
inline std::string Text(double value) {
  char text[40];
  std::snprintf(text, sizeof text, "%.17g", value);
  return text;
}

inline std::string Text(const Coord3& c) {
  return Text(c.x) + " " + Text(c.y) + " " + Text(c.z);
}

template <typename Number>
void AppendNumber(std::string& bytes, Number value, bool bigEndian = false) {
  char raw[sizeof value];
  std::memcpy(raw, &value, sizeof value);
  if (bigEndian) std::reverse(raw, raw + sizeof value);
  bytes.append(raw, sizeof raw);
}

inline std::string StlBinary(const std::vector<Coord3>& corners, const std::string& header = "") {
  std::string bytes = header;
  bytes.resize(80, ' ');
  AppendNumber(bytes, static_cast<std::uint32_t>(corners.size() / 3));
  for (std::size_t k = 0; k < corners.size(); ++k) {
    if (k % 3 == 0) bytes.append(12, '\0');
    for (const double c : {corners[k].x, corners[k].y, corners[k].z}) {
      AppendNumber(bytes, static_cast<float>(c));
    }
    if (k % 3 == 2) bytes.append(2, '\0');
  }
  return bytes;
}

inline std::string StlText(const std::vector<Coord3>& corners) {
  std::string text = "solid part\n";
  for (std::size_t k = 0; k < corners.size(); k += 3) {
    text += " facet normal 0 0 1\n  outer loop\n";
    for (std::size_t c = k; c < k + 3; ++c)
      text += "   vertex " + Text(corners[c]) + "\n";
    text += "  endloop\n endfacet\n";
  }
  return text + "endsolid part\n";
}

inline std::string ObjText() {
  std::string text = "# tetrahedron\no part\n";
  for (const Coord3& v : TetrahedronVertices())
    text += "v " + Text(v) + "\n";
  for (const auto& f : TetrahedronFaces()) {
    text += "f " + std::to_string(f[0] + 1) + " " + std::to_string(f[1] + 1) + " " +
            std::to_string(f[2] + 1) + "\n";
  }
  return text;
}

inline std::string OffText() {
  std::string text = "OFF\n4 4 6\n";
  for (const Coord3& v : TetrahedronVertices())
    text += Text(v) + "\n";
  for (const auto& f : TetrahedronFaces()) {
    text += "3 " + std::to_string(f[0]) + " " + std::to_string(f[1]) + " " + std::to_string(f[2]) +
            "\n";
  }
  return text;
}

inline std::string PlyHeader(const std::string& format) {
  return "ply\nformat " + format +
         " 1.0\ncomment tetrahedron\nelement vertex 4\nproperty double x\nproperty double y\n"
         "property double z\nelement face 4\nproperty list uchar int vertex_indices\nend_header\n";
}

inline std::string PlyText() {
  std::string text = PlyHeader("ascii");
  for (const Coord3& v : TetrahedronVertices())
    text += Text(v) + "\n";
  for (const auto& f : TetrahedronFaces()) {
    text += "3 " + std::to_string(f[0]) + " " + std::to_string(f[1]) + " " + std::to_string(f[2]) +
            "\n";
  }
  return text;
}

inline std::string PlyBinary(bool bigEndian) {
  std::string bytes = PlyHeader(bigEndian ? "binary_big_endian" : "binary_little_endian");
  for (const Coord3& v : TetrahedronVertices()) {
    for (const double c : {v.x, v.y, v.z})
      AppendNumber(bytes, c, bigEndian);
  }
  for (const auto& f : TetrahedronFaces()) {
    bytes.push_back(3);
    for (const int k : f)
      AppendNumber(bytes, static_cast<std::int32_t>(k), bigEndian);
  }
  return bytes;
}

/// Positions, then indices of 16 bits.
inline std::string GltfBuffer() {
  std::string bytes;
  for (const Coord3& v : TetrahedronVertices()) {
    for (const double c : {v.x, v.y, v.z})
      AppendNumber(bytes, static_cast<float>(c));
  }
  for (const auto& f : TetrahedronFaces()) {
    for (const int k : f)
      AppendNumber(bytes, static_cast<std::uint16_t>(k));
  }
  return bytes;
}

/// `uri` is the member for the place of the buffer, with its comma, or is empty. `node` holds the
/// members of the only node, with a comma after each.
inline std::string GltfJson(const std::string& uri, const std::string& node) {
  return R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[{)" + node +
         R"("mesh":0}],"meshes":[{"primitives":[{"attributes":{"POSITION":0},"indices":1}]}],)" +
         R"("buffers":[{)" + uri + R"("byteLength":72}],)" +
         R"("bufferViews":[{"buffer":0,"byteOffset":0,"byteLength":48},)" +
         R"({"buffer":0,"byteOffset":48,"byteLength":24}],)" +
         R"("accessors":[{"bufferView":0,"componentType":5126,"count":4,"type":"VEC3",)" +
         R"("min":[0,-0.25,-1],"max":[3,2,4]},)" +
         R"({"bufferView":1,"componentType":5123,"count":12,"type":"SCALAR"}]})";
}

inline std::string Base64(const std::string& bytes) {
  static const char* const letters =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t k = 0; k + 2 < bytes.size(); k += 3) {
    std::uint32_t bits = 0;
    for (std::size_t b = 0; b < 3; ++b)
      bits = bits << 8 | static_cast<unsigned char>(bytes[k + b]);
    for (const int shift : {18, 12, 6, 0})
      text.push_back(letters[bits >> shift & 63U]);
  }
  return text; // 72 bytes need no padding
}

inline std::string GltfText(const std::string& node = "") {
  return GltfJson(R"("uri":"data:application/octet-stream;base64,)" + Base64(GltfBuffer()) + "\",",
                  node);
}

inline std::string Glb() {
  std::string json = GltfJson("", "");
  json.resize((json.size() + 3) / 4 * 4, ' ');
  const std::string buffer = GltfBuffer();
  std::string bytes = "glTF";
  AppendNumber(bytes, std::uint32_t{2});
  AppendNumber(bytes, static_cast<std::uint32_t>(12 + 8 + json.size() + 8 + buffer.size()));
  AppendNumber(bytes, static_cast<std::uint32_t>(json.size()));
  bytes += "JSON" + json;
  AppendNumber(bytes, static_cast<std::uint32_t>(buffer.size()));
  bytes += std::string("BIN\0", 4) + buffer;
  return bytes;
}

inline std::uint32_t Crc32(const std::string& bytes) {
  std::uint32_t crc = 0xffffffffU;
  for (const char c : bytes) {
    crc ^= static_cast<unsigned char>(c);
    for (int k = 0; k < 8; ++k)
      crc = crc >> 1 ^ ((crc & 1U) != 0 ? 0xedb88320U : 0U);
  }
  return ~crc;
}

struct ZipEntry {
  std::string name;
  std::string bytes;
};

/// Returns an archive whose entries are not compressed.
inline std::string Zip(const std::vector<ZipEntry>& entries) {
  std::string archive, directory;
  for (const ZipEntry& entry : entries) {
    const auto offset = static_cast<std::uint32_t>(archive.size());
    const auto size = static_cast<std::uint32_t>(entry.bytes.size());
    std::string common;
    for (const int word : {10, 0, 0, 0, 0x21}) {
      AppendNumber(common, static_cast<std::uint16_t>(word));
    }
    for (const std::uint32_t word : {Crc32(entry.bytes), size, size})
      AppendNumber(common, word);
    AppendNumber(common, static_cast<std::uint16_t>(entry.name.size()));
    AppendNumber(common, std::uint16_t{0});
    archive += "PK\x03\x04" + common + entry.name + entry.bytes;
    directory += std::string("PK\x01\x02\x0a\x00", 6) + common + std::string(10, '\0');
    AppendNumber(directory, offset);
    directory += entry.name;
  }
  std::string end = std::string("PK\x05\x06\0\0\0\0", 8);
  AppendNumber(end, static_cast<std::uint16_t>(entries.size()));
  AppendNumber(end, static_cast<std::uint16_t>(entries.size()));
  AppendNumber(end, static_cast<std::uint32_t>(directory.size()));
  AppendNumber(end, static_cast<std::uint32_t>(archive.size()));
  AppendNumber(end, std::uint16_t{0});
  return archive + directory + end;
}

/// `unit` is a word such as "inch". `transform` is an attribute of the build item, or is empty.
inline std::string ThreeMf(const std::string& unit = "millimeter",
                           const std::string& transform = "") {
  std::string vertices, triangles;
  for (const Coord3& v : TetrahedronVertices()) {
    vertices += "<vertex x=\"" + Text(v.x) + "\" y=\"" + Text(v.y) + "\" z=\"" + Text(v.z) + "\"/>";
  }
  for (const auto& f : TetrahedronFaces()) {
    triangles += "<triangle v1=\"" + std::to_string(f[0]) + "\" v2=\"" + std::to_string(f[1]) +
                 "\" v3=\"" + std::to_string(f[2]) + "\"/>";
  }
  const std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  const std::string model =
      xml + "<model unit=\"" + unit +
      "\" xml:lang=\"en-US\" xmlns=\"http://schemas.microsoft.com/3dmanufacturing/core/2015/02\">"
      "<resources><object id=\"1\" type=\"model\"><mesh><vertices>" +
      vertices + "</vertices><triangles>" + triangles +
      "</triangles></mesh></object></resources><build><item objectid=\"1\" " + transform +
      "/></build></model>";
  const std::string relations =
      xml +
      "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
      "<Relationship Target=\"/3D/3dmodel.model\" Id=\"rel0\" "
      "Type=\"http://schemas.microsoft.com/3dmanufacturing/2013/01/3dmodel\"/></Relationships>";
  const std::string types =
      xml + "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
            "<Default Extension=\"rels\" "
            "ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
            "<Default Extension=\"model\" "
            "ContentType=\"application/vnd.ms-package.3dmanufacturing-3dmodel+xml\"/></Types>";
  return Zip(
      {{"[Content_Types].xml", types}, {"_rels/.rels", relations}, {"3D/3dmodel.model", model}});
}

/// Returns one sample of each format, with its usual name.
struct Sample {
  std::string name;
  std::string bytes;
};

inline std::vector<Sample> AllSamples() {
  return {{"text.stl", StlText(TetrahedronCorners())},
          {"binary.stl", StlBinary(TetrahedronCorners())},
          {"text.obj", ObjText()},
          {"text.ply", PlyText()},
          {"little.ply", PlyBinary(false)},
          {"big.ply", PlyBinary(true)},
          {"text.off", OffText()},
          {"text.gltf", GltfText()},
          {"binary.glb", Glb()},
          {"zipped.3mf", ThreeMf()}};
}

} // namespace gsl_mesh_samples

#endif
