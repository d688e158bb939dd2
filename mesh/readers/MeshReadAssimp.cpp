#include "readers/MeshReadAssimp.h"

#include "MeshFormat.h"
#include "readers/FaceCollector.h"
#include "readers/WordScanner.h"

#include <assimp/Importer.hpp>
#include <assimp/config.h>
#include <assimp/scene.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <sstream>

using gsl_arithmetic::Coord3;

namespace gsl_mesh {

namespace {

/// The rows of the affine part of a node's transform.
struct Transform {
  std::array<std::array<double, 4>, 3> rows;
};

constexpr Transform kIdentity{{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}}};

Transform InDouble(const aiMatrix4x4& m) {
  return {{{{m.a1, m.a2, m.a3, m.a4}, {m.b1, m.b2, m.b3, m.b4}, {m.c1, m.c2, m.c3, m.c4}}}};
}

Transform Compose(const Transform& outer, const Transform& inner) {
  Transform result{};
  for (std::size_t r = 0; r < 3; ++r) {
    const std::array<double, 4>& o = outer.rows[r];
    for (std::size_t c = 0; c < 4; ++c) {
      const auto& i = inner.rows;
      result.rows[r][c] = o[0] * i[0][c] + o[1] * i[1][c] + o[2] * i[2][c] + (c == 3 ? o[3] : 0.0);
    }
  }
  return result;
}

Coord3 Apply(const Transform& t, const aiVector3D& p) {
  const double x = static_cast<double>(p.x);
  const double y = static_cast<double>(p.y);
  const double z = static_cast<double>(p.z);
  const auto row = [&](std::size_t r) {
    const std::array<double, 4>& m = t.rows[r];
    return m[0] * x + m[1] * y + m[2] * z + m[3];
  };
  return {row(0), row(1), row(2)};
}

class SceneReader {
public:
  SceneReader(const MeshSource& source, const aiScene& scene, Mesh& mesh)
      : m_source(source), m_scene(scene), m_collector(source, mesh) {}

  void Read() {
    // An explicit stack: files may nest nodes deeper than the stack of the program allows.
    struct Visit {
      const aiNode* node;
      Transform toWorld;
    };
    std::vector<Visit> open;
    if (m_scene.mRootNode != nullptr) open.push_back({m_scene.mRootNode, kIdentity});
    while (!open.empty()) {
      const Visit visit = open.back();
      open.pop_back();
      const Transform toWorld = Compose(visit.toWorld, InDouble(visit.node->mTransformation));
      for (unsigned k = 0; k < visit.node->mNumMeshes; ++k) {
        ReadMeshOf(visit.node->mMeshes[k], toWorld);
      }
      for (unsigned k = visit.node->mNumChildren; k > 0; --k) {
        open.push_back({visit.node->mChildren[k - 1], toWorld});
      }
    }
    m_collector.Finish();
  }

private:
  void ReadMeshOf(unsigned index, const Transform& toWorld) {
    if (index >= m_scene.mNumMeshes) FailRead(m_source, "a node refers to a missing mesh");
    const aiMesh& mesh = *m_scene.mMeshes[index];
    for (unsigned f = 0; f < mesh.mNumFaces; ++f) {
      const aiFace& face = mesh.mFaces[f];
      m_ring.clear();
      for (unsigned k = 0; k < face.mNumIndices; ++k) {
        const unsigned vertex = face.mIndices[k];
        if (vertex >= mesh.mNumVertices) {
          FailRead(m_source, "vertex " + std::to_string(vertex) + " does not exist (the mesh has " +
                                 std::to_string(mesh.mNumVertices) + " vertices)");
        }
        m_ring.push_back(Apply(toWorld, mesh.mVertices[vertex]));
      }
      m_collector.Add(m_ring.data(), m_ring.size(), nullptr);
    }
  }

  const MeshSource& m_source;
  const aiScene& m_scene;
  FaceCollector m_collector;
  std::vector<Coord3> m_ring;
};

/// True for formats whose coordinates are known to arrive unchanged.
bool KeepsCoordinates(const std::string& extension) {
  for (const char* const known : {"3mf", "amf", "dae", "fbx", "glb", "gltf", "x3d"}) {
    if (extension == known) return true;
  }
  return false;
}

std::string TextOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

/// The Collada importer always scales by the declared unit. Without the attribute meter="..." the
/// unit is 1.
std::string WithoutUnit(std::string text) {
  constexpr std::string_view kName = "meter";
  const auto isSpace = [](char c) { return IsSpace(c); };
  for (std::size_t tag = text.find("<unit"); tag != text.npos; tag = text.find("<unit", tag + 1)) {
    const std::size_t end = std::min(text.find('>', tag), text.size());
    for (std::size_t at = text.find(kName, tag); at < end; at = text.find(kName, at + 1)) {
      const auto next = std::find_if_not(
          text.begin() + static_cast<std::ptrdiff_t>(at + kName.size()), text.end(), isSpace);
      if (IsSpace(text[at - 1]) && next != text.end() && *next == '=') text[at] = 'M';
    }
  }
  return text;
}

} // namespace

Mesh ImportWithAssimp(const std::string& path) {
  const MeshSource source{{}, path};
  const std::string extension = ExtensionOf(path);
  Assimp::Importer importer;
  // The unit of a compressed Collada file would always scale.
  if (extension == "zae" || !importer.IsExtensionSupported("." + extension)) {
    FailUnknownFormat(source);
  }
  importer.SetPropertyBool(AI_CONFIG_IMPORT_COLLADA_IGNORE_UP_DIRECTION, true);
  const aiScene* scene = nullptr;
  if (extension == "dae") {
    const std::string text = WithoutUnit(TextOf(path));
    scene = importer.ReadFileFromMemory(text.data(), text.size(), 0, "dae");
  } else {
    scene = importer.ReadFile(path, 0);
  }
  if (scene == nullptr)
    FailRead(source, std::string("cannot be read: ") + importer.GetErrorString());
  Mesh mesh;
  SceneReader(source, *scene, mesh).Read();
  if (!KeepsCoordinates(extension)) {
    Warn(mesh, source,
         "Assimp may rotate or scale this format; compare the size and the position with what you "
         "expect");
  }
  return mesh;
}

} // namespace gsl_mesh
