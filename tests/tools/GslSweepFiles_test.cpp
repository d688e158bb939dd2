#include "MeshRead.h"
#include "SweepShapes.h"
#include "ToolRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <random>

/// Files in and out of gsl-sweep, and what goes wrong with them.
namespace {

using namespace tool_run;
using namespace sweep_shapes;
using nlohmann::json;

const std::string parts = GSL_EXAMPLE_MESHES "/bolt.stl " GSL_EXAMPLE_MESHES "/bracket.stl ";

void ExpectOneErrorLine(const Outcome& run, int status) {
  EXPECT_EQ(run.status, status) << run.err;
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(LineCount(run.err), 1u) << run.err;
  EXPECT_EQ(run.err.substr(0, 11), "gsl-sweep: ");
}

TEST(GslSweepFiles, UnreadableMeshesExitWithThree) {
  const Folder folder;
  const std::string good = GSL_EXAMPLE_MESHES "/bolt.stl";
  const std::string nothing = folder.Write("nothing.stl", std::string());
  const std::string noise = folder.Write("noise.obj", std::string("\x01\x02\x03 not a mesh\n"));
  const std::string nans =
      folder.Write("nans.obj", std::string("v nan 0 0\nv 0 1 0\nv 1 0 0\nf 1 2 3\n"));
  for (const std::string& bad :
       {folder.Path("missing.stl"), nothing, noise, nans, folder.Path("")}) {
    ExpectOneErrorLine(Sweep(bad + " " + good + " --direction -z"), 3);
    ExpectOneErrorLine(Sweep(good + " " + bad + " --direction -z --json -"), 3);
  }
}

TEST(GslSweepFiles, MovedBodyTouchesAtOnce) {
  const Folder folder;
  const std::string moved = folder.Path("moved.stl");
  const Outcome run = Sweep(parts + "--direction -z --offset 0,0,8 --output " + moved);
  EXPECT_EQ(run.status, 0);
  EXPECT_NE(run.out.find("moved   " + moved), std::string::npos);
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"moved.stl"});
  const Mesh before = gsl_mesh::ReadMesh(GSL_EXAMPLE_MESHES "/bolt.stl");
  const Mesh after = gsl_mesh::ReadMesh(moved);
  ASSERT_EQ(after.corners.size(), before.corners.size());
  for (std::size_t k = 0; k < after.corners.size(); ++k) {
    EXPECT_EQ(after.corners[k].x, before.corners[k].x);
    EXPECT_NEAR(after.corners[k].z, before.corners[k].z - 30.0, 1e-6);
  }
  const Outcome again =
      Sweep(moved + " " GSL_EXAMPLE_MESHES "/bracket.stl --direction -z --json -");
  EXPECT_EQ(json::parse(again.out)["status"], "start");
}

TEST(GslSweepFiles, MovedBodyIsPosedFirst) {
  const Folder folder;
  const std::string pose =
      folder.Write("pose.txt", std::string("0.6 -0.8 0 1\n0.8 0.6 0 0\n0 0 1 2\n0 0 0 1\n"));
  const std::string moved = folder.Path("moved.ply");
  const Outcome run =
      Sweep(parts + "-d -z --json - --pose " + pose + " --offset 0,0,8 --output " + moved);
  ASSERT_EQ(run.status, 0);
  const double travel = json::parse(run.out)["travel"];
  const Mesh before = gsl_mesh::ReadMesh(GSL_EXAMPLE_MESHES "/bolt.stl");
  const Mesh after = gsl_mesh::ReadMesh(moved);
  ASSERT_EQ(after.corners.size(), before.corners.size());
  for (std::size_t k = 0; k < after.corners.size(); ++k) {
    const auto& p = before.corners[k];
    EXPECT_NEAR(after.corners[k].x, 0.6 * p.x - 0.8 * p.y + 1.0, 1e-12);
    EXPECT_NEAR(after.corners[k].y, 0.8 * p.x + 0.6 * p.y, 1e-12);
    EXPECT_NEAR(after.corners[k].z, p.z + 10.0 - travel, 1e-12);
  }
}

