#include "MeshImport.h"
#include "MeshSamples.h"
#include "ToolRun.h"

using namespace gsl_mesh_samples;

TEST(GslMeshImport, ReadsWhatAssimpReads) {
  const TemporaryFolder folder;
  const Mesh mesh = gsl_mesh::ImportMesh(GSL_IMPORT_PROGRAM, folder.Write("part.glb", Glb()),
                                         gsl_mesh::ImportLimitsFor(1000));
  ExpectCorners(mesh, TetrahedronCorners());
}

TEST(GslMeshImport, SendsBackWhyAFileCannotBeRead) {
  const TemporaryFolder folder;
  const std::string path = folder.Write("part.glb", "glTF");
  try {
    gsl_mesh::ImportMesh(GSL_IMPORT_PROGRAM, path, gsl_mesh::ImportLimitsFor(1000));
    FAIL() << "was read";
  } catch (const MeshError& e) {
    EXPECT_EQ(std::string(e.what()).find(path + ": cannot be read: "), 0U) << e.what();
  }
}

TEST(GslMeshImport, StartedByHandItSaysWhoStartsIt) {
  const tool_run::Outcome run = tool_run::Shell(GSL_IMPORT_PROGRAM " part.glb");
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "gsl-mesh-import: only gsl-sweep starts this program; expected gsl-sweep\n");
}
