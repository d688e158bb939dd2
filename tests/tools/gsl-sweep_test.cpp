#include "SweepShapes.h"
#include "ToolRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace tool_run;
using namespace sweep_shapes;
using nlohmann::json;

const std::string bolt = GSL_EXAMPLE_MESHES "/bolt.stl";
const std::string bracket = GSL_EXAMPLE_MESHES "/bracket.stl";
const std::string parts = bolt + " " + bracket + " ";

/// Reads the JSON of each line.
std::vector<json> LinesOf(const std::string& out) {
  std::vector<json> lines;
  std::istringstream stream(out);
  for (std::string line; std::getline(stream, line);)
    lines.push_back(json::parse(line));
  return lines;
}

TEST(GslSweep, ReportsInThreeLines) {
  const Outcome run = Sweep(parts + "--direction 0,0,-1");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(LineCount(run.out), 3u);
  EXPECT_EQ(FirstLine(run.out), "Contact after 30 along (0, 0, -1): vertex on face.");
}

TEST(GslSweep, WritesOneJsonDocumentToStdout) {
  const Outcome run = Sweep(parts + "--direction -z --json -");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  const json answer = json::parse(run.out);
  EXPECT_EQ(answer["status"], "contact");
  EXPECT_EQ(answer["travel"], 30.0);
  EXPECT_EQ(answer["direction"], json::parse("[0.0, 0.0, -1.0]"));
  EXPECT_EQ(answer["moving"]["file"], bolt);
  EXPECT_EQ(answer["moving"]["triangles"], 288);
  EXPECT_EQ(answer["moving"]["skipped"], 0);
  EXPECT_EQ(answer["moving"]["point"][2], 30.0);
  EXPECT_EQ(answer["fixed"]["triangles"], 252);
  EXPECT_EQ(answer["fixed"]["point"][2], 0.0);
  EXPECT_EQ(answer["warnings"], json::array());
  EXPECT_EQ(answer["schema_version"], 2);
  EXPECT_EQ(answer["tool_version"], GSL_VERSION);
  EXPECT_EQ(answer["normal"], json::parse("[0.0, 0.0, 1.0]"));
}

TEST(GslSweep, JsonRepeatsTheQuestionAndNotTheThreads) {
  const json answer = json::parse(Sweep(parts + "-d -z --offset 0,0,5 --max-distance 12.5 "
                                                "--one-sided --threads 2 --json -")
                                      .out);
  EXPECT_EQ(answer["question"],
            json::parse(R"({"allowance": 0.0, "pose": null, "offset": [0.0, 0.0, 5.0],
                            "max_distance": 12.5, "one_sided": true, "rule": "touch",
                            "clearance": 0.0, "last": false})"));
  EXPECT_EQ(answer["status"], "none");
  EXPECT_TRUE(answer["normal"].is_null());
  // Each part has triangles that face away.
  EXPECT_GT(answer["moving"]["left_out"], 0);
  EXPECT_GT(answer["fixed"]["left_out"], 0);
  const json free = json::parse(Sweep(parts + "-d -z --json -").out);
  EXPECT_EQ(free["question"],
            json::parse(R"({"allowance": 0.0, "pose": null, "offset": [0.0, 0.0, 0.0],
                            "max_distance": null, "one_sided": false, "rule": "touch",
                            "clearance": 0.0, "last": false})"));
  EXPECT_EQ(free["moving"]["left_out"], 0);
}

TEST(GslSweep, DocumentsShowTheOutput) {
  const std::string folder = GSL_EXAMPLE_MESHES;
  const std::string command = "gsl-sweep bolt.stl bracket.stl --direction 0,0,-1";
  const Outcome run = Shell("cd " + folder + "; $SWEEP " + command.substr(command.find(' ')));
  const std::string guide = BytesOf(folder + "/../../docs/gsl-sweep.md");
  for (const std::string& text : {BytesOf(folder + "/../../README.md"), guide}) {
    EXPECT_NE(text.find("```\n" + command + "\n```\n\n```\n" + run.out + "```\n"),
              std::string::npos)
        << text;
  }
  const std::string fence = "```json\n";
  const std::size_t begin = guide.find(fence) + fence.size();
  const Outcome asJson =
      Shell("cd " + folder + "; $SWEEP " + command.substr(command.find(' ')) + " --json -");
  EXPECT_EQ(json::parse(guide.substr(begin, guide.find("```", begin) - begin)),
            json::parse(asJson.out));
}

TEST(GslSweep, DocumentsShowManyDirections) {
  const std::string folder = GSL_EXAMPLE_MESHES;
  const std::string guide = BytesOf(folder + "/../../docs/gsl-sweep.md");
  const std::string sphere = "gsl-sweep bolt.stl bracket.stl --sphere 1000";
  const Outcome run = Shell("cd " + folder + "; $SWEEP " + sphere.substr(sphere.find(' ')));
  EXPECT_NE(guide.find("```\n" + sphere + "\n```\n\n```\n" + run.out + "```\n"), std::string::npos)
      << run.out;
  const std::string input = "printf 'x\\n-z  # down\\nup\\n' | ";
  const std::string lines = "gsl-sweep bolt.stl bracket.stl --directions -";
  EXPECT_NE(guide.find("\n" + input + lines + "\n"), std::string::npos);
  const Outcome answered =
      Shell("cd " + folder + "; " + input + "$SWEEP " + lines.substr(lines.find(' ')));
  EXPECT_EQ(answered.status, 2);
  EXPECT_EQ(std::count(answered.out.begin(), answered.out.end(), '\n'), 3);
  std::istringstream answers(answered.out);
  for (std::string line; std::getline(answers, line);) {
    const std::string beginning = line.substr(0, 70);
    EXPECT_NE(guide.find("\n" + beginning), std::string::npos) << line;
  }
}

/// Returns the rest of the text after a mark, up to the next mark.
std::string Between(const std::string& text, const std::string& mark, const std::string& end) {
  const std::size_t begin = text.find(mark);
  if (begin == text.npos) return {};
  return text.substr(begin + mark.size(),
                     text.find(end, begin + mark.size()) - begin - mark.size());
}

const std::string questionsGuide = GSL_EXAMPLE_MESHES "/../../docs/contact-questions.md";

TEST(GslSweep, DocumentsShowEveryQuestion) {
  const std::string guide = BytesOf(questionsGuide);
  const std::string fence = "\n```\n";
  std::size_t count = 0;
  for (const char* const option : {"--leaving", "--solid", "--solid --allowance=-1e-4",
                                   "--clearance 0.25", "--last", "--patch"}) {
    SCOPED_TRACE(option);
    // A command ends with the option it shows, and what it prints follows it.
    const std::size_t end = guide.find(std::string(" ") + option + fence);
    ASSERT_NE(end, guide.npos);
    const std::size_t begin = guide.rfind("\ngsl-sweep ", end);
    ASSERT_NE(begin, guide.npos);
    const std::string command = guide.substr(begin + 1, guide.find('\n', begin + 1) - begin - 1);
    const Outcome run = Shell("cd " GSL_EXAMPLE_MESHES "; $SWEEP " + command.substr(10));
    EXPECT_EQ(Between(guide.substr(end), "\n```\n\n```\n", "```"), run.out);
    ++count;
  }
  EXPECT_EQ(count, 6u);
}

TEST(GslSweep, DocumentsShowTheSeatedBoltInSixDirections) {
  const std::string guide = BytesOf(questionsGuide);
  for (const char* const direction : {"x", "-x", "y", "-y", "z", "-z"}) {
    const auto answered = [&](const std::string& option) {
      const json answer = json::parse(
          Sweep(parts + "--offset 0,0,-30 --json - -d " + direction + " " + option).out);
      return answer["status"] == "contact" ? answer["travel"].dump() + " |"
                                           : answer["status"].get<std::string>() + " |";
    };
    const std::string row = "\n| `" + std::string(direction) + "` | " + answered("") + " " +
                            answered("--leaving") + " " + answered("--solid") + " " +
                            answered("--solid --allowance=-1e-4") + " " +
                            answered("--clearance 0.1") + "\n";
    EXPECT_NE(guide.find(row), guide.npos) << row;
  }
}

TEST(GslSweep, SeatedBoltLeavesUpwardsOnly) {
  const std::string seated = parts + "--offset 0,0,-30 --leaving -d ";
  EXPECT_EQ(Sweep(seated + "z").status, 1);
  EXPECT_EQ(Sweep(seated + "1,0,9").status, 0); // its shank meets the wall of the hole
  EXPECT_EQ(Sweep(seated + "x").status, 0);
  const json answer = json::parse(Sweep(seated + "-z --json -").out);
  EXPECT_EQ(answer["status"], "start");
  EXPECT_EQ(answer["question"]["rule"], "not-leaving");
}