TEST(GslSweepFiles, OutputIsInTheFormatOfItsExtension) {
  const Folder folder;
  const Mesh before = gsl_mesh::ReadMesh(GSL_EXAMPLE_MESHES "/bolt.stl");
  for (const char* name : {"moved.stl", "moved.PLY", "moved.obj", "moved.off"}) {
    const std::string moved = folder.Path(name);
    // A third of a unit aside, which single precision cannot hold.
    const Outcome run =
        Sweep(parts + "--direction -z --offset 0.3333333333333333,0,0 --output " + moved);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(gsl_mesh::DetectMeshFormat(BytesOf(moved), moved),
              gsl_mesh::MeshFormatToWrite(moved));
    const Mesh after = gsl_mesh::ReadMesh(moved);
    ASSERT_EQ(after.corners.size(), before.corners.size());
    const bool isStl = gsl_mesh::MeshFormatToWrite(moved) == gsl_mesh::MeshFormat::Stl;
    for (std::size_t k = 0; k < after.corners.size(); ++k) {
      const double x = before.corners[k].x + 0.3333333333333333;
      EXPECT_EQ(after.corners[k].x, isStl ? static_cast<double>(static_cast<float>(x)) : x);
    }
  }
}

/// Returns the document of a binary glTF file.
json GltfOf(const std::string& bytes) {
  const std::size_t end = bytes.find("BIN", 20);
  return json::parse(bytes.substr(20, end - 24));
}

TEST(GslSweepFiles, OutputAsGltfHoldsAllBodiesAtTheContact) {
  const Folder folder;
  const std::string file = folder.Path("scene.GLB");
  const Outcome run = Sweep(parts + "--direction -z --output " + file);
  EXPECT_EQ(run.status, 0);
  EXPECT_NE(run.out.find("\n  scene   " + file + "\n"), std::string::npos);
  const json told = json::parse(Sweep(parts + "--direction -z --json -").out);
  const json scene = GltfOf(BytesOf(file));
  const json& answer = scene.at("scenes").at(0).at("extras");
  for (const char* key : {"travel", "kind", "direction", "normal"})
    EXPECT_EQ(answer[key], told[key]) << key;
  EXPECT_EQ(answer["moving"]["point"], told["moving"]["point"]);
  EXPECT_EQ(answer["fixed"]["file"], told["fixed"]["file"]);
  // The moving body is where --output of another format has it.
  const std::string moved = folder.Path("moved.stl"), second = folder.Path("second.glb");
  EXPECT_EQ(Sweep(parts + "--direction -z --output " + moved).status, 0);
  const std::string again = moved + " " + parts.substr(parts.find(' ') + 1);
  EXPECT_EQ(Sweep(again + "--direction -z --output " + second).status, 0);
  const json other = GltfOf(BytesOf(second));
  EXPECT_EQ(other["nodes"][0]["translation"], scene["nodes"][0]["translation"]);
  EXPECT_EQ(other["nodes"][0]["name"], moved);
  EXPECT_EQ(other["nodes"][1], scene["nodes"][1]);
}

TEST(GslSweepFiles, OutputAsGltfIsPosedAndNotGrown) {
  const Folder folder;
  const std::string file = folder.Path("scene.glb");
  const std::string pose = folder.Write("pose", std::string("1 0 0 0 0 1 0 0 0 0 1 7"));
  const auto bodyWith = [&](const std::string& options) {
    EXPECT_EQ(Sweep(parts + "--direction -z --quiet --force --output " + file + options).status, 0);
    const json scene = GltfOf(BytesOf(file));
    // The vertices of the first body are the first bytes of the binary part.
    const std::string bytes = BytesOf(file);
    const std::size_t size = scene["bufferViews"][0]["byteLength"];
    return std::pair<json, std::string>(scene["nodes"][0]["translation"],
                                        bytes.substr(bytes.find("BIN", 20) + 4, size));
  };
  const auto plain = bodyWith("");
  // It begins higher and ends at the same place.
  const auto posed = bodyWith(" --pose " + pose + " --offset 0,0,1");
  EXPECT_EQ(posed.first, plain.first);
  EXPECT_EQ(posed.second, plain.second);
  // A grown body meets the other earlier, and is written with its own size.
  const auto grown = bodyWith(" --allowance 0.125");
  EXPECT_NEAR(grown.first[2].get<double>(), plain.first[2].get<double>() + 0.125, 1e-6);
  EXPECT_EQ(grown.second, plain.second);
}

