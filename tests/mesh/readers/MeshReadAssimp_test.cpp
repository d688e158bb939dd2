#include "readers/MeshReadAssimp.h"

#include "MeshSamples.h"

using namespace gsl_mesh_samples;
using gsl_mesh::ImportWithAssimp;
using gsl_mesh::ReadMesh;

namespace {

std::string Collada(const std::string& unit, const std::string& up, const std::string& node) {
  std::string positions, indices;
  for (const Coord3& v : TetrahedronVertices())
    positions += Text(v) + " ";
  for (const auto& f : TetrahedronFaces()) {
    for (const int k : f)
      indices += std::to_string(k) + " ";
  }
  return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
         "<COLLADA xmlns=\"http://www.collada.org/2005/11/COLLADASchema\" version=\"1.4.1\">"
         "<asset><unit name=\"u\" meter=\"" +
         unit + "\"/><up_axis>" + up +
         "</up_axis></asset><library_geometries><geometry id=\"g\"><mesh>"
         "<source id=\"p\"><float_array id=\"a\" count=\"12\">" +
         positions +
         "</float_array><technique_common><accessor source=\"#a\" count=\"4\" stride=\"3\">"
         "<param name=\"X\" type=\"float\"/><param name=\"Y\" type=\"float\"/>"
         "<param name=\"Z\" type=\"float\"/></accessor></technique_common></source>"
         "<vertices id=\"v\"><input semantic=\"POSITION\" source=\"#p\"/></vertices>"
         "<triangles count=\"4\"><input semantic=\"VERTEX\" source=\"#v\" offset=\"0\"/><p>" +
         indices +
         "</p></triangles></mesh></geometry></library_geometries>"
         "<library_visual_scenes><visual_scene id=\"s\"><node id=\"n\">" +
         node +
         "<instance_geometry url=\"#g\"/></node></visual_scene></library_visual_scenes>"
         "<scene><instance_visual_scene url=\"#s\"/></scene></COLLADA>";
}

} // namespace

TEST(MeshReadAssimp, GltfKeepsTheFilesOrder) {
  const TemporaryFolder folder;
  ExpectCorners(ReadMesh(folder.Write("part.gltf", GltfText())), TetrahedronCorners());
}

TEST(MeshReadAssimp, BinaryGltfIsKnownByItsContents) {
  const TemporaryFolder folder;
  ExpectCorners(ReadMesh(folder.Write("part.glb", Glb())), TetrahedronCorners());
}

TEST(MeshReadAssimp, ThreeMfKeepsTheFilesOrder) {
  const TemporaryFolder folder;
  ExpectCorners(ReadMesh(folder.Write("part.3mf", ThreeMf())), TetrahedronCorners());
}
TEST(MeshReadAssimp, DeclaredUnitsDoNotScale) {
  const TemporaryFolder folder;
  ExpectCorners(ReadMesh(folder.Write("part.3mf", ThreeMf("inch"))), TetrahedronCorners());
  ExpectCorners(ReadMesh(folder.Write("part.dae", Collada("0.0254", "Y_UP", ""))),
                TetrahedronCorners());
  ExpectCorners(ReadMesh(folder.Write("part.dae", Collada("1", "Z_UP", ""))), TetrahedronCorners());
}

TEST(MeshReadAssimp, NodeTransformsAreApplied) {
  const TemporaryFolder folder;
  std::vector<Coord3> moved = TetrahedronCorners();
  for (Coord3& c : moved)
    c = {2 * c.x + 10, 2 * c.y + 20, 2 * c.z + 30};
  const std::string node = R"("translation":[10,20,30],"scale":[2,2,2],)";
  ExpectCorners(ReadMesh(folder.Write("part.gltf", GltfText(node))), moved);
  const std::string item = "transform=\"2 0 0 0 2 0 0 0 2 10 20 30\"";
  ExpectCorners(ReadMesh(folder.Write("part.3mf", ThreeMf("millimeter", item))), moved);
  const std::string matrix = "<matrix>2 0 0 10 0 2 0 20 0 0 2 30 0 0 0 1</matrix>";
  ExpectCorners(ReadMesh(folder.Write("part.dae", Collada("1", "Y_UP", matrix))), moved);
}
