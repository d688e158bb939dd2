#include "MeshOptions.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace gsl_tools;
using gsl_mesh::MeshFormat;

struct Parsed {
  MeshOptions options;
  std::string text;
};

Parsed Parse(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "gsl-mesh");
  Parsed parsed;
  parsed.text =
      ParseMeshOptions(static_cast<int>(arguments.size()), arguments.data(), parsed.options);
  return parsed;
}

std::string ErrorOf(const std::vector<const char*>& arguments) {
  try {
    Parse(arguments);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "no error";
}

const std::string seeHelp = " (see gsl-mesh --help)";

TEST(MeshOptions, OfCheck) {
  const MeshOptions options =
      Parse({"check", "a.stl", "b.obj", "-", "--json", "-", "--format=ply", "--quiet", "--force"})
          .options;
  EXPECT_EQ(options.command, MeshCommand::Check);
  EXPECT_EQ(options.files, (std::vector<std::string>{"a.stl", "b.obj", "-"}));
  EXPECT_TRUE(options.JsonToStdout());
  EXPECT_EQ(options.format, MeshFormat::Ply);
  EXPECT_TRUE(options.quiet);
  EXPECT_TRUE(options.force);
  EXPECT_EQ(options.output, "");
}

TEST(MeshOptions, OfConvertAndMove) {
  const MeshOptions convert = Parse({"convert", "a.stl", "b.PLY"}).options;
  EXPECT_EQ(convert.command, MeshCommand::Convert);
  EXPECT_EQ(convert.files, std::vector<std::string>{"a.stl"});
  EXPECT_EQ(convert.output, "b.PLY");
  const MeshOptions move = Parse({"move", "--matrix", "m.txt", "a.stl", "b.off"}).options;
  EXPECT_EQ(move.command, MeshCommand::Move);
  EXPECT_EQ(move.files, std::vector<std::string>{"a.stl"});
  EXPECT_EQ(move.output, "b.off");
  EXPECT_EQ(move.matrixFile, "m.txt");
}

TEST(MeshOptions, HelpAndVersion) {
  EXPECT_EQ(Parse({"--version"}).text, "gsl-mesh " GSL_VERSION "\n");
  const std::string help = Parse({"--help"}).text;
  EXPECT_NE(help.find("Usage: gsl-mesh COMMAND FILE... [OPTION...]"), std::string::npos);
  EXPECT_EQ(Parse({"chekc", "-h"}).text, help);
}

TEST(MeshOptions, WhatIsMissing) {
  EXPECT_EQ(ErrorOf({}), "COMMAND and FILE are missing; expected gsl-mesh COMMAND FILE... "
                         "[OPTION...]" +
                             seeHelp);
  EXPECT_EQ(ErrorOf({"check"}), "FILE is missing; expected gsl-mesh check FILE..." + seeHelp);
  EXPECT_EQ(ErrorOf({"convert", "a.stl"}),
            "OUT is missing; expected gsl-mesh convert FILE OUT" + seeHelp);
  EXPECT_EQ(ErrorOf({"move", "a.stl"}),
            "OUT and --matrix are missing; expected gsl-mesh move FILE OUT --matrix M" + seeHelp);
}

TEST(MeshOptions, WhatIsWrong) {
  EXPECT_EQ(ErrorOf({"chekc", "a.stl"}), "unknown command chekc; did you mean check?");
  EXPECT_EQ(ErrorOf({"repair", "a.stl"}),
            "unknown command repair; expected check, convert or move" + seeHelp);
  EXPECT_EQ(ErrorOf({"check", "a.stl", "--jsn", "x"}),
            "unknown option --jsn; did you mean --json?");
  EXPECT_EQ(ErrorOf({"check", ""}), "FILE must be a file name (got an empty value)");
  EXPECT_EQ(ErrorOf({"check", "a.stl", "--json", ""}),
            "--json must be a file name or - (got an empty value)");
  EXPECT_EQ(ErrorOf({"check", "-", "--format", "step"}),
            "--format must be stl, ply, obj or off (got step)");
  EXPECT_EQ(ErrorOf({"convert", "a.stl", "b.glb"}),
            "OUT must end in .stl, .ply, .obj or .off (got b.glb)");
  EXPECT_EQ(ErrorOf({"convert", "a.stl", "b.stl", "c.stl"}), "unexpected argument c.stl");
  EXPECT_EQ(ErrorOf({"convert", "a.stl", "b.stl", "--json", "-"}),
            "--json cannot be used with convert; expected check");
  EXPECT_EQ(ErrorOf({"check", "a.stl", "--matrix", "m"}),
            "--matrix cannot be used with check; expected move");
  EXPECT_EQ(ErrorOf({"check", "-", "-"}),
            "more than one of FILE and --matrix is -; expected standard input once at most");
  EXPECT_EQ(ErrorOf({"move", "-", "b.stl", "--matrix", "-"}),
            "more than one of FILE and --matrix is -; expected standard input once at most");
  EXPECT_EQ(ErrorOf({"check", "a.stl", "--format", "stl"}),
            "--format needs a mesh on standard input; expected - as FILE");
}

} // namespace