TEST(GslSweep, SolidsMayTouchAndSlide) {
  const std::string seated = parts + "--offset 0,0,-30 --solid -d ";
  EXPECT_EQ(Sweep(seated + "z").status, 1);
  const json play = json::parse(Sweep(seated + "x --json -").out);
  EXPECT_EQ(play["question"]["rule"], "solid");
  EXPECT_EQ(play["status"], "contact");
  EXPECT_NEAR(play["travel"].get<double>(), 0.5, 1e-6);
  EXPECT_EQ(play["overlaps_at_start"], false);
  EXPECT_EQ(Sweep(seated + "x --max-distance 0.25").status, 1);
  EXPECT_EQ(Sweep(seated + "-z").out.substr(0, 81),
            "In contact from the start (the solids overlap at every small positive travel): ve");
  const Outcome pressed = Sweep(parts + "--offset 0,0,-30.5 --solid -d z");
  EXPECT_EQ(pressed.status, 0);
  EXPECT_EQ(pressed.out.substr(0, 66),
            "In contact from the start (the solids overlap before any travel): ");
}

TEST(GslSweep, SolidsAreAskedInEveryWay) {
  const Folder folder;
  const std::string peg = folder.Write("peg.stl", Box({-1, -1, 4}, {1, 1, 5}));
  const std::string slot = folder.Write("slot.stl", PlateWithHole(4, 1, -2, 0));
  const std::string block = folder.Write("block.stl", Box({-4, -4, -4}, {4, 4, -3}));
  // The peg fills the hole, so nothing but the block below the plate stops it.
  const std::string all = peg + " " + slot + " " + block + " --solid ";
  const json down = json::parse(Sweep(all + "-d -z --json -").out);
  EXPECT_EQ(down["travel"], 7.0);
  EXPECT_EQ(down["fixed"]["file"], block);
  EXPECT_EQ(Sweep(all + "-d -z --max-distance 6.5").status, 1);
  EXPECT_EQ(Sweep(all + "-d -z --max-distance 7").status, 0);
  const Outcome lines = Shell("printf '%s\\n' -z z x | $SWEEP " + all + "--directions -");
  const std::vector<json> answers = LinesOf(lines.out);
  ASSERT_EQ(answers.size(), 3u);
  EXPECT_EQ(answers[0]["travel"], 7.0);
  EXPECT_EQ(answers[0]["overlaps_at_start"], false);
  EXPECT_EQ(answers[1]["status"], "none");
  const json sphere = json::parse(Sweep(all + "--sphere 5 --json -").out);
  EXPECT_EQ(sphere["question"]["rule"], "solid");
  EXPECT_EQ(sphere["answers"][0]["overlaps_at_start"], false);
  // In the hole it slides on the walls, and a quarter turn changes nothing.
  const std::string pose = folder.Write("pose", std::string("0 -1 0 0  1 0 0 0  0 0 1 0"));
  const std::string turned = all + "--pose " + pose + " --offset 0,0,-5.5 --json - -d ";
  EXPECT_EQ(json::parse(Sweep(turned + "-z").out)["travel"], 1.5);
  EXPECT_EQ(json::parse(Sweep(turned + "x").out)["status"], "start");
  EXPECT_EQ(json::parse(Sweep(turned + "x").out)["overlaps_at_start"], false);
  EXPECT_EQ(Sweep(turned + "z").status, 1);
}

TEST(GslSweep, SolidInsideAnotherIsInside) {
  const Folder folder;
  const std::string inner = folder.Write("inner.stl", Box({-1, -1, -1}, {1, 1, 1}));
  const std::string outer = folder.Write("outer.stl", Box({-9, -9, -9}, {9, 9, 9}));
  const Outcome run = Sweep(inner + " " + outer + " --solid -d z");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "In contact from the start (the solids overlap before any travel): one is "
                     "inside the other.\n"
                     "  moving  " +
                         inner + ", triangle 0 of 12, at (-1, -1, -1)\n  fixed   " + outer +
                         ", 12 triangles\n");
  const json around = json::parse(Sweep(outer + " " + inner + " --solid -d z --json -").out);
  EXPECT_EQ(around["kind"], "inside");
  EXPECT_TRUE(around["moving"]["triangle"].is_null());
  EXPECT_EQ(around["fixed"]["triangle"], 0);
}

TEST(GslSweep, BodiesThatAreNotSolidsExitWithThree) {
  const Folder folder;
  const std::string good = folder.Write("good.stl", Box({0, 0, 4}, {1, 1, 5}));
  const std::string floor = folder.Write("floor.stl", Box({-4, -4, -1}, {4, 4, 0}));
  gsl_mesh::Mesh open = Box({0, 0, 0}, {1, 1, 1});
  open.corners.resize(33);
  const std::string hole = folder.Write("hole.ply", open);
  gsl_mesh::Mesh turned = Box({0, 0, 0}, {1, 1, 1});
  std::swap(turned.corners[13], turned.corners[14]);
  const std::string wrong = folder.Write("wrong.ply", turned);
  const std::string mirror = folder.Write("mirror", std::string("-1 0 0 0  0 1 0 0  0 0 1 0"));
  const auto refusal = [](const std::string& arguments) {
    const Outcome run = Sweep(arguments);
    EXPECT_EQ(run.status, 3) << arguments;
    EXPECT_EQ(run.out, "") << arguments;
    EXPECT_EQ(LineCount(run.err), 1u) << arguments << run.err;
    return run.err;
  };
  const std::string expected = "; --solid expects a closed surface whose triangles face outwards\n";
  const std::string openEdge = "hole.ply: not a solid: open edge: triangle 3 alone uses the edge ";
  for (const std::string& arguments : {hole + " " + floor + " -d z", floor + " " + hole + " -d z",
                                       good + " " + floor + " " + hole + " --sphere 5",
                                       good + " " + hole + " --directions /dev/null"}) {
    const std::string error = refusal(arguments + " --solid");
    EXPECT_NE(error.find(openEdge), error.npos) << error;
    EXPECT_EQ(error.substr(error.size() - expected.size()), expected);
  }
  EXPECT_NE(refusal(good + " " + wrong + " --solid -d z")
                .find("wrong.ply: not a solid: wrong orientation: triangles "),
            std::string::npos);
  EXPECT_NE(refusal(good + " " + floor + " --solid -d z --pose " + mirror)
                .find("good.stl: not a solid after --pose: wrong orientation: the component of "
                      "triangle 0 is inside out"),
            std::string::npos);
  EXPECT_NE(
      refusal(hole + " " + floor + " --solid -d z --pose " + mirror).find("hole.ply: not a s"),
      std::string::npos);
  EXPECT_EQ(Sweep(hole + " " + floor + " -d -z").status, 0);
  const std::string output = folder.Path("moved.stl");
  refusal(hole + " " + floor + " --solid -d -z --output " + output);
  EXPECT_EQ(folder.Names().size(), 5u);
}

/// Returns the arguments for a cube and a block 3 beside it, whose top is 5 below it.
std::string CubeAboveABlock(const Folder& folder) {
  return folder.Write("cube.stl", Box({0, 0, 5}, {1, 1, 6})) + " " +
         folder.Write("block.stl", Box({4, -9, -9}, {9, 9, 0})) + " ";
}

TEST(GslSweep, ClearanceIsADistance) {
  const Folder folder;
  const std::string both = CubeAboveABlock(folder);
  // Edges 3 apart across the direction are 5 apart when they are 4 apart along it.
  const Outcome run = Sweep(both + "-d -z --clearance 5");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(FirstLine(run.out), "Within 5 after 1 along (0, 0, -1): vertex to edge.");
  EXPECT_NE(
      run.out.find("\n  error   not exact: the travel and each coordinate are off by at most "),
      std::string::npos);
  const json answer = json::parse(Sweep(both + "-d -z --clearance 5 --json -").out);
  EXPECT_EQ(answer["question"]["clearance"], 5.0);
  EXPECT_EQ(answer["question"]["rule"], "touch");
  EXPECT_EQ(answer["status"], "contact");
  EXPECT_EQ(answer["exact"], false);
  // Four units in the last place of 9.
  EXPECT_EQ(answer["error_bound"], 0x1p-47);
  EXPECT_NEAR(answer["travel"].get<double>(), 1.0, 0x1p-47);
  EXPECT_EQ(answer["moving"]["point"][0], 1.0);
  EXPECT_EQ(answer["moving"]["point"][2], 5.0);
  EXPECT_EQ(answer["fixed"]["point"][0], 4.0);
  EXPECT_EQ(answer["fixed"]["point"][2], 0.0);
  EXPECT_EQ(Sweep(both + "-d -z --clearance 5 --max-distance 0.5").status, 1);
  // Past the block they are 3 apart, and before any travel the square root of 34.
  EXPECT_EQ(Sweep(both + "-d -z --clearance 3").status, 0);
  const Outcome never = Sweep(both + "-d -z --clearance 2.75");
  EXPECT_EQ(never.status, 1);
  EXPECT_EQ(FirstLine(never.out), "Not within 2.75 along (0, 0, -1).");
  const json start = json::parse(Sweep(both + "-d z --clearance 5.84 --json -").out);
  EXPECT_EQ(start["status"], "start");
  EXPECT_EQ(start["travel"], 0.0);
  EXPECT_EQ(Sweep(both + "-d z --clearance 5.83").status, 1);
}

