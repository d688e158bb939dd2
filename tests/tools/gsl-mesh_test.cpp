#include "MeshRead.h"
#include "SweepShapes.h"
#include "ToolRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <cstddef>
#include <string>

namespace {

using namespace tool_run;
using nlohmann::json;
using sweep_shapes::AddTriangle;
using sweep_shapes::Box;

class GslMesh : public testing::Test {
protected:
  /// A box that another one enters, and a triangle that hangs in the air.
  static gsl_mesh::Mesh Broken() {
    gsl_mesh::Mesh mesh = Box({0, 0, 0}, {4, 4, 4});
    sweep_shapes::Append(mesh, Box({1, 1, 3}, {2, 2, 5}));
    AddTriangle(mesh, {9, 9, 9}, {9, 9, 10}, {9, 10, 9});
    return mesh;
  }

  Folder m_folder;
  std::string m_box = m_folder.Write("box.ply", Box({0, 0, 0}, {1, 2, 3}));
  std::string m_broken = m_folder.Write("broken.ply", Broken());
};

TEST_F(GslMesh, SaysThatAMeshIsSound) {
  const Outcome run = MeshTool("check " + m_box);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(FirstLine(run.out), m_box + ": sound");
  EXPECT_EQ(Shell("$MESH check - <" + m_box).out.substr(0, 22), "standard input: sound\n");
  EXPECT_EQ(MeshTool("check --quiet " + m_box).out, "");
}

TEST_F(GslMesh, FindsWhatIsWrong) {
  const Outcome run = MeshTool("check " + m_box + " " + m_broken);
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.out.find(m_broken + ": 2 findings\n"
                                    "  finding     3 open edges, which one triangle uses, the "
                                    "first triangle 24\n"),
            std::string::npos);
  const json mesh = json::parse(MeshTool("check --json - " + m_broken).out)["meshes"][0];
  EXPECT_EQ(mesh["components"], 3);
  EXPECT_EQ(mesh["closed"], false);
  EXPECT_EQ(mesh["faults"]["open_edges"]["count"], 3);
  // The four walls of the small box go through two triangles of the large one, or beside both.
  EXPECT_GE(mesh["faults"]["crossings"]["count"], 8);
  for (const json& pair : mesh["faults"]["crossings"]["pairs"]) {
    EXPECT_LT(pair[0], 12);
    EXPECT_GE(pair[1], 12);
    EXPECT_LT(pair[1], 24);
  }
}

TEST_F(GslMesh, GoesOnAfterAFileThatCannotBeRead) {
  const std::string gone = m_folder.Path("gone.stl");
  const Outcome run = MeshTool("check " + gone + " " + m_broken + " " + m_box);
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.err.find("gsl-mesh: " + gone + ": "), 0u);
  EXPECT_EQ(LineCount(run.err), 1u);
  EXPECT_NE(run.out.find(m_box + ": sound"), std::string::npos);
  const Outcome again = MeshTool("check --json - " + gone + " " + m_box);
  EXPECT_EQ(again.status, 3);
  const json document = json::parse(again.out);
  EXPECT_EQ("gsl-mesh: " + document["meshes"][0]["error"].get<std::string>() + "\n", again.err);
  EXPECT_EQ(document["meshes"][1]["sound"], true);
}

TEST_F(GslMesh, JsonGoesToAFileThatIsNotReplaced) {
  const std::string file = m_folder.Path("report.json");
  const Outcome run = MeshTool("check " + m_box + " --json " + file);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(FirstLine(run.out), m_box + ": sound");
  const std::string written = BytesOf(file);
  EXPECT_EQ(json::parse(written)["meshes"].size(), 1u);
  EXPECT_EQ(MeshTool("check " + m_broken + " --json " + file).status, 4);
  EXPECT_EQ(BytesOf(file), written);
  EXPECT_EQ(MeshTool("check " + m_broken + " --force --json " + file).status, 1);
  EXPECT_NE(BytesOf(file), written);
}