TEST(GslSweepFiles, OutputOfAnotherFormatIsWrongUsage) {
  const Folder folder;
  for (const char* name : {"moved.step", "moved.3mf", "moved"}) {
    const std::string moved = folder.Path(name);
    const Outcome run = Sweep(parts + "--direction -z --output " + moved);
    ExpectOneErrorLine(run, 2);
    EXPECT_EQ(run.err,
              "gsl-sweep: --output must end in .stl, .ply, .obj or .off, or in .glb (got " + moved +
                  ")\n");
  }
  EXPECT_TRUE(folder.Names().empty());
}

TEST(GslSweepFiles, PictureIsDrawnInTheFormatOfItsExtension) {
  const Folder folder;
  const struct {
    const char* name;
    std::string begin;
  } rows[] = {{"a.svg", "<?xml"}, {"a.PNG", "\x89PNG"}, {"a.pdf", "%PDF-"}};
  for (const auto& row : rows) {
    const std::string file = folder.Path(row.name);
    const Outcome run = Sweep(parts + "--direction -z --picture " + file);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("\n  picture " + file + "\n"), std::string::npos) << run.out;
    const std::string bytes = BytesOf(file);
    EXPECT_EQ(bytes.substr(0, row.begin.size()), row.begin);
    EXPECT_LE(bytes.size(), 500u * 1024u);
    EXPECT_EQ(Sweep(parts + "--direction -z --quiet --force --picture " + file).status, 0);
    EXPECT_EQ(BytesOf(file), bytes) << "a second run has the same bytes";
  }
}

TEST(GslSweepFiles, PictureShowsTheBodyThatWasAskedAbout) {
  const Folder folder;
  const auto draw = [&](const std::string& name, const std::string& options) {
    const Outcome run = Sweep(parts + options + " --picture " + folder.Path(name));
    EXPECT_NE(run.out.find("  picture "), std::string::npos) << run.err;
    return BytesOf(folder.Path(name));
  };
  const std::string pose = folder.Write("pose.txt", std::string("1 0 0 0 0 1 0 0 0 0 1 9\n"));
  const std::string plain = draw("plain.png", "-d -z");
  const std::string offset = draw("offset.png", "-d -z --offset 0,0,9");
  EXPECT_NE(offset, plain);
  const std::string posed = draw("pose.png", "-d -z --pose " + pose);
  EXPECT_NE(posed, plain);
  EXPECT_NE(posed, offset) << "the page says which of the two it was";
  EXPECT_NE(draw("grown.png", "-d -z --allowance 0.5"), plain);
  EXPECT_NE(draw("patch.png", "-d -z --patch"), plain);
  EXPECT_NE(draw("none.png", "-d z"), plain) << "without a contact there is a page too";
}

TEST(GslSweepFiles, OutputsOfOneNameAreRefused) {
  const Folder folder;
  const std::string file = folder.Path("a.png");
  const Outcome run = Sweep(parts + "--direction -z --json " + file + " --picture " + file);
  ExpectOneErrorLine(run, 2);
  EXPECT_EQ(run.err, "gsl-sweep: --json and --picture name the same file\n");
  folder.Write("kept.svg", std::string("kept"));
  ExpectOneErrorLine(Sweep(parts + "--direction -z --picture " + folder.Path("kept.svg")), 4);
  EXPECT_EQ(BytesOf(folder.Path("kept.svg")), "kept");
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"kept.svg"});
}