TEST(GslSweep, ClearanceIsAskedInEveryWay) {
  const Folder folder;
  const std::string both = CubeAboveABlock(folder);
  const std::string high = folder.Write("high.stl", Box({-9, -9, -3}, {9, 9, 1}));
  const std::string question = both + high + " --clearance 0.5 ";
  const std::string moved = folder.Path("moved.ply");
  const json answer =
      json::parse(Sweep(question + "-d -z --offset 0,0,2 --json - --output " + moved).out);
  EXPECT_EQ(answer["travel"], 5.5);
  EXPECT_EQ(answer["fixed"]["file"], high);
  EXPECT_EQ(json::parse(Sweep(moved + " " + high + " -d -z --json -").out)["travel"], 0.5);
  const std::vector<json> lines =
      LinesOf(Shell("printf '%s\\n' -z z | $SWEEP " + question + "--directions -").out);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0]["travel"], 3.5);
  EXPECT_EQ(lines[0]["exact"], false);
  EXPECT_EQ(lines[1]["status"], "none");
  EXPECT_TRUE(lines[1]["error_bound"].is_null());
  const json sphere = json::parse(Sweep(question + "--sphere 9 --json -").out);
  EXPECT_EQ(sphere["question"]["clearance"], 0.5);
  EXPECT_EQ(sphere["answers"][0]["exact"], false);
  EXPECT_GT(sphere["contact"], 0);
  EXPECT_NE(
      Sweep(question + "--sphere 9").out.find(" within 0.5 after a travel, 0 within 0.5 from"),
      std::string::npos);
  // The top alone faces up, and a clearance of 0 asks for contact.
  EXPECT_EQ(Sweep(question + "--one-sided -d -z").out, Sweep(question + "-d -z").out);
  EXPECT_EQ(Sweep(both + high + " -d -z --clearance 0 --json -").out,
            Sweep(both + high + " -d -z --json -").out);
  EXPECT_EQ(Sweep(question + "-d 1,2,-3 --threads 1 --json -").out,
            Sweep(question + "-d 1,2,-3 --threads 3 --json -").out);
}

TEST(GslSweep, AllowanceGrowsTheMovingBodyFirst) {
  const Folder folder;
  const std::string cube = folder.Write("cube.stl", Box({0, 0, 5}, {1, 1, 6}));
  const std::string floor = folder.Write("floor.stl", Box({-9, -9, -1}, {9, 9, 0}));
  const std::string question = cube + " " + floor + " -d -z ";
  const json thicker = json::parse(Sweep(question + "--allowance 0.25 --json -").out);
  EXPECT_EQ(thicker["travel"], 4.75);
  EXPECT_EQ(thicker["moving"]["point"][2], 4.75);
  EXPECT_EQ(thicker["question"]["allowance"], 0.25);
  EXPECT_EQ(thicker["growing"], json::parse(R"({"exact": false, "deviation": 0.0})"));
  EXPECT_EQ(thicker["exact"], true);
  EXPECT_EQ(thicker["warnings"], json::array());
  const Outcome thinner = Sweep(question + "--allowance -0.25");
  EXPECT_EQ(thinner.status, 0);
  EXPECT_EQ(FirstLine(thinner.out).substr(0, 33), "Contact after 5.25 along (0, 0, -");
  EXPECT_NE(thinner.out.find("\n  grown   " + cube +
                             " by -0.25: planes are off by at most 0; the answer for "
                             "the grown body is exact\n"),
            std::string::npos)
      << thinner.out;
  // A pose scales the allowance as it scales the body.
  const std::string twice = folder.Write("twice.txt", std::string("2 0 0 0 0 2 0 0 0 0 2 0"));
  const std::string posed = "--allowance 0.25 --offset 0,0,1 --quiet --json - --pose " + twice;
  EXPECT_EQ(json::parse(Sweep(question + posed).out)["travel"], 10.5);
  const std::string mirror = folder.Write("mirror", std::string("-1 0 0 0  0 1 0 0  0 0 1 0"));
  const std::string mirrored = "--allowance 0.25 --quiet --json - --pose " + mirror;
  EXPECT_EQ(json::parse(Sweep(question + mirrored).out)["travel"], 4.75);
  EXPECT_EQ(Sweep(question + "--allowance 0 --json -").out, Sweep(question + "--json -").out);
}

TEST(GslSweep, AllowanceGoesWithEveryQuestion) {
  const Folder folder;
  const std::string cube = folder.Write("cube.stl", Box({0, 0, 5}, {1, 1, 6}));
  const std::string floor = folder.Write("floor.stl", Box({-9, -9, -1}, {9, 9, 0}));
  const std::string grown = cube + " " + floor + " --allowance 0.25 ";
  const auto travel = [&](const std::string& rest) {
    const json answer = json::parse(Sweep(grown + rest + " --json -").out);
    EXPECT_EQ(answer["growing"]["deviation"], 0.0) << rest;
    return answer["travel"].get<double>();
  };
  for (const std::string rule : {"--solid", "--leaving", "--one-sided", "--patch"})
    EXPECT_EQ(travel("-d -z " + rule), 4.75) << rule;
  EXPECT_EQ(travel("-d -z --last"), 7.25);
  EXPECT_EQ(travel("-d -z --clearance 0.5"), 4.25);
  const std::vector<json> lines =
      LinesOf(Shell("echo -z | $SWEEP " + grown + "--directions -").out);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0]["travel"], 4.75);
  EXPECT_EQ(lines[0]["growing"], json::parse(R"({"exact": false, "deviation": 0.0})"));
  const json sphere = json::parse(Sweep(grown + "--sphere 9 --json -").out);
  EXPECT_EQ(sphere["growing"]["deviation"], 0.0);
  EXPECT_FALSE(sphere["answers"][0].contains("growing"));
  // The body that is written has its own size.
  const std::string moved = folder.Path("moved.ply");
  EXPECT_EQ(Sweep(grown + "-d -z --output " + moved).status, 0);
  EXPECT_EQ(json::parse(Sweep(moved + " " + floor + " -d -z --json -").out)["travel"], 0.25);
  EXPECT_EQ(json::parse(Sweep(moved + " " + floor + " -d -z --last --json -").out)["travel"], 2.25);
}

TEST(GslSweep, AllowanceThatTurnsTrianglesOverExitsWithThree) {
  const Folder folder;
  const std::string thin = folder.Write("thin.stl", Box({0, 0, 5}, {4, 4, 5.5}));
  const std::string floor = folder.Write("floor.stl", Box({-9, -9, -1}, {9, 9, 0}));
  const std::string output = folder.Path("moved.stl");
  const std::string question = thin + " " + floor + " -d -z --output " + output;
  const Outcome refused = Sweep(question + " --allowance=-0.25");
  EXPECT_EQ(refused.status, 3);
  EXPECT_EQ(refused.out, "");
  EXPECT_EQ(LineCount(refused.err), 1u);
  EXPECT_EQ(refused.err.find("gsl-sweep: " + thin + ": triangle "), 0u) << refused.err;
  const std::string end = " when the body grows by -0.25; expected an --allowance that is closer "
                          "to 0\n";
  EXPECT_NE(refused.err.find(end), std::string::npos) << refused.err;
  EXPECT_EQ(Sweep(question + " --allowance=-1e308").status, 3);
  EXPECT_EQ(folder.Names().size(), 2u);
  EXPECT_EQ(Sweep(question + " --allowance=-0.24").status, 0);
}

constexpr const char* kNoTurn = "1 0 0 0 0 1 0 0 0 0 1 0\n";