TEST_F(GslMesh, ConvertsToEveryFormat) {
  for (const char* const name : {"out.stl", "out.obj", "out.off", "out.ply"}) {
    const std::string out = m_folder.Path(name);
    const Outcome run = MeshTool("convert " + m_broken + " " + out);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, out + ": 25 triangles\n");
    const gsl_mesh::Mesh mesh = gsl_mesh::ReadMesh(out);
    const gsl_mesh::Mesh expected = Broken();
    ASSERT_EQ(mesh.corners.size(), expected.corners.size());
    for (std::size_t k = 0; k < mesh.corners.size(); ++k)
      EXPECT_EQ(mesh.corners[k].z, expected.corners[k].z);
  }
  const std::string out = m_folder.Path("out.stl");
  const std::string bytes = BytesOf(out);
  EXPECT_EQ(MeshTool("convert " + m_box + " " + out).status, 4);
  EXPECT_EQ(BytesOf(out), bytes);
  EXPECT_EQ(MeshTool("convert --force --quiet " + m_box + " " + out).out, "");
  EXPECT_NE(BytesOf(out), bytes);
}

TEST_F(GslMesh, MovesByAMatrix) {
  const std::string matrix = m_folder.Write("m.txt", "0 -1 0 10\n1 0 0 20\n0 0 1 30\n");
  const std::string out = m_folder.Path("moved.off");
  const Outcome run = MeshTool("move " + m_box + " " + out + " --matrix " + matrix);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  const json box = json::parse(MeshTool("check --json - " + out).out)["meshes"][0];
  EXPECT_EQ(box["measures"]["low"], json::parse("[8, 20, 30]"));
  EXPECT_EQ(box["measures"]["high"], json::parse("[10, 21, 33]"));
  const std::string mirror = m_folder.Write("mirror.txt", "-1 0 0 0 0 1 0 0 0 0 1 0");
  const Outcome mirrored = MeshTool("move --force " + m_box + " " + out + " --matrix " + mirror);
  EXPECT_EQ(mirrored.status, 0);
  EXPECT_EQ(mirrored.err.find("gsl-mesh: warning: " + mirror), 0u);
  EXPECT_EQ(json::parse(MeshTool("check --json - " + out).out)["meshes"][0]["measures"]["volume"],
            -6.0);
}

TEST_F(GslMesh, AMatrixThatLosesCornersWritesNothing) {
  const std::string huge = m_folder.Write("huge.txt", "1e308 0 0 0 0 1e308 0 0 0 0 1e308 0");
  const std::string out = m_folder.Path("moved.ply");
  const Outcome run = MeshTool("move " + m_box + " " + out + " --matrix " + huge);
  EXPECT_EQ(run.status, 4);
  EXPECT_NE(run.err.find("beyond the range of double"), std::string::npos);
  EXPECT_EQ(Shell("test -e " + out).status, 1);
}

TEST_F(GslMesh, TheExamplesAreSound) {
  const Outcome run =
      MeshTool("check " GSL_EXAMPLE_MESHES "/bolt.stl " GSL_EXAMPLE_MESHES "/bracket.stl");
  EXPECT_EQ(run.status, 0) << run.out;
}

TEST_F(GslMesh, DocumentsShowTheOutput) {
  const std::string folder = GSL_EXAMPLE_MESHES;
  const Outcome run = Shell("cd " + folder + "; $MESH check bolt.stl");
  const std::string text = BytesOf(folder + "/../../docs/gsl-mesh.md");
  EXPECT_NE(text.find("```\ngsl-mesh check bolt.stl\n```\n\n```\n" + run.out + "```\n"),
            std::string::npos)
      << run.out;
}

TEST_F(GslMesh, AFullDiskIsOneError) {
  const Outcome run = Shell("$MESH check " + m_box + " >/dev/full");
  EXPECT_EQ(run.status, 4);
  EXPECT_EQ(LineCount(run.err), 1u);
}

} // namespace
