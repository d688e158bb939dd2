#include "MeshSamples.h"
#include "SweepShapes.h"
#include "ToolRun.h"

#include <gtest/gtest.h>

#include <filesystem>

/// The installed program, in a prefix that was moved after the installation.
namespace {

using namespace tool_run;
using sweep_shapes::Box;

class GslSweepInstalled : public testing::Test {
protected:
  void SetUp() override {
    const Outcome install = Shell("'" GSL_CMAKE "' --install '" GSL_BUILD_DIR "' --prefix '" +
                                  m_folder.Path("first") + "'");
    ASSERT_EQ(install.status, 0) << install.err;
    std::filesystem::rename(m_folder.Path("first"), m_folder.Path("moved"));
    m_prefix = m_folder.Path("moved");
    m_onFloor = " " + m_folder.Write("floor.stl", Box({-9, -9, -9}, {9, 9, -2})) + " -d -z";
  }

  /// GSL_MESH_IMPORT must not help.
  Outcome Installed(const std::string& arguments) const {
    return Shell("unset GSL_MESH_IMPORT; '" + m_prefix + "/" GSL_BIN_DIR "/gsl-sweep' " +
                 arguments);
  }

  Folder m_folder;
  std::string m_prefix;
  std::string m_onFloor; ///< what follows the moving body
};

TEST_F(GslSweepInstalled, ReadsEveryFormat) {
  EXPECT_EQ(Installed("--version").out, "gsl-sweep " GSL_VERSION "\n");
  for (const gsl_mesh_samples::Sample& sample : gsl_mesh_samples::AllSamples()) {
    const std::string path = m_folder.Write(sample.name, sample.bytes);
    const Outcome run = Installed(path + m_onFloor);
    EXPECT_EQ(run.status, 0) << sample.name << run.err;
    EXPECT_EQ(run.out, Sweep(path + m_onFloor).out) << sample.name;
    EXPECT_EQ(FirstLine(run.out).substr(0, 13), "Contact after") << sample.name;
  }
}

TEST_F(GslSweepInstalled, ModelsAreShownToo) {
  const Outcome run = Shell(
      "'" + m_prefix + "/" GSL_BIN_DIR "/gsl-model' " GSL_GOLDEN_RECORDS "/every_kind.gslr check");
  EXPECT_EQ(run.status, 0) << run.err;
  const std::string source = GSL_EXAMPLE_MESHES "/../../tools/gsl-model";
  EXPECT_NE(BytesOf(source + ".1"), "");
  EXPECT_EQ(BytesOf(m_prefix + "/" GSL_MAN_DIR "/man1/gsl-model.1"), BytesOf(source + ".1"));
  EXPECT_EQ(BytesOf(m_prefix + "/" GSL_DATA_DIR "/bash-completion/completions/gsl-model"),
            BytesOf(source + ".bash"));
}

TEST_F(GslSweepInstalled, MeshesAreCheckedToo) {
  const std::string glb = m_folder.Write("part.glb", gsl_mesh_samples::Glb());
  const Outcome run = Shell("'" + m_prefix + "/" GSL_BIN_DIR "/gsl-mesh' check " + glb);
  EXPECT_LE(run.status, 1) << run.err;
  EXPECT_EQ(run.err, "");
  const std::string source = GSL_EXAMPLE_MESHES "/../../tools/gsl-mesh";
  EXPECT_NE(BytesOf(source + ".1"), "");
  EXPECT_EQ(BytesOf(m_prefix + "/" GSL_MAN_DIR "/man1/gsl-mesh.1"), BytesOf(source + ".1"));
  EXPECT_EQ(BytesOf(m_prefix + "/" GSL_DATA_DIR "/bash-completion/completions/gsl-mesh"),
            BytesOf(source + ".bash"));
}

TEST_F(GslSweepInstalled, IsFoundThroughALink) {
  const std::string link = m_folder.Path("link");
  std::filesystem::create_symlink(m_prefix + "/" GSL_BIN_DIR "/gsl-sweep", link);
  const std::string glb = m_folder.Write("part.glb", gsl_mesh_samples::Glb());
  const Outcome run = Shell("unset GSL_MESH_IMPORT; '" + link + "' " + glb + m_onFloor);
  EXPECT_EQ(run.status, 0) << run.err;
}

TEST_F(GslSweepInstalled, ManPageAndCompletionAreWhereTheyAreLookedFor) {
  const std::string source = GSL_EXAMPLE_MESHES "/../../tools/gsl-sweep";
  EXPECT_NE(BytesOf(source + ".1"), "");
  EXPECT_EQ(BytesOf(m_prefix + "/" GSL_MAN_DIR "/man1/gsl-sweep.1"), BytesOf(source + ".1"));
  EXPECT_NE(BytesOf(source + ".bash"), "");
  EXPECT_EQ(BytesOf(m_prefix + "/" GSL_DATA_DIR "/bash-completion/completions/gsl-sweep"),
            BytesOf(source + ".bash"));
}

TEST_F(GslSweepInstalled, WithoutTheImportProgramOnlyItsFormatsAreLost) {
  const std::string program = m_prefix + "/" GSL_LIBEXEC_DIR "/gsl_geometry/gsl-mesh-import";
  ASSERT_TRUE(std::filesystem::remove(program));
  for (const gsl_mesh_samples::Sample& sample : gsl_mesh_samples::AllSamples()) {
    const std::string path = m_folder.Write(sample.name, sample.bytes);
    const Outcome run = Installed(path + m_onFloor);
    const auto format = gsl_mesh::DetectMeshFormat(sample.bytes, sample.name);
    if (format != gsl_mesh::MeshFormat::Assimp) {
      EXPECT_EQ(run.status, 0) << sample.name << run.err;
      continue;
    }
    EXPECT_EQ(run.status, 3) << sample.name;
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "gsl-sweep: " + path +
                           ": is not STL, PLY, OBJ or OFF, and the program that reads other "
                           "formats cannot be started: " +
                           program + " is missing\n");
  }
}

} // namespace