TEST(GslSweepFiles, StartWritesTheBodyWhereItIs) {
  const Folder folder;
  const std::string moved = folder.Path("moved.stl");
  EXPECT_EQ(Sweep(parts + "--direction -z --offset 0,0,-30 --output " + moved).status, 0);
  const Mesh after = gsl_mesh::ReadMesh(moved);
  const Mesh before = gsl_mesh::ReadMesh(GSL_EXAMPLE_MESHES "/bolt.stl");
  EXPECT_EQ(after.corners[5].z, before.corners[5].z - 30.0);
}

TEST(GslSweepFiles, WithoutContactNothingIsWrittenAndThatIsSaid) {
  const Folder folder;
  const std::string moved = folder.Path("moved.stl");
  const Outcome run = Sweep(parts + "--direction +z --output " + moved);
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(FirstLine(run.out), "No contact along (0, 0, 1).");
  EXPECT_NE(run.out.find("\n  moved   nothing written to " + moved + "\n"), std::string::npos);
  const Outcome asJson = Sweep(parts + "--direction +z --json - --output " + moved);
  EXPECT_EQ(asJson.status, 1);
  EXPECT_TRUE(json::accept(asJson.out));
  EXPECT_NE(asJson.err.find("nothing is written to " + moved), std::string::npos);
  EXPECT_TRUE(folder.Names().empty());
}

TEST(GslSweepFiles, JsonFileHoldsTheTextOfStdout) {
  const Folder folder;
  const std::string file = folder.Path("answer.json");
  const Outcome run = Sweep(parts + "--direction -z --json " + file);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(LineCount(run.out), 3u);
  EXPECT_EQ(BytesOf(file), Sweep(parts + "--direction -z --json -").out);
  const Outcome none = Sweep(parts + "--direction +z --force --json " + file);
  EXPECT_EQ(none.status, 1);
  EXPECT_EQ(json::parse(BytesOf(file))["status"], "none");
}

TEST(GslSweepFiles, ExistingFilesAreKeptUnlessForced) {
  const Folder folder;
  for (const std::string option : {"--output ", "--json ", "--view "}) {
    const std::string name = option == "--view " ? "old.html" : "old.stl";
    const std::string file = folder.Write(name, std::string("old"));
    ExpectOneErrorLine(Sweep(parts + "--direction -z " + option + file), 4);
    EXPECT_EQ(BytesOf(file), "old");
    EXPECT_EQ(Sweep(parts + "--direction -z --force " + option + file).status, 0);
    EXPECT_NE(BytesOf(file), "old");
  }
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"old.html", "old.stl"}));
}

/// Returns the numbers of a page.
json SceneOf(const std::string& page) {
  const std::string open = "id=\"scene\">\n";
  const std::size_t from = page.find(open) + open.size();
  return json::parse(page.substr(from, page.find("</script>", from) - from));
}

TEST(GslSweepFiles, AViewShowsTheAnswerOfTheJson) {
  const Folder folder;
  const std::string file = folder.Path("view.html");
  const Outcome run = Sweep(parts + "--direction -z --view " + file);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(LineCount(run.out), 4u);
  EXPECT_NE(run.out.find("\n  view    " + file + "\n"), std::string::npos);
  const json scene = SceneOf(BytesOf(file));
  const json told = json::parse(Sweep(parts + "--direction -z --json -").out);
  for (const char* key : {"status", "travel", "kind", "direction", "normal", "fixed_body"})
    EXPECT_EQ(scene["answer"][key], told[key]) << key;
  EXPECT_EQ(scene["answer"]["moving"]["triangle"], told["moving"]["triangle"]);
  EXPECT_EQ(scene["answer"]["fixed"]["point"], told["fixed"]["point"]);
  EXPECT_EQ(scene["version"], told["tool_version"]);
  EXPECT_EQ(scene["moving"]["triangles"], told["moving"]["triangles"]);
  EXPECT_TRUE(scene["patch"].is_null());
}