TEST(GslSweep, SolidThatAnAllowanceTurnsInsideOutIsRefused) {
  const Folder folder;
  // A box with a cavity, whose walls are 1 thick: the cavity becomes larger than the box.
  gsl_mesh::Mesh hollow = Box({0, 0, 5}, {9, 9, 14});
  gsl_mesh::Mesh cavity = Box({1, 1, 6}, {8, 8, 13});
  std::reverse(cavity.corners.begin(), cavity.corners.end());
  Append(hollow, cavity);
  const std::string file = folder.Write("hollow.stl", hollow);
  const std::string floor = folder.Write("floor.stl", Box({-9, -9, -1}, {9, 9, 0}));
  const std::string question = file + " " + floor + " -d -z --solid ";
  EXPECT_EQ(Sweep(question + "--allowance=-0.25").status, 0);
  const Outcome refused = Sweep(question + "--allowance=-0.75");
  EXPECT_EQ(refused.status, 3);
  EXPECT_EQ(LineCount(refused.err), 1u);
  EXPECT_EQ(refused.err.find("gsl-sweep: " + file + ": not a solid after --allowance: "), 0u)
      << refused.err;
  const std::string pose = folder.Write("pose", std::string(kNoTurn));
  EXPECT_EQ(Sweep(question + "--allowance=-0.75 --pose " + pose)
                .err.find("gsl-sweep: " + file + ": not a solid after --allowance and --pose: "),
            0u);
}

TEST(GslSweep, AllowanceOfABodyWithoutAnOutsideIsWarnedOf) {
  const Folder folder;
  gsl_mesh::Mesh open = Box({0, 0, 5}, {1, 1, 6});
  open.corners.resize(33);
  const std::string sheet = folder.Write("sheet.ply", open);
  const std::string floor = folder.Write("floor.stl", Box({-9, -9, -1}, {9, 9, 0}));
  const std::string question = sheet + " " + floor + " --allowance 0.25 -d -z";
  const json answer = json::parse(Sweep(question + " --json -").out);
  EXPECT_EQ(answer["travel"], 4.75);
  ASSERT_EQ(answer["warnings"].size(), 1u);
  const std::string warning = answer["warnings"][0];
  EXPECT_EQ(warning.find(sheet + ": not a solid: open edge: "), 0u) << warning;
  EXPECT_NE(warning.find("; --allowance takes the side that each triangle faces for its outside"),
            std::string::npos);
  EXPECT_EQ(Sweep(question + " --quiet").err, "");
  const Outcome solid = Sweep(question + " --solid");
  EXPECT_EQ(solid.status, 3);
  EXPECT_EQ(solid.err.find("gsl-sweep: " + sheet + ": not a solid: open edge: "), 0u);
  // The edge is named as it is in the file.
  EXPECT_NE(solid.err.find("from (0, 1, 6) to (0, 0, 6)"), std::string::npos) << solid.err;
  const std::string pose = folder.Write("pose", std::string(kNoTurn));
  EXPECT_EQ(Sweep(question + " --solid --pose " + pose).err, solid.err);
}

TEST(GslSweep, ABodyThatIsInsideOutIsNotSaidToBeTooThin) {
  const Folder folder;
  gsl_mesh::Mesh mesh = Box({0, 0, 5}, {1, 1, 5.5});
  std::reverse(mesh.corners.begin(), mesh.corners.end());
  const std::string file = folder.Write("inside.stl", mesh);
  const std::string floor = folder.Write("floor.stl", Box({-9, -9, -1}, {9, 9, 0}));
  const Outcome refused = Sweep(file + " " + floor + " -d -z --allowance 0.3");
  EXPECT_EQ(refused.status, 3);
  EXPECT_EQ(LineCount(refused.err), 1u);
  EXPECT_NE(refused.err.find("; the body is not a solid: wrong orientation: "), std::string::npos)
      << refused.err;
}

TEST(GslSweep, AllowanceWithinTheResolutionIsWarnedOf) {
  const Folder folder;
  // Numbers of single precision are 2^-10 apart here.
  const std::string peg = folder.Write("peg.stl", Box({8192, 0, 5}, {8193, 1, 6}));
  const std::string floor = folder.Write("floor.stl", Box({8000, -9, -1}, {8500, 9, 0}));
  const std::string question = peg + " " + floor + " -d -z --json - --quiet --allowance=-";
  const json fine = json::parse(Sweep(question + "0.0009").out)["warnings"];
  ASSERT_EQ(fine.size(), 1u);
  EXPECT_EQ(
      fine[0].get<std::string>().find("the allowance -9e-04 is within the resolution of " + peg),
      0u);
  EXPECT_EQ(json::parse(Sweep(question + "0.001").out)["warnings"], json::array());
}

/// Returns the mesh after a turn about x by a right-angled triangle of sides 3, 4, 5, and then
/// about z by one of 5, 12, 13.
gsl_mesh::Mesh Turned(gsl_mesh::Mesh mesh) {
  for (Coord3& p : mesh.corners) {
    p = {p.x, (3.0 * p.y - 4.0 * p.z) / 5.0, (4.0 * p.y + 3.0 * p.z) / 5.0};
    p = {(5.0 * p.x - 12.0 * p.y) / 13.0, (12.0 * p.x + 5.0 * p.y) / 13.0, p.z};
  }
  return mesh;
}

TEST(GslSweep, PartsThatInterfereByRoundingComeFreeWithAnAllowance) {
  const Folder folder;
  // The peg fills the hole. In single precision their walls are not quite in one plane.
  const std::string peg = folder.Write("peg.stl", Turned(Box({-1, -1, -3}, {1, 1, 2})));
  const std::string plate = folder.Write("plate.stl", Turned(PlateWithHole(4, 1, -1, 0.5)));
  const std::string question = peg + " " + plate + " --solid --json - -d ";
  for (const std::string along : {"48,-20,39", "-48,20,-39"}) { // the axis of the hole
    const json stuck = json::parse(Sweep(question + along).out);
    EXPECT_EQ(stuck["status"], "start");
    const Outcome free = Sweep(question + along + " --allowance=-1e-4");
    EXPECT_EQ(free.status, 1);
    EXPECT_EQ(json::parse(free.out)["status"], "none");
    EXPECT_LT(json::parse(free.out)["growing"]["deviation"], 1e-6);
  }
  const json aside = json::parse(Sweep(question + "5,12,0 --allowance=-1e-4").out);
  EXPECT_NEAR(aside["travel"].get<double>(), 1e-4, 1e-6);
  // The bolt of the examples is pressed into the bracket by a rounding.
  const std::string pressed = parts + "--offset 0,0,-30.00001 --solid -d z";
  EXPECT_EQ(Sweep(pressed).status, 0);
  EXPECT_EQ(Sweep(pressed + " --allowance=-1e-4").status, 1);
}

TEST(GslSweep, LastContactIsAfterTheFirst) {
  const json last = json::parse(Sweep(parts + "-d -z --last --json -").out);
  EXPECT_EQ(last["status"], "contact");
  EXPECT_TRUE(last["question"]["last"]);
  EXPECT_GT(last["travel"], 30.0);
  // Cut where the head is pressed into the bracket.
  const json cut = json::parse(Sweep(parts + "-d -z --last --max-distance 31 --json -").out);
  EXPECT_EQ(cut["travel"], 31.0);
  EXPECT_EQ(cut["kind"], "overlap");
  const std::string documents =
      Shell("printf '%s\\n' -z z | $SWEEP " + parts + "--last --directions -").out;
  EXPECT_EQ(json::parse(documents.substr(0, documents.find('\n')))["travel"], last["travel"]);
  const json sphere = json::parse(Sweep(parts + "--sphere 9 --last --json -").out);
  EXPECT_TRUE(sphere["question"]["last"]);
  const json first = json::parse(Sweep(parts + "--sphere 9 --json -").out);
  for (std::size_t k = 0; k < 9; ++k) {
    const json& of = sphere["answers"][k];
    EXPECT_EQ(of["status"], first["answers"][k]["status"]);
    if (of["status"] == "contact") {
      EXPECT_GT(of["travel"], first["answers"][k]["travel"]);
    }
  }
}

