#include "MeshRead.h"
#include "MeshSamples.h"

using namespace gsl_mesh_samples;

TEST(MeshReadWithoutAssimp, OtherFormatsAreRefusedInOneClearLine) {
  const TemporaryFolder folder;
  for (const char* name : {"part.glb", "part.gltf", "part.3mf", "part.unheard"}) {
    const std::string path =
        folder.Write(name, std::string(name) == "part.glb" ? Glb() : GltfText());
    try {
      gsl_mesh::ReadMesh(path);
      FAIL() << name << " was read";
    } catch (const gsl_mesh::MeshError& e) {
      EXPECT_EQ(e.what(), path +
                              ": cannot be read: this program was built without Assimp; expected "
                              "STL, PLY, OBJ or OFF");
    }
  }
}

TEST(MeshReadWithoutAssimp, OwnFormatsAreReadAllTheSame) {
  const TemporaryFolder folder;
  int read = 0;
  for (const Sample& sample : AllSamples()) {
    if (gsl_mesh::DetectMeshFormat(sample.bytes, sample.name) == gsl_mesh::MeshFormat::Assimp)
      continue;
    ExpectCorners(gsl_mesh::ReadMesh(folder.Write(sample.name, sample.bytes)),
                  TetrahedronCorners());
    ++read;
  }
  EXPECT_GE(read, 4);
}