TEST(GslSweepFiles, AViewShowsTheBodyWhereItIsAsked) {
  const Folder folder;
  const std::string file = folder.Path("view.html");
  const std::string pose = folder.Write("pose", std::string("1 0 0 0 0 1 0 0 0 0 1 7"));
  const auto centreWith = [&](const std::string& options) {
    EXPECT_EQ(Sweep(parts + "--direction -z --quiet --force --view " + file + options).status, 0);
    return SceneOf(BytesOf(file))["moving"]["centre"];
  };
  const json plain = centreWith("");
  EXPECT_EQ(centreWith(" --offset 0,0,8")[2], plain[2].get<double>() + 8.0);
  EXPECT_EQ(centreWith(" --offset 0,8,0")[1], plain[1].get<double>() + 8.0);
  EXPECT_EQ(centreWith(" --offset 1,0,0")[0], plain[0].get<double>() + 1.0);
  EXPECT_EQ(centreWith(" --pose " + pose)[2], plain[2].get<double>() + 7.0);
  EXPECT_EQ(centreWith(" --pose " + pose + " --offset 0,0,8")[2], plain[2].get<double>() + 15.0);
  // The body grows at its sides, about the same centre; the page has the grown corners.
  const std::string before = BytesOf(file);
  EXPECT_EQ(centreWith(" --allowance 0.125")[2], plain[2]);
  EXPECT_NE(BytesOf(file), before);
}

TEST(GslSweepFiles, AViewHasThePatchAndIsWrittenWithoutContactToo) {
  const Folder folder;
  const std::string file = folder.Path("view.html");
  const std::string command = parts + "--quiet --force --view " + file;
  EXPECT_EQ(Sweep(command + " -d -z --patch --patch-pairs 5").status, 0);
  EXPECT_EQ(SceneOf(BytesOf(file))["patch"], json({{"count", 364}, {"listed", 5}}));
  EXPECT_EQ(Sweep(command + " -d z").status, 1);
  EXPECT_EQ(SceneOf(BytesOf(file))["answer"]["status"], "none");
}

TEST(GslSweepFiles, ASphereHasAMapAndAPage) {
  const Folder folder;
  const std::string map = folder.Path("map.svg"), page = folder.Path("page.html");
  const std::string sphere = parts + "--sphere 50";
  const std::string files = " --picture " + map + " --view " + page;
  const Outcome plain = Sweep(sphere);
  const Outcome run = Sweep(sphere + files);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out, plain.out + "  view    " + page + "\n  picture " + map + "\n");
  const std::string mapBytes = BytesOf(map), pageBytes = BytesOf(page);
  EXPECT_EQ(Sweep(sphere + files + " --force --quiet --threads 1").out, "");
  EXPECT_EQ(BytesOf(map), mapBytes) << "a second run has the same bytes";
  EXPECT_EQ(BytesOf(page), pageBytes);
  // The JSON is on stdout alone, and says the same.
  const json told = json::parse(Sweep(sphere + files + " --force --json -").out);
  const json scene = SceneOf(pageBytes);
  for (const char* key : {"free", "contact", "start", "least", "greatest"})
    EXPECT_EQ(scene["sphere"][key], told[key]) << key;
  EXPECT_EQ(scene["sphere"]["shown"], told["greatest"]);
  const json& shown = told["answers"][told["greatest"].get<std::size_t>()];
  for (const char* key : {"status", "travel", "kind", "direction", "normal", "fixed_body"})
    EXPECT_EQ(scene["answer"][key], shown[key]) << key;
  ExpectOneErrorLine(Sweep(sphere + " --picture " + map), 4);
  ExpectOneErrorLine(Sweep(sphere + " --view " + page), 4);
  EXPECT_EQ(BytesOf(map), mapBytes);
}