TEST(GslSweep, PatchIsTheWholeFace) {
  const json all = json::parse(Sweep(parts + "-d -z --patch --json -").out);
  const json& patch = all["patch"];
  EXPECT_GT(patch["count"], 100);
  EXPECT_EQ(patch["pairs"].size(), patch["count"]);
  EXPECT_EQ(patch["low"][2], 0.0);
  EXPECT_EQ(patch["high"][2], 0.0);
  EXPECT_LT(patch["low"][0], -6.0);
  EXPECT_EQ(patch["pairs"][0]["moving"], json::parse(R"({"triangle": 120,
                                                         "point": [6.5, 1.7417000532150269, 30]})"));
  const std::string few = Sweep(parts + "-d -z --patch --patch-pairs 2 --json -").out;
  EXPECT_EQ(json::parse(few)["patch"]["count"], patch["count"]);
  EXPECT_EQ(json::parse(few)["patch"]["pairs"].size(), 2u);
  const std::string none = Sweep(parts + "-d -z --patch --max-distance 9 --json -").out;
  EXPECT_EQ(json::parse(none)["patch"], json::parse(R"({"count": 0, "low": null, "high": null,
                                                        "pairs": []})"));
}

TEST(GslSweep, TakesDirectionsInEveryForm) {
  const std::string expected = Sweep(parts + "--direction 0,0,-1").out;
  for (const char* form :
       {"--direction=0,0,-1", "--direction -z", "--direction=-Z", "--direction '0, 0, -7.5e2'",
        "--direction -0.0,+0,-.5", "--direction '0 0 -1'"}) {
    EXPECT_EQ(Sweep(parts + form).out, expected) << form;
  }
  EXPECT_EQ(Sweep(parts + "--direction -1,0,0").out, Sweep(parts + "--direction=-x").out);
  EXPECT_EQ(Sweep(parts + "--direction -1,0,0").out, Sweep(parts + "--direction=-1,0,0").out);
  EXPECT_EQ(Sweep(parts + "--direction x").out, Sweep(parts + "--direction 1,0,0").out);
  EXPECT_EQ(Sweep(parts + "--direction=Z").out, Sweep(parts + "--direction +z").out);
  EXPECT_EQ(Sweep("--direction -z -- " + parts).out, expected);
}

TEST(GslSweep, OffsetMovesTheMovingBodyFirst) {
  const json answer = json::parse(Sweep(parts + "--direction -z --offset -0.25,0,5 --json -").out);
  EXPECT_EQ(answer["travel"], 35.0);
  EXPECT_EQ(answer["moving"]["point"][2], 35.0);
  const json still = json::parse(Sweep(parts + "--direction -z --offset=0,0,5 --json -").out);
  EXPECT_EQ(still["moving"]["point"][2], 35.0);
}

/// A quarter turn about x, then 20 upwards.
const char* const lyingPose = "1 0 0 0\n0 0 -1 0\n0 1 0 20\n";

TEST(GslSweep, PosePlacesTheMovingBodyBeforeTheOffset) {
  const Folder folder;
  const std::string moving = folder.Write("moving.stl", Box({0, 0, 0}, {1, 2, 4}));
  const std::string fixed = folder.Write("fixed.stl", Box({-9, -9, -1}, {9, 9, 0}));
  const std::string pose = folder.Write("pose.txt", std::string(lyingPose));
  const std::string question = moving + " " + fixed + " -d -z --offset 0,0,5 --json - --pose ";
  const json answer = json::parse(Sweep(question + pose).out);
  // z becomes -y and y becomes z + 20: the body is 20 to 22 high, then 25 to 27.
  EXPECT_EQ(answer["travel"], 25.0);
  EXPECT_EQ(answer["moving"]["point"][2], 25.0);
  EXPECT_EQ(answer["question"]["pose"],
            json::parse("[[1.0, 0.0, 0.0, 0.0], [0.0, 0.0, -1.0, 0.0], [0.0, 1.0, 0.0, 20.0]]"));
  EXPECT_EQ(answer["warnings"], json::array());
  EXPECT_EQ(json::parse(Shell("cat " + pose + " | $SWEEP " + question + "-").out), answer);
  // A scaled body draws a warning, and a mirrored body turns its triangles over.
  const std::string twice = folder.Write("twice.txt", std::string("2 0 0 0 0 2 0 0 0 0 2 3"));
  const Outcome scaled = Sweep(question + twice);
  EXPECT_EQ(json::parse(scaled.out)["travel"], 8.0);
  EXPECT_EQ(scaled.err, "gsl-sweep: warning: " + twice +
                            ": the pose is not rigid: it changes lengths or angles\n");
  EXPECT_EQ(json::parse(scaled.out)["warnings"].size(), 1u);
  EXPECT_EQ(Sweep(question + twice + " --quiet").err, "");
  const std::string mirror = folder.Write("mirror.txt", std::string("-1 0 0 0 0 1 0 0 0 0 1 0"));
  Mesh facingUp;
  AddTriangle(facingUp, {0, 0, 1}, {1, 0, 1}, {0, 1, 1});
  const std::string onesided =
      folder.Write("up.stl", facingUp) + " " + fixed + " -d -z --one-sided";
  EXPECT_EQ(Sweep(onesided).status, 1);
  EXPECT_EQ(Sweep(onesided + " --quiet --pose " + mirror).status, 0);
}

TEST(GslSweep, PoseThatIsWrongExitsWithThree) {
  const Folder folder;
  const std::string pose = folder.Write("pose.txt", std::string("1 0 0 0\n0 1 0 0\n0 0 one 0\n"));
  const Outcome wrong = Sweep("missing.stl missing.stl -d -z --pose " + pose);
  EXPECT_EQ(wrong.status, 3);
  EXPECT_EQ(wrong.err, "gsl-sweep: " + pose +
                           ": line 3: number 11 of the pose must be a finite number (got one)\n");
  EXPECT_EQ(Sweep(parts + "-d -z --pose " + folder.Path("missing.txt")).status, 3);
  const Outcome empty = Shell("$SWEEP " + parts + "-d -z --pose - </dev/null");
  EXPECT_EQ(empty.status, 3);
  EXPECT_EQ(
      empty.err,
      "gsl-sweep: standard input: line 1: the pose ends after 0 numbers; expected 12 or 16\n");
  const std::string far = folder.Write("far.txt", std::string("1 0 0 0 0 1 0 0 0 0 1e308 0"));
  const Outcome beyond = Sweep(parts + "-d -z --pose " + far);
  EXPECT_EQ(beyond.status, 4);
  EXPECT_EQ(beyond.err,
            "gsl-sweep: --pose moves a corner of " + bolt + " beyond the range of double\n");
}

TEST(GslSweep, DirectionsAreAnsweredLineByLine) {
  const Folder folder;
  const std::string text = "# down, up, aside\n-z\n\n+z\n1 2 -3\n";
  const std::string file = folder.Write("directions.txt", text);
  const Outcome run = Sweep(parts + "--offset 0,0,5 --directions " + file);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  const std::vector<json> lines = LinesOf(run.out);
  ASSERT_EQ(lines.size(), 3u);
  const char* const directions[] = {"-z", "z", "1,2,-3"};
  const int numbers[] = {2, 4, 5};
  for (std::size_t k = 0; k < 3; ++k) {
    json expected = json::parse(Sweep(parts + "--offset 0,0,5 --json - -d " + directions[k]).out);
    EXPECT_EQ(lines[k]["line"], numbers[k]);
    for (const char* key :
         {"status", "travel", "direction", "kind", "normal", "fixed_body", "warnings"}) {
      EXPECT_EQ(lines[k][key], expected[key]) << key;
    }
    for (const char* body : {"moving", "fixed"}) {
      EXPECT_EQ(lines[k][body]["triangle"], expected[body]["triangle"]);
      EXPECT_EQ(lines[k][body]["point"], expected[body]["point"]);
    }
  }
  EXPECT_EQ(Shell("cat " + file + " | $SWEEP " + parts + "--offset 0,0,5 --directions -").out,
            run.out);
  EXPECT_EQ(Sweep(parts + "--offset 0,0,5 --threads 1 --quiet --directions " + file).out, run.out);
}

TEST(GslSweep, DirectionsDecideTheExitStatus) {
  const auto run = [](const std::string& lines, const std::string& more = "") {
    return Shell("printf '%b' '" + lines + "' | $SWEEP " + parts + more + " --directions -");
  };
  EXPECT_EQ(run("z\\n-z\\n").status, 0);
  EXPECT_EQ(run("z\\nx\\n").status, 1);
  EXPECT_EQ(run("").status, 1);
  EXPECT_EQ(run("z\\n", "--offset 0,0,-31").status, 0); // from the start
  const Outcome wrong = run("-z\\nup\\n0,0,0\\nz");
  EXPECT_EQ(wrong.status, 2);
  EXPECT_EQ(wrong.err, "gsl-sweep: standard input: line 2 is not a direction (2 such in all)\n");
  const std::vector<json> lines = LinesOf(wrong.out);
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[1]["line"], 2);
  EXPECT_EQ(lines[1]["error"], "a direction must be X,Y,Z or an axis such as z or -z (got up)");
  EXPECT_EQ(lines[3]["status"], "none");
  EXPECT_EQ(run("-z\\nup\\n", "--quiet").out, run("-z\\nup\\n").out);
}