TEST(GslSweepFiles, ASphereIsDrawnForEveryQuestion) {
  const Folder folder;
  const std::string map = folder.Path("map.png"), page = folder.Path("page.html");
  const std::string files = " --quiet --force --picture " + map + " --view " + page;
  std::vector<std::string> seen;
  for (const char* options :
       {"--sphere 1", "--sphere 40", "--sphere 40 --last", "--sphere 40 --solid",
        "--sphere 40 --clearance 2", "--sphere 40 --max-distance 12", "--sphere 40 --one-sided",
        "--sphere 40 --offset 0,0,-30 --leaving", "--sphere 40 --allowance 0.5"}) {
    const Outcome run = Sweep(parts + options + files);
    EXPECT_LE(run.status, 1) << options << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_LE(BytesOf(map).size(), 500u * 1024u);
    seen.push_back(BytesOf(map));
    EXPECT_EQ(std::count(seen.begin(), seen.end(), seen.back()), 1) << options;
    EXPECT_FALSE(SceneOf(BytesOf(page))["sphere"].is_null());
  }
}

TEST(GslSweepFiles, OutputsThatCannotBeWrittenExitWithFour) {
  ExpectOneErrorLine(Sweep(parts + "--direction -z --output /nowhere/at/all.stl"), 4);
  ExpectOneErrorLine(Sweep(parts + "--direction -z --json /dev/full"), 4);
  ExpectOneErrorLine(Sweep(parts + "--direction -z >/dev/full"), 4);
  ExpectOneErrorLine(Sweep(parts + "--direction -z --json - >/dev/full"), 4);
  ExpectOneErrorLine(Sweep(parts + "--direction -z >&-"), 4);
  ExpectOneErrorLine(Sweep("--help >/dev/full"), 4);
}

TEST(GslSweepFiles, FileSizeLimitIsAnErrorAndLeavesNothing) {
  const Folder folder;
  // One block is less than the 14484 bytes of the bolt.
  const Outcome run = Shell("ulimit -f 1; $SWEEP " + parts + "--direction -z --quiet --output " +
                            folder.Path("moved.stl"));
  ExpectOneErrorLine(run, 4);
  EXPECT_TRUE(folder.Names().empty());
}

TEST(GslSweepFiles, OneOutputUnderTwoNamesIsWrongUsage) {
  const Folder folder;
  std::filesystem::create_directory(folder.Path("inner"));
  std::filesystem::create_symlink("inner", folder.Path("link"));
  for (const char* other : {"/inner/../inner/out.stl", "//inner/./out.stl", "/link/out.stl"}) {
    const Outcome run =
        Sweep(parts + "--direction -z --force --json " + folder.Path("inner/out.stl") +
              " --output " + folder.Path("") + other);
    ExpectOneErrorLine(run, 2);
  }
  const Outcome run = Sweep(parts + "-d -z --force --view " + folder.Path("inner/o.html") +
                            " --json " + folder.Path("link/o.html"));
  ExpectOneErrorLine(run, 2);
  EXPECT_EQ(run.err, "gsl-sweep: --json and --view name the same file\n");
  EXPECT_TRUE(std::filesystem::is_empty(folder.Path("inner")));
}

TEST(GslSweepFiles, EitherBodyMayComeFromStandardInput) {
  const std::string bolt = GSL_EXAMPLE_MESHES "/bolt.stl";
  const std::string bracket = GSL_EXAMPLE_MESHES "/bracket.stl";
  const json expected = json::parse(Sweep(parts + "--direction -z --json -").out);
  for (const char* side : {"moving", "fixed"}) {
    const bool isMoving = side == std::string("moving");
    const std::string both = isMoving ? "- " + bracket : bolt + " -";
    const std::string piped =
        "cat " + (isMoving ? bolt : bracket) + " | $SWEEP " + both + " -d -z ";
    json answer = json::parse(Shell(piped + "--json -").out);
    EXPECT_EQ(answer[side]["file"], "-");
    answer[side]["file"] = expected[side]["file"];
    if (!isMoving) {
      EXPECT_EQ(answer["fixed_bodies"][0]["file"], "-");
      answer["fixed_bodies"][0]["file"] = expected["fixed"]["file"];
    }
    EXPECT_EQ(answer, expected);
    EXPECT_EQ(Shell(piped + "--format stl --json -").status, 0);
    EXPECT_NE(Shell(piped).out.find(std::string("  ") + (isMoving ? "moving  " : "fixed   ") +
                                    "standard input, triangle "),
              std::string::npos);
  }
}

TEST(GslSweepFiles, StandardInputThatIsNotAMeshExitsWithThree) {
  const std::string onto = "$SWEEP - " GSL_EXAMPLE_MESHES "/bracket.stl -d -z";
  const Outcome nothing = Shell(onto + " </dev/null");
  ExpectOneErrorLine(nothing, 3);
  EXPECT_EQ(nothing.err, "gsl-sweep: standard input: is empty\n");
  ExpectOneErrorLine(Shell("echo v 0 0 0 | " + onto), 3);
  ExpectOneErrorLine(Shell("echo v 0 0 0 | " + onto + " --format obj"), 3);
  ExpectOneErrorLine(Shell(onto + " </"), 3);
  ExpectOneErrorLine(Shell(onto + " <&-"), 3);
}

TEST(GslSweepFiles, OffsetBeyondTheRangeOfDoubleIsAnError) {
  const Folder folder;
  const std::string far =
      folder.Write("far.obj", std::string("v 0 0 1e308\nv 0 1 0\nv 1 0 0\nf 1 2 3\n"));
  const std::string question = far + " " GSL_EXAMPLE_MESHES "/bracket.stl --direction -z --offset ";
  const Outcome run = Sweep(question + "0,0,1e308");
  ExpectOneErrorLine(run, 4);
  EXPECT_NE(run.err.find("--offset"), std::string::npos);
  EXPECT_LE(Sweep(question + "0,0,-1e308").status, 1);
}

TEST(GslSweepFiles, ReaderThatGoesAwayIsNotAnError) {
  const Outcome run = Shell("$SWEEP " + parts + "--direction -z | true");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
}

TEST(GslSweepFiles, InterruptLeavesNoFiles) {
  const Folder folder;
  std::mt19937_64 random(1);
  const std::string moving =
      folder.Write("moving.stl", Moved(Soup(random, 60000, 1.0, 0.02, 0.0), {0, 0, 4}));
  const std::string fixed = folder.Write("fixed.stl", Soup(random, 60000, 1.0, 0.02, 0.0));
  const std::string moved = folder.Path("moved.stl");
  for (const char* delay : {"0", "0.02", "0.05", "0.1", "0.2", "0.4"}) {
    // A background process of a plain shell ignores SIGINT, so the harder signal is sent.
    Shell("$SWEEP " + moving + " " + fixed + " --direction -z --force --output " + moved +
          " & sleep " + delay + "; kill -TERM $!; wait $!");
    for (const std::string& name : folder.Names()) {
      const bool isWhole =
          name == "moved.stl" && std::filesystem::file_size(moved) == 84 + 50 * 60000;
      EXPECT_TRUE(name == "moving.stl" || name == "fixed.stl" || isWhole) << name;
    }
  }
}

TEST(GslSweepFiles, HostileFilesEndInAnAnswerOrOneLine) {
  const char* const meshes = std::getenv("GSL_MESH_DIR");
  if (meshes == nullptr) {
    std::printf("GSL_MESH_DIR is not set: no hostile file is swept\n");
    return;
  }
  const std::string good = GSL_EXAMPLE_MESHES "/bolt.stl";
  int files = 0;
  for (const auto& entry :
       std::filesystem::directory_iterator(std::filesystem::path(meshes) / "hostile")) {
    const std::string bad = "'" + entry.path().string() + "'";
    for (const std::string& both : {bad + " " + good, good + " " + bad}) {
      const Outcome run = Sweep(both + " --direction -z --quiet --json -");
      if (run.status == 3) {
        ExpectOneErrorLine(run, 3);
      } else {
        EXPECT_TRUE(run.status == 0 || run.status == 1) << both << run.err;
        EXPECT_TRUE(json::accept(run.out)) << both;
        EXPECT_EQ(run.err, "") << both;
      }
    }
    ++files;
  }
  EXPECT_GE(files, 17);
}

} // namespace