TEST(GslSweep, TravelBeyondTheRangeOfDoubleFailsAfterEveryLine) {
  const Folder folder;
  const std::string moving = folder.Write("moving.ply", Box({0, 0, 1e308}, {1, 1, 1.5e308}));
  const std::string fixed = folder.Write("fixed.ply", Box({0, 0, -1.5e308}, {1, 1, -1e308}));
  const Outcome run =
      Shell("printf 'x\\n-z\\nup\\nz\\n' | $SWEEP " + moving + " " + fixed + " --directions -");
  EXPECT_EQ(run.status, 4);
  EXPECT_EQ(LineCount(run.out), 4u);
  EXPECT_EQ(LineCount(run.err), 2u);
  EXPECT_NE(run.err.find("line 2 is beyond the range of double (1 such in all)"), std::string::npos)
      << run.err;
}

TEST(GslSweep, DirectionsThatCannotBeReadExitWithThree) {
  const Outcome missing = Sweep("missing.stl missing.stl --directions /nowhere/d.txt");
  EXPECT_EQ(missing.status, 3);
  EXPECT_EQ(missing.err,
            "gsl-sweep: /nowhere/d.txt: cannot be opened: No such file or directory\n");
  const Outcome folder = Sweep(parts + "--directions /");
  EXPECT_EQ(folder.status, 3);
  EXPECT_EQ(folder.err, "gsl-sweep: /: cannot be read: Is a directory\n");
  EXPECT_EQ(Shell("$SWEEP " + parts + "--directions - <&-").status, 3);
}

TEST(GslSweep, DirectionsNeedAnOpenStdout) {
  for (const char* closed : {" >/dev/full", " >&-"}) {
    const Outcome run = Shell("echo z | $SWEEP " + parts + "--directions -" + closed);
    EXPECT_EQ(run.status, 4) << closed;
    EXPECT_EQ(run.err.substr(0, 45), "gsl-sweep: standard output: cannot be written") << closed;
    EXPECT_EQ(LineCount(run.err), 1u) << closed;
  }
}

/// The program with --directions, and both ends of its pipes.
class Conversation {
public:
  explicit Conversation(const std::string& directions = "-", bool blocks = true) {
    int in[2], out[2];
    if (pipe(in) != 0 || pipe(out) != 0) std::abort();
    m_child = fork();
    if (m_child == 0) {
      dup2(in[0], STDIN_FILENO);
      dup2(out[1], STDOUT_FILENO);
      for (const int end : {in[0], in[1], out[0], out[1]})
        close(end);
      std::signal(SIGINT, SIG_DFL);
      if (!blocks) fcntl(STDOUT_FILENO, F_SETFL, O_NONBLOCK);
      execl(GSL_SWEEP_PROGRAM, "gsl-sweep", bolt.c_str(), bracket.c_str(), "--directions",
            directions.c_str(), static_cast<char*>(nullptr));
      _exit(127);
    }
    close(in[0]);
    close(out[1]);
    m_in = in[1];
    m_out = fdopen(out[0], "r");
  }
  Conversation(const Conversation&) = delete;
  Conversation& operator=(const Conversation&) = delete;
  ~Conversation() { std::fclose(m_out); }

  void Send(const std::string& text) const {
    EXPECT_EQ(write(m_in, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  std::string Receive() const {
    char line[4096];
    return std::fgets(line, sizeof line, m_out) == nullptr ? "" : line;
  }
  void Interrupt() const { kill(m_child, SIGINT); }
  int Status() const {
    close(m_in);
    int status = -1;
    waitpid(m_child, &status, 0);
    return status;
  }

private:
  pid_t m_child = -1;
  int m_in = -1;
  std::FILE* m_out = nullptr;
};

TEST(GslSweep, EachAnswerAppearsBeforeTheNextLineIsNeeded) {
  const Conversation conversation;
  for (int k = 1; k <= 3; ++k) {
    conversation.Send("0,0,-1\n");
    const json line = json::parse(conversation.Receive());
    EXPECT_EQ(line["line"], k);
    EXPECT_EQ(line["travel"], 30.0);
  }
  conversation.Send("x");
  EXPECT_EQ(conversation.Status(), 0);
  EXPECT_EQ(json::parse(conversation.Receive())["status"], "none");
}

TEST(GslSweep, NoAnswerIsLostInAPipeThatDoesNotBlock) {
  const Folder folder;
  constexpr int kCount = 2000; // many times what a pipe holds
  std::string directions;
  for (int k = 0; k < kCount; ++k)
    directions += "-z\n";
  const Conversation conversation(folder.Write("directions.txt", directions), false);
  std::this_thread::sleep_for(std::chrono::milliseconds(200)); // until the pipe is full
  for (int k = 1; k <= kCount; ++k)
    ASSERT_EQ(json::parse(conversation.Receive())["line"], k);
  EXPECT_EQ(conversation.Receive(), "");
  EXPECT_EQ(conversation.Status(), 0);
}

TEST(GslSweep, InterruptEndsAfterAWholeLine) {
  const Conversation conversation;
  conversation.Send("-z\n");
  EXPECT_EQ(json::parse(conversation.Receive())["line"], 1);
  conversation.Interrupt();
  const int status = conversation.Status();
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGINT);
  EXPECT_EQ(conversation.Receive(), "");
}

TEST(GslSweep, SphereCountsAndNames) {
  const Outcome run = Sweep(parts + "--sphere 200");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  const json document = json::parse(Sweep(parts + "--sphere 200 --json -").out);
  ASSERT_EQ(document["answers"].size(), 200u);
  std::size_t touching = 0;
  double least = 1e9, greatest = 0.0;
  for (const json& answer : document["answers"]) {
    if (answer["status"] == "none") continue;
    ++touching;
    least = std::min(least, answer["travel"].get<double>());
    greatest = std::max(greatest, answer["travel"].get<double>());
  }
  EXPECT_GT(touching, 0u);
  EXPECT_LT(touching, 200u);
  EXPECT_EQ(document["contact"], touching);
  EXPECT_EQ(document["free"], 200 - touching);
  EXPECT_EQ(document["answers"][document["least"].get<std::size_t>()]["travel"], least);
  EXPECT_EQ(document["answers"][document["greatest"].get<std::size_t>()]["travel"], greatest);
  EXPECT_EQ(FirstLine(run.out), "200 directions: " + std::to_string(200 - touching) + " free, " +
                                    std::to_string(touching) +
                                    " with contact after a travel, 0 in contact from the start.");
  EXPECT_EQ(LineCount(run.out), 5u);
  EXPECT_EQ(Sweep(parts + "--sphere 200 --threads 1").out, run.out);
  EXPECT_EQ(Sweep(parts + "--sphere 200 --quiet").out, "");
  EXPECT_EQ(Sweep(parts + "--sphere 200 --max-distance 1").status, 1);
  const Outcome start = Sweep(parts + "--sphere 3 --offset 0,0,-31");
  EXPECT_EQ(start.status, 0);
  EXPECT_EQ(FirstLine(start.out), "3 directions: 0 free, 0 with contact after a travel, "
                                  "3 in contact from the start.");
}

TEST(GslSweep, SphereNamesTheDirectionOfATravelBeyondTheRange) {
  const Folder folder;
  const std::string moving =
      folder.Write("moving.ply", Box({-1e308, -1e308, 9e307}, {1e308, 1e308, 1e308}));
  const std::string fixed =
      folder.Write("fixed.ply", Box({-1e308, -1e308, -1e308}, {1e308, 1e308, -9e307}));
  const Outcome run = Sweep(moving + " " + fixed + " --sphere 20");
  EXPECT_EQ(run.status, 4);
  EXPECT_EQ(LineCount(run.err), 1u);
  EXPECT_EQ(run.err.find("gsl-sweep: the travel or a point along ("), 0u) << run.err;
  EXPECT_NE(run.err.find(" of 20, is beyond the range of double\n"), std::string::npos) << run.err;
}

TEST(GslSweep, SphereWritesItsJsonToAFile) {
  const Folder folder;
  const std::string file = folder.Path("sphere.json");
  const Outcome run = Sweep(parts + "--sphere 7 --json " + file);
  EXPECT_EQ(LineCount(run.out), 5u);
  EXPECT_EQ(BytesOf(file), Sweep(parts + "--sphere 7 --json -").out);
  EXPECT_EQ(Sweep(parts + "--sphere 7 --json " + file).status, 4);
}

TEST(GslSweep, NoContactExitsWithOne) {
  const Outcome run = Sweep(parts + "--direction +z");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(FirstLine(run.out), "No contact along (0, 0, 1).");
  EXPECT_EQ(LineCount(run.out), 3u);
  const Outcome asJson = Sweep(parts + "--direction +z --json -");
  EXPECT_EQ(asJson.status, 1);
  const json answer = json::parse(asJson.out);
  EXPECT_EQ(answer["status"], "none");
  EXPECT_TRUE(answer["travel"].is_null());
}

TEST(GslSweep, ContactAtTheStartExitsWithZero) {
  const Outcome run = Sweep(parts + "--direction -z --offset 0,0,-31 --json -");
  EXPECT_EQ(run.status, 0);
  const json answer = json::parse(run.out);
  EXPECT_EQ(answer["status"], "start");
  EXPECT_EQ(answer["travel"], 0.0);
  EXPECT_EQ(answer["moving"]["point"], answer["fixed"]["point"]);
}

TEST(GslSweep, GreatestDistanceIsClosed) {
  EXPECT_EQ(Sweep(parts + "--direction -z --max-distance 30").status, 0);
  const Outcome below = Sweep(parts + "--direction -z --max-distance 29.999999999999996");
  EXPECT_EQ(below.status, 1);
  EXPECT_EQ(FirstLine(below.out), "No contact along (0, 0, -1) within 29.999999999999996.");
}

TEST(GslSweep, SeveralFixedBodiesNameTheBodyThatIsMet) {
  const Folder folder;
  const std::string moving = folder.Write("moving.stl", Box({0, 0, 5}, {1, 1, 6}));
  const std::string low = folder.Write("low.stl", Box({0, 0, 0}, {1, 1, 1}));
  const std::string high = folder.Write("high.stl", Box({0, 0, 0}, {1, 1, 2}));
  const std::string aside = folder.Write("aside.stl", Box({9, 9, 0}, {10, 10, 1}));
  const std::string files = moving + " " + low + " " + high + " " + aside;
  const Outcome run = Sweep(files + " -d -z");
  EXPECT_EQ(run.status, 0);
  EXPECT_NE(run.out.find("Contact after 3 "), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("  fixed   " + high + ", triangle "), std::string::npos) << run.out;
  const json answer = json::parse(Sweep(files + " -d -z --one-sided --json -").out);
  EXPECT_EQ(answer["fixed"]["file"], high);
  EXPECT_EQ(answer["fixed_body"], 1);
  ASSERT_EQ(answer["fixed_bodies"].size(), 3u);
  EXPECT_EQ(answer["fixed_bodies"][2]["file"], aside);
  EXPECT_EQ(answer["fixed_bodies"][2]["triangles"], 12);
  EXPECT_EQ(answer["fixed_bodies"][2]["left_out"], 2); // the bottom
  EXPECT_EQ(Sweep(files + " -d z").status, 1);
  EXPECT_EQ(LineCount(Sweep(files + " -d z").out), 5u);
  const json piped = json::parse(
      Shell("cat " + high + " | $SWEEP " + moving + " " + low + " - -d -z --json -").out);
  EXPECT_EQ(piped["fixed"]["file"], "-");
  EXPECT_EQ(Sweep(files + " missing.stl -d -z").status, 3);
}

TEST(GslSweep, OneSidedLeavesOutTrianglesThatFaceAway) {
  // From inside the plate's middle upwards, only the underside of its top is ahead.
  const Folder folder;
  const std::string inner = folder.Write("inner.stl", Box({-1, -1, -1}, {1, 1, 1}));
  const std::string outer = folder.Write("outer.stl", Box({-9, -9, -9}, {9, 9, 9}));
  const std::string both = inner + " " + outer + " --direction +z";
  EXPECT_EQ(Sweep(both).status, 0);
  EXPECT_EQ(Sweep(both + " --one-sided").status, 1);
}

TEST(GslSweep, WrongUsageExitsWithTwoAndOneLine) {
  for (const std::string& arguments :
       {std::string(),
        bolt + " --direction -z",
        parts,
        parts + "--direction",
        parts + "--direction 0,0,0",
        parts + "--direction w",
        parts + "--direction 1,2",
        parts + "--direction nan,0,1",
        parts + "--direction -z --offset 1,2",
        parts + "--direction -z --offset inf,0,0",
        parts + "--direction -z --max-distance -1",
        parts + "--direction -z --max-distance nan",
        parts + "--direction -z --threads 0",
        parts + "--direction -z --threads -3",
        parts + "--direction -z --threads 1025",
        parts + "--direction -z --threads x",
        parts + "--direction -z --progress sometimes",
        parts + "--direction -z --unknown",
        parts + "--direction -z --sphere 9",
        parts + "--direction -z --directions d.txt",
        parts + "--sphere 0",
        parts + "--sphere 9 --output moved.stl",
        parts + "--sphere 9 --patch",
        parts + "--direction -z --patch --last",
        parts + "--direction -z --patch-pairs 9",
        parts + "--direction -z --solid --last",
        parts + "--direction -z --solid --one-sided",
        parts + "--direction -z --clearance -1",
        parts + "--direction -z --clearance nan",
        parts + "--direction -z --clearance ''",
        parts + "--direction -z --clearance 1 --solid",
        parts + "--direction -z --clearance 1 --last",
        parts + "--direction -z --clearance 1 --patch",
        parts + "--direction -z --clearance 1 --leaving",
        parts + "--direction -z --allowance inf",
        parts + "--direction -z --allowance ''",
        parts + "--direction -z --patch --patch-pairs 0",
        parts + "--direction -z --patch --patch-pairs 1000001",
        parts + "--directions d.txt --json -",
        "- " + bracket + " --directions -",
        "- " + parts + "- --direction -z",
        parts + "--direction -z --direction -x",
        parts + "--direction -z --json same.stl --output same.stl"}) {
    const Outcome run = Sweep(arguments);
    EXPECT_EQ(run.status, 2) << arguments;
    EXPECT_EQ(run.out, "") << arguments;
    EXPECT_EQ(LineCount(run.err), 1u) << arguments << "\n" << run.err;
    EXPECT_EQ(run.err.substr(0, 11), "gsl-sweep: ") << arguments;
  }
}

TEST(GslSweep, HelpAndVersionExitWithZero) {
  EXPECT_EQ(Sweep("--version").out, "gsl-sweep " GSL_VERSION "\n");
  EXPECT_EQ(Sweep("--version").status, 0);
  EXPECT_EQ(Sweep("--help").status, 0);
  EXPECT_EQ(Sweep("-h").out, Sweep("--help").out);
}

TEST(GslSweep, DocumentsNameEveryOptionOfTheHelp) {
  const std::string help = Sweep("--help").out;
  const std::string guide = BytesOf(GSL_EXAMPLE_MESHES "/../../docs/gsl-sweep.md");
  std::set<std::string> names;
  for (std::size_t at = help.find(" --"); at != help.npos; at = help.find(" --", at + 1)) {
    const std::size_t begin = at + 1;
    names.insert(
        help.substr(begin, help.find_first_not_of("abcdefghijklmnopqrstuvwxyz-", begin) - begin));
  }
  EXPECT_EQ(names.size(), 26u);
  for (const std::string& name : names)
    EXPECT_NE(guide.find("`" + name), std::string::npos) << name;
}

TEST(GslSweep, SameBytesForAnyNumberOfThreads) {
  const std::string question = parts + "--direction 0.1,0.2,-1 --offset 1,2,3 --json - --threads ";
  const Outcome one = Sweep(question + "1");
  EXPECT_EQ(one.status, 0);
  for (const char* threads : {"2", "3", "16"})
    EXPECT_EQ(Sweep(question + threads).out, one.out);
}

TEST(GslSweep, LocaleChangesNothing) {
  const std::string question = parts + "--direction 0.5,0.25,-1 --offset 1.5,0,0";
  const Outcome plain = Sweep(question);
  EXPECT_EQ(plain.status, 0);
  EXPECT_EQ(Shell("LC_ALL=de_DE.UTF-8 $SWEEP " + question).out, plain.out);
}

TEST(GslSweep, QuietLeavesTheAnswerToTheExitStatus) {
  const Outcome touching = Sweep(parts + "--direction -z --quiet");
  EXPECT_EQ(touching.status, 0);
  EXPECT_EQ(touching.out + touching.err, "");
  const Outcome apart = Sweep(parts + "--direction +z --quiet");
  EXPECT_EQ(apart.status, 1);
  EXPECT_EQ(apart.out + apart.err, "");
  EXPECT_NE(Sweep(parts + "--direction -z --quiet --json -").out, "");
  const Outcome failing = Sweep("missing.stl " + bracket + " --direction -z --quiet");
  EXPECT_EQ(failing.status, 3);
  EXPECT_EQ(LineCount(failing.err), 1u);
}

/// Returns the names of the stages in the lines of --verbose.
std::vector<std::string> StagesOf(const std::string& err) {
  std::vector<std::string> names;
  std::istringstream stream(err);
  for (std::string line; std::getline(stream, line);) {
    const std::size_t end = line.rfind(": ");
    EXPECT_EQ(line.substr(0, 11), "gsl-sweep: ") << line;
    EXPECT_NE(line.find(" s of processor time, ", end), std::string::npos) << line;
    EXPECT_NE(line.find(" MB, at most ", end), std::string::npos) << line;
    names.push_back(line.substr(11, end - 11));
  }
  return names;
}

TEST(GslSweep, VerboseShowsEachStage) {
  const Folder folder;
  const std::string moved = folder.Path("moved.stl");
  const Outcome run = Sweep(parts + bolt + " -d -z --verbose --output " + moved);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, Sweep(parts + bolt + " -d -z --force --output " + moved).out);
  EXPECT_EQ(StagesOf(run.err),
            (std::vector<std::string>{"read " + bolt, "read " + bracket, "read " + bolt, "prepare",
                                      "search", "write"}));
  EXPECT_EQ(
      StagesOf(Sweep(parts + "--sphere 9 --verbose --json -").err),
      (std::vector<std::string>{"read " + bolt, "read " + bracket, "prepare", "search", "write"}));
  EXPECT_EQ(
      StagesOf(Shell("echo z | $SWEEP " + parts + "--verbose --directions -").err),
      (std::vector<std::string>{"read " + bolt, "read " + bracket, "prepare", "search", "write"}));
  EXPECT_EQ(StagesOf(Sweep(parts + "-d -z --verbose --allowance=-1e-4 --pose " +
                           folder.Write("p.txt", kNoTurn))
                         .err),
            (std::vector<std::string>{"read " + bolt, "allowance", "pose", "read " + bracket,
                                      "prepare", "search", "write"}));
  EXPECT_EQ(Sweep(parts + "-d -z --verbose --quiet").status, 2);
}

TEST(GslSweep, WarnsOfSizesThatDifferByAUnit) {
  const Folder folder;
  const std::string small = folder.Write("small.stl", Box({0, 0, 5}, {1, 1, 6}));
  const std::string large = folder.Write("large.stl", Box({0, 0, -1000}, {1000, 1000, 0}));
  const Outcome run = Sweep(small + " " + large + " --direction -z --json -");
  EXPECT_EQ(run.status, 0);
  const json answer = json::parse(run.out);
  EXPECT_EQ(answer["travel"], 5.0);
  ASSERT_EQ(answer["warnings"].size(), 1u);
  const auto warning = answer["warnings"][0].get<std::string>();
  EXPECT_NE(warning.find("1000"), std::string::npos);
  EXPECT_EQ(run.err, "gsl-sweep: warning: " + warning + "\n");
  EXPECT_EQ(Sweep(small + " " + large + " --direction -z --quiet").err, "");
}

TEST(GslSweep, WarnsOfATravelWithinTheResolution) {
  const Folder folder;
  // Two resting parts: the heights are neighbouring doubles, 1.4e-17 apart.
  const double height = std::nextafter(0.1, 1.0);
  const std::string moving = folder.Write("moving.ply", Box({0, 0, height}, {1, 1, 1}));
  const std::string fixed = folder.Write("fixed.ply", Box({0, 0, -1}, {1, 1, 0.1}));
  const std::string both = moving + " " + fixed;
  const Outcome run = Sweep(both + " -d -z --json -");
  EXPECT_EQ(run.status, 0);
  const json answer = json::parse(run.out);
  EXPECT_EQ(answer["travel"], height - 0.1);
  ASSERT_EQ(answer["warnings"].size(), 1u);
  const std::string warning = answer["warnings"][0].get<std::string>();
  EXPECT_EQ(warning.find("the travel 1.3877787807814457e-17 is within the resolution of "), 0u);
  EXPECT_NE(warning.find(", 2.220446049250313e-16 "), std::string::npos) << warning;
  EXPECT_EQ(run.err, "gsl-sweep: warning: " + warning + "\n");
  EXPECT_EQ(Sweep(both + " -d -z --quiet").err, "");
  // Many directions say it once on stderr, and with each line.
  const Outcome lines = Shell("printf 'x\\n-z\\n0 0 -2\\n' | $SWEEP " + both + " --directions -");
  const std::vector<json> read = LinesOf(lines.out);
  ASSERT_EQ(read.size(), 3u);
  EXPECT_EQ(read[0]["warnings"], json::array());
  EXPECT_EQ(read[1]["warnings"], answer["warnings"]);
  EXPECT_EQ(read[2]["warnings"], answer["warnings"]);
  EXPECT_EQ(lines.err, "gsl-sweep: warning: " + warning + " (2 such travels in all)\n");
  const Outcome sphere = Sweep(both + " --sphere 50 --json -");
  EXPECT_EQ(json::parse(sphere.out)["warnings"].size(), 1u);
  EXPECT_EQ(LineCount(sphere.err), 1u);
  // An exact touch and an ordinary travel draw none.
  EXPECT_EQ(Sweep(both + " -d -z --offset 0,0,1e-9").err, "");
  const std::string touching = folder.Write("touching.ply", Box({0, 0, 0.1}, {1, 1, 1}));
  const Outcome start = Sweep(touching + " " + fixed + " -d -z");
  EXPECT_EQ(start.err, "");
  EXPECT_EQ(start.out.substr(0, 26), "In contact from the start:");
}

TEST(GslSweep, SkipsAndCountsNonFiniteTriangles) {
  const Folder folder;
  Mesh mesh = Box({0, 0, 5}, {1, 1, 6});
  const double nan = std::numeric_limits<double>::quiet_NaN();
  AddTriangle(mesh, {nan, 0, 0}, {0, 1, 0}, {1, 0, 0});
  const std::string moving = folder.Write("moving.stl", mesh);
  const std::string fixed = folder.Write("fixed.stl", Box({0, 0, 0}, {1, 1, 1}));
  const Outcome run = Sweep(moving + " " + fixed + " --direction -z --json -");
  EXPECT_EQ(run.status, 0);
  const json answer = json::parse(run.out);
  EXPECT_EQ(answer["moving"]["skipped"], 1);
  EXPECT_EQ(answer["moving"]["triangles"], 13);
  EXPECT_EQ(answer["warnings"].size(), 1u);
}

TEST(GslSweep, ProgressNeedsATerminal) {
  for (const char* style : {"auto", "plain", "never"}) {
    EXPECT_EQ(Sweep(parts + "--direction -z --progress " + style).err, "") << style;
  }
}

/// What the program writes when stdout and stderr are a terminal.
std::string OnTerminal(const std::string& style, const char* terminalName) {
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) {
    setenv("TERM", terminalName, 1);
    execl(GSL_SWEEP_PROGRAM, "gsl-sweep", bolt.c_str(), bracket.c_str(), "--direction", "-z",
          "--progress", style.c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  std::string seen;
  char buffer[512];
  for (ssize_t n = 0; (n = read(terminal, buffer, sizeof buffer)) > 0;) {
    seen.append(buffer, static_cast<std::size_t>(n));
  }
  close(terminal);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(WEXITSTATUS(status), 0);
  return seen;
}

TEST(GslSweep, ProgressOnATerminal) {
  const std::string plain = OnTerminal("plain", "xterm");
  EXPECT_EQ(plain.substr(0, plain.find("Contact")),
            "Reading " + bolt + "\r\nReading " + bracket + "\r\nPreparing\r\nSearching\r\n");
  EXPECT_EQ(plain.find('\033'), std::string::npos);
  const std::string rewritten = OnTerminal("auto", "xterm");
  // Removed again before the answer.
  EXPECT_NE(rewritten.find("\r\033[KSearching"), std::string::npos) << rewritten;
  EXPECT_NE(rewritten.find("\r\033[KContact after 30"), std::string::npos) << rewritten;
  EXPECT_EQ(OnTerminal("auto", "dumb"), plain);
  EXPECT_EQ(OnTerminal("never", "xterm").substr(0, 16), "Contact after 30");
}

} // namespace
