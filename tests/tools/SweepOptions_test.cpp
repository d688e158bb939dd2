#include "SweepOptions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using gsl_tools::ParseSweepOptions;
using gsl_tools::ProgressStyle;
using gsl_tools::SweepOptions;
using gsl_tools::UsageError;
using testing::HasSubstr;

struct Parsed {
  SweepOptions options;
  std::string text;  ///< to be printed
  std::string error; ///< of the UsageError
};

Parsed Parse(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "gsl-sweep");
  Parsed parsed;
  try {
    parsed.text =
        ParseSweepOptions(static_cast<int>(arguments.size()), arguments.data(), parsed.options);
  } catch (const UsageError& error) {
    parsed.error = error.what();
  }
  return parsed;
}

/// Parses both files and a direction, followed by the arguments.
Parsed ParseMore(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), {"a.stl", "b.stl", "-d", "-z"});
  return Parse(std::move(arguments));
}

void ExpectVector(const gsl_arithmetic::Coord3& v, double x, double y, double z) {
  EXPECT_EQ(v.x, x);
  EXPECT_EQ(v.y, y);
  EXPECT_EQ(v.z, z);
}

const std::string seeHelp = " (see gsl-sweep --help)";
const std::string tooManyInputs =
    "more than one of MOVING, FIXED, --directions and --pose is -; expected standard input once "
    "at most";

} // namespace

TEST(SweepOptions, LeastCommandLineLeavesTheRestAtItsDefaults) {
  const Parsed parsed = Parse({"a.stl", "b.stl", "--direction", "0,0,-1"});
  EXPECT_EQ(parsed.error, "");
  EXPECT_EQ(parsed.text, "");
  const SweepOptions& options = parsed.options;
  EXPECT_EQ(options.movingFile, "a.stl");
  EXPECT_EQ(options.fixedFiles, std::vector<std::string>{"b.stl"});
  ExpectVector(options.direction, 0.0, 0.0, -1.0);
  ExpectVector(options.offset, 0.0, 0.0, 0.0);
  EXPECT_EQ(options.poseFile, "");
  EXPECT_EQ(options.directionsFile, "");
  EXPECT_EQ(options.sphereCount, 0u);
  EXPECT_FALSE(options.oneSided || options.quiet || options.verbose || options.force);
  EXPECT_FALSE(options.leaving || options.solid || options.last || options.patch);
  EXPECT_EQ(options.patchPairs, 1000u);
  EXPECT_EQ(options.allowance, 0.0);
  EXPECT_EQ(options.clearance, 0.0);
  EXPECT_EQ(options.maxDistance, std::numeric_limits<double>::infinity());
  EXPECT_EQ(options.jsonFile, "");
  EXPECT_EQ(options.outputFile, "");
  EXPECT_EQ(options.viewFile, "");
  EXPECT_FALSE(options.JsonToFile() || options.JsonToStdout() || options.ListsPairs());
  EXPECT_EQ(options.progress, ProgressStyle::Auto);
  EXPECT_EQ(options.threads, std::max(1u, std::min(1024u, std::thread::hardware_concurrency())));
}

TEST(SweepOptions, EveryOptionArrives) {
  const Parsed parsed = ParseMore(
      {"--pose", "p", "--offset", "1,2,3", "--one-sided", "--max-distance", "0", "--json", "j",
       "--output", "o.PLY", "--threads", "1024", "--progress", "plain", "--quiet", "--force"});
  EXPECT_EQ(parsed.error, "");
  const SweepOptions& options = parsed.options;
  EXPECT_EQ(options.poseFile, "p");
  ExpectVector(options.offset, 1.0, 2.0, 3.0);
  EXPECT_TRUE(options.oneSided && options.quiet && options.force);
  EXPECT_EQ(options.maxDistance, 0.0);
  EXPECT_EQ(options.jsonFile, "j");
  EXPECT_TRUE(options.JsonToFile());
  EXPECT_EQ(options.outputFile, "o.PLY");
  EXPECT_EQ(options.threads, 1024u);
  EXPECT_EQ(options.progress, ProgressStyle::Plain);
  EXPECT_TRUE(ParseMore({"--json", "-"}).options.JsonToStdout());
  EXPECT_TRUE(ParseMore({"--json", "-"}).options.ListsPairs());
  EXPECT_EQ(ParseMore({"--view", "v.html"}).options.viewFile, "v.html");
  EXPECT_TRUE(ParseMore({"--view", "v.HTM"}).options.ListsPairs());
  const SweepOptions all = ParseMore({"--leaving", "--patch", "--patch-pairs", "1000000"}).options;
  EXPECT_TRUE(all.leaving && all.patch);
  EXPECT_EQ(all.patchPairs, 1000000u);
  EXPECT_TRUE(ParseMore({"--leaving", "--last"}).options.last);
  EXPECT_TRUE(ParseMore({"--solid", "--max-distance", "9"}).options.solid);
  EXPECT_EQ(ParseMore({"--progress=never"}).options.progress, ProgressStyle::Never);
  EXPECT_EQ(ParseMore({"--progress=auto"}).options.progress, ProgressStyle::Auto);
}

TEST(SweepOptions, ManyDirectionsTakeThePlaceOfOne) {
  const Parsed lines = Parse({"a", "b", "--directions", "-"});
  EXPECT_EQ(lines.error, "");
  EXPECT_EQ(lines.options.directionsFile, "-");
  EXPECT_FALSE(lines.options.ReadsMeshFromStdin());
  EXPECT_EQ(Parse({"a", "b", "--directions=d.txt"}).options.directionsFile, "d.txt");
  EXPECT_EQ(Parse({"a", "b", "--sphere", "1"}).options.sphereCount, 1u);
  EXPECT_EQ(Parse({"a", "b", "--sphere=100000", "--json", "-"}).options.sphereCount, 100000u);
  EXPECT_EQ(Parse({"a", "b", "--sphere=100000", "--json", "-"}).error, "");
}

TEST(SweepOptions, PatchIsOfTheFirstContactAlongOneDirection) {
  EXPECT_EQ(ParseMore({"--patch", "--last"}).error,
            "--patch and --last are both given; expected one of them at most");
  EXPECT_EQ(Parse({"a", "b", "--sphere", "9", "--patch"}).error,
            "--patch cannot be used with --sphere; expected --direction");
  EXPECT_EQ(Parse({"a", "b", "--directions", "d", "--patch"}).error,
            "--patch cannot be used with --directions; expected --direction");
  EXPECT_EQ(ParseMore({"--patch-pairs", "9"}).error,
            "--patch-pairs is given without --patch; expected both");
  EXPECT_EQ(Parse({"a", "b", "--sphere", "9", "--last", "--leaving"}).error, "");
}

TEST(SweepOptions, SolidsHaveOneQuestion) {
  for (const std::string other : {"--one-sided", "--leaving", "--last", "--patch"}) {
    EXPECT_EQ(ParseMore({other.c_str(), "--solid"}).error,
              "--solid and " + other + " are both given; expected one of them at most");
  }
  EXPECT_EQ(Parse({"a", "b", "--sphere", "9", "--solid"}).error, "");
  EXPECT_EQ(Parse({"a", "b", "c", "--directions", "d", "--solid"}).error, "");
}

TEST(SweepOptions, ClearanceIsOfTheFirstContact) {
  for (const std::string other : {"--leaving", "--solid", "--last", "--patch"}) {
    EXPECT_EQ(ParseMore({other.c_str(), "--clearance", "0.5"}).error,
              "--clearance and " + other + " are both given; expected one of them at most");
  }
  // A clearance of 0 is a clearance that was given.
  EXPECT_NE(ParseMore({"--solid", "--clearance", "0"}).error, "");
  EXPECT_EQ(ParseMore({"--clearance", "0.5"}).options.clearance, 0.5);
  EXPECT_EQ(ParseMore({"--clearance=0"}).error, "");
  EXPECT_EQ(ParseMore({"--clearance", "1", "--one-sided", "--max-distance", "9"}).error, "");
  EXPECT_EQ(Parse({"a", "b", "--sphere", "9", "--clearance", "1"}).error, "");
  EXPECT_EQ(Parse({"a", "b", "--directions", "d", "--clearance", "1"}).error, "");
}

TEST(SweepOptions, AllowanceGoesWithEveryQuestion) {
  EXPECT_EQ(ParseMore({"--allowance=-1e-4"}).options.allowance, -1e-4);
  EXPECT_EQ(ParseMore({"--allowance", "-1e-4"}).options.allowance, -1e-4);
  EXPECT_EQ(ParseMore({"--allowance", "2"}).options.allowance, 2.0);
  EXPECT_FALSE(std::signbit(ParseMore({"--allowance=-0"}).options.allowance));
  EXPECT_EQ(ParseMore({"--allowance", "0.000e-400"}).options.allowance, 0.0);
  EXPECT_EQ(ParseMore({"--allowance=-1e-400"}).error,
            "--allowance must be 0 or fit a double (got -1e-400)");
  EXPECT_EQ(ParseMore({"--clearance", "1e-400"}).error,
            "--clearance must be 0 or fit a double (got 1e-400)");
  for (const std::vector<const char*>& others :
       std::vector<std::vector<const char*>>{{"--solid"},
                                             {"--leaving"},
                                             {"--one-sided"},
                                             {"--last"},
                                             {"--patch"},
                                             {"--clearance", "1"},
                                             {"--output", "o.stl"}}) {
    std::vector<const char*> all = others;
    all.push_back("--allowance=-1e-4");
    EXPECT_EQ(ParseMore(all).error, "") << others[0];
  }
  EXPECT_EQ(Parse({"a", "b", "--sphere", "9", "--allowance", "1"}).error, "");
  EXPECT_EQ(Parse({"a", "b", "--directions", "d", "--allowance", "1"}).error, "");
}

TEST(SweepOptions, QuietAndVerboseExcludeEachOther) {
  EXPECT_TRUE(ParseMore({"--verbose"}).options.verbose);
  EXPECT_FALSE(ParseMore({"--quiet"}).options.verbose);
  EXPECT_EQ(ParseMore({"--verbose", "--quiet"}).error,
            "--quiet and --verbose are both given; expected one of them at most");
}

TEST(SweepOptions, DirectionsAreAskedForInOneWay) {
  const std::string expected =
      " are both given; expected one of --direction, --directions and --sphere";
  EXPECT_EQ(ParseMore({"--sphere", "9"}).error, "--direction and --sphere" + expected);
  EXPECT_EQ(ParseMore({"--directions", "f"}).error, "--direction and --directions" + expected);
  EXPECT_EQ(Parse({"a", "b", "--sphere", "9", "--directions", "f"}).error,
            "--directions and --sphere" + expected);
}

TEST(SweepOptions, OutputsThatDoNotFitManyDirectionsAreRefused) {
  EXPECT_EQ(Parse({"a", "b", "--sphere", "9", "--output", "o.stl"}).error,
            "--output cannot be used with --sphere; expected --direction");
  EXPECT_EQ(Parse({"a", "b", "--directions", "f", "--output", "o.stl"}).error,
            "--output cannot be used with --directions; expected --direction");
  EXPECT_EQ(Parse({"a", "b", "--directions", "f", "--view", "v.html"}).error,
            "--view cannot be used with --directions; expected --direction or --sphere");
  EXPECT_EQ(Parse({"a", "b", "--directions", "f", "--picture", "p.svg"}).error,
            "--picture cannot be used with --directions; expected --direction or --sphere");
  EXPECT_EQ(Parse({"a", "b", "--directions", "f", "--json", "-"}).error,
            "--json cannot be used with --directions, which always writes JSON to stdout; "
            "expected one of them");
  EXPECT_EQ(Parse({"a", "b", "--output", "o.stl"}).error,
            "--direction is missing; expected gsl-sweep MOVING FIXED... --direction X,Y,Z" +
                seeHelp);
}

TEST(SweepOptions, DirectionIsTakenInEveryForm) {
  const std::vector<std::vector<const char*>> forms = {
      {"-d", "-z"},       {"-d-z"},         {"-d=-z"},           {"--direction", "-z"},
      {"--direction=-z"}, {"-d", "0,0,-1"}, {"-d", "0 0 -1"},    {"--direction=0 0 -1"},
      {"-d0,0,-1"},       {"-d", "-Z"},     {"-d", " 0, 0, -1 "}};
  for (std::vector<const char*> form : forms) {
    const std::string shown = testing::PrintToString(form);
    form.insert(form.end(), {"a.stl", "b.stl"});
    const Parsed parsed = Parse(form);
    EXPECT_EQ(parsed.error, "") << shown;
    ExpectVector(parsed.options.direction, 0.0, 0.0, -1.0);
  }
  ExpectVector(Parse({"a", "b", "-d", "z"}).options.direction, 0.0, 0.0, 1.0);
  ExpectVector(Parse({"a", "b", "-dx"}).options.direction, 1.0, 0.0, 0.0);
  ExpectVector(Parse({"a", "b", "-d", "-.5,0,0"}).options.direction, -0.5, 0.0, 0.0);
}

TEST(SweepOptions, EmptyValuesAreRefused) {
  const std::string empty = " (got an empty value)";
  EXPECT_EQ(ParseMore({"--json", ""}).error, "--json must be a file name or -" + empty);
  EXPECT_EQ(ParseMore({"--directions", ""}).error, "--directions must be a file name or -" + empty);
  EXPECT_EQ(ParseMore({"--sphere", ""}).error,
            "--sphere must be a whole number from 1 to 100000" + empty);
  EXPECT_EQ(ParseMore({"--pose", ""}).error, "--pose must be a file name or -" + empty);
  EXPECT_EQ(ParseMore({"--output", ""}).error,
            "--output must end in .stl, .ply, .obj or .off, or in .glb" + empty);
  EXPECT_EQ(ParseMore({"--offset", ""}).error,
            "--offset must be three finite numbers X,Y,Z" + empty);
  EXPECT_EQ(Parse({"a", "b", "-d", ""}).error,
            "--direction must be X,Y,Z or an axis such as z or -z" + empty);
  EXPECT_EQ(Parse({"a", "b", "-d="}).error,
            "--direction must be X,Y,Z or an axis such as z or -z" + empty);
  EXPECT_EQ(ParseMore({"--max-distance", ""}).error,
            "--max-distance must be a finite number" + empty);
  for (const std::string name : {"--clearance", "--allowance"})
    EXPECT_EQ(ParseMore({name.c_str(), ""}).error, name + " must be a finite number" + empty);
  EXPECT_EQ(ParseMore({"--threads", ""}).error,
            "--threads must be a whole number from 1 to 1024" + empty);
  EXPECT_EQ(ParseMore({"--progress", ""}).error, "--progress must be auto, plain or never" + empty);
  EXPECT_EQ(Parse({"", "b", "-d", "-z"}).error, "MOVING must be a file name" + empty);
  EXPECT_EQ(Parse({"a", "", "-d", "-z"}).error, "FIXED must be a file name" + empty);
}

TEST(SweepOptions, EmptyValueAfterAnEqualsSignDoesNotTakeTheNextArgument) {
  for (const char* option : {"--json=", "--output=", "--directions=", "--sphere=", "--pose=",
                             "--offset=", "--allowance=", "--clearance=", "--max-distance=",
                             "--threads=", "--progress=", "--format="}) {
    const std::string name(option, std::string(option).size() - 1);
    EXPECT_EQ(ParseMore({option, "1.stl"}).error, name + " must be followed by a value" + seeHelp);
  }
  EXPECT_EQ(Parse({"a", "b", "--direction=", "-z"}).error,
            "--direction must be followed by a value" + seeHelp);
}

TEST(SweepOptions, OptionAtTheEndWithoutItsValueIsRefused) {
  for (const char* option :
       {"--json", "--output", "--directions", "--sphere", "--pose", "--offset", "--allowance",
        "--clearance", "--max-distance", "--threads", "--progress", "--direction", "-d"}) {
    EXPECT_EQ(Parse({"a", "b", option}).error,
              std::string(option) + " must be followed by a value" + seeHelp);
  }
}

TEST(SweepOptions, OptionIsNotTakenForAFile) {
  EXPECT_EQ(ParseMore({"--json", "--quiet"}).error,
            "--json must be a file name or - (got --quiet; a file of that name is ./--quiet)");
  EXPECT_EQ(ParseMore({"--json", "-d", "x"}).error,
            "--json must be a file name or - (got -d; a file of that name is ./-d)");
  EXPECT_EQ(ParseMore({"--output", "--force"}).error,
            "--output must end in .stl, .ply, .obj or .off, or in .glb (got --force)");
  EXPECT_EQ(ParseMore({"--output", "-x.stl"}).error,
            "--output must be a file name (got -x.stl; a file of that name is ./-x.stl)");
  EXPECT_EQ(ParseMore({"--pose", "--quiet"}).error,
            "--pose must be a file name or - (got --quiet; a file of that name is ./--quiet)");
  EXPECT_EQ(ParseMore({"--json", "./--quiet"}).options.jsonFile, "./--quiet");
}

TEST(SweepOptions, ASphereHasAPictureAndAPage) {
  const Parsed parsed =
      Parse({"a", "b", "--sphere", "9", "--picture", "p.svg", "--view", "v.html", "--json", "j"});
  EXPECT_EQ(parsed.error, "");
  EXPECT_EQ(parsed.options.sphereCount, 9u);
  EXPECT_EQ(parsed.options.pictureFile, "p.svg");
  EXPECT_EQ(parsed.options.viewFile, "v.html");
  EXPECT_EQ(Parse({"a", "b", "--sphere", "9", "--picture", "p.svg", "--patch"}).error,
            "--patch cannot be used with --sphere; expected --direction");
  EXPECT_EQ(Parse({"a", "b", "--sphere", "9", "--view", "v.html", "--output", "o.stl"}).error,
            "--output cannot be used with --sphere; expected --direction");
  EXPECT_EQ(Parse({"a", "b", "--sphere", "9", "--picture", "-"}).error,
            "--picture must end in .svg, .png or .pdf (got -)");
  EXPECT_EQ(Parse({"a", "b", "--sphere", "9", "--view", "-"}).error,
            "--view must end in .html (got -)");
}

TEST(SweepOptions, PictureHasAKnownFormat) {
  const std::string wanted = "--picture must end in .svg, .png or .pdf (got ";
  for (const char* name : {"-", "page", "page.jpg", "svg", "page.svg/"}) {
    EXPECT_EQ(ParseMore({"--picture", name}).error, wanted + name + ")");
  }
  EXPECT_EQ(ParseMore({"--picture", "folder/page.PDF"}).options.pictureFile, "folder/page.PDF");
}

TEST(SweepOptions, OutputGoesToAFileOfAKnownFormat) {
  const std::string wanted = "--output must end in .stl, .ply, .obj or .off, or in .glb (got ";
  for (const char* name : {"-", "moved", "moved.step", "moved.3mf", "stl", "moved.stl/"}) {
    EXPECT_EQ(ParseMore({"--output", name}).error, wanted + name + ")");
  }
}

TEST(SweepOptions, AViewGoesToAFileForABrowser) {
  for (const char* name : {"-", "view", "view.stl", "html", "view.html/", "--force"}) {
    EXPECT_EQ(ParseMore({"--view", name}).error,
              std::string("--view must end in .html (got ") + name + ")");
  }
  EXPECT_EQ(ParseMore({"--view", ""}).error, "--view must end in .html (got an empty value)");
  EXPECT_EQ(ParseMore({"--view", "-v.html"}).error,
            "--view must be a file name (got -v.html; a file of that name is ./-v.html)");
  EXPECT_EQ(ParseMore({"--view="}).error, "--view must be followed by a value" + seeHelp);
}

TEST(SweepOptions, UnknownOptionIsNamedBeforeAnythingElse) {
  EXPECT_EQ(Parse({"a", "b", "--directoin", "-z"}).error,
            "unknown option --directoin; did you mean --direction?");
  EXPECT_EQ(Parse({"a", "b", "--directoin=-z"}).error,
            "unknown option --directoin; did you mean --direction?");
  EXPECT_EQ(Parse({"--bogus"}).error, "unknown option --bogus" + seeHelp);
  EXPECT_EQ(ParseMore({"--bogus=3", "--threads", "0", "c.stl"}).error,
            "unknown option --bogus" + seeHelp);
  EXPECT_EQ(Parse({"a", "b", "-z"}).error, "unknown option -z; did you mean --direction -z?");
  EXPECT_EQ(Parse({"a", "b", "-direction", "-z"}).error,
            "unknown option -direction; did you mean --direction?");
  EXPECT_EQ(ParseMore({"-quiet"}).error, "unknown option -quiet; did you mean --quiet?");
  EXPECT_EQ(ParseMore({"--out", "x"}).error, "unknown option --out; did you mean --output?");
  EXPECT_EQ(ParseMore({"--b\nad"}).error, "unknown option --b?ad" + seeHelp);
}

TEST(SweepOptions, WrongValuesAreNamedWithWhatWasExpected) {
  EXPECT_EQ(ParseMore({"--max-distance", "-3"}).error,
            "--max-distance must be at least 0 (got -3)");
  EXPECT_EQ(ParseMore({"--max-distance=-3"}).error, "--max-distance must be at least 0 (got -3)");
  EXPECT_EQ(ParseMore({"--max-distance", "far"}).error,
            "--max-distance must be a finite number (got far)");
  EXPECT_EQ(ParseMore({"--max-distance", "nan"}).error,
            "--max-distance must be a finite number (got nan)");
  for (const char* const clearance : {"-3", "-1e-300"}) {
    EXPECT_EQ(ParseMore({"--clearance", clearance}).error,
              std::string("--clearance must be at least 0 (got ") + clearance + ")");
  }
  for (const std::string name : {"--clearance", "--allowance"}) {
    for (const std::string value : {"nan", "inf", "-inf", "1e999", "1mm", "1,2", "--solid"}) {
      EXPECT_EQ(ParseMore({name.c_str(), value.c_str()}).error,
                name + " must be a finite number (got " + value + ")");
    }
  }
  EXPECT_EQ(ParseMore({"--offset", "1,2"}).error,
            "--offset must be three finite numbers X,Y,Z (got 1,2)");
  EXPECT_EQ(ParseMore({"--offset", "inf,0,0"}).error,
            "--offset must be three finite numbers X,Y,Z (got inf,0,0)");
  for (const char* threads : {"0", "-3", "1025", "x", "1.5", "4294967297"}) {
    EXPECT_EQ(ParseMore({"--threads", threads}).error,
              std::string("--threads must be a whole number from 1 to 1024 (got ") + threads + ")");
  }
  for (const char* count : {"0", "-3", "100001", "x", "1.5", "1e3", "18446744073709551617"}) {
    EXPECT_EQ(ParseMore({"--sphere", count}).error,
              std::string("--sphere must be a whole number from 1 to 100000 (got ") + count + ")");
  }
  EXPECT_EQ(ParseMore({"--progress", "loud"}).error,
            "--progress must be auto, plain or never (got loud)");
  EXPECT_EQ(Parse({"a", "b", "-d", "0,0,0"}).error,
            "--direction must be a vector that is not zero (got 0,0,0)");
  EXPECT_EQ(Parse({"a", "b", "-d", "1,2"}).error,
            "--direction must be X,Y,Z or an axis such as z or -z (got 1,2)");
  EXPECT_EQ(ParseMore({"--quiet=maybe"}).error, "--quiet takes no value (got --quiet=maybe)");
}

TEST(SweepOptions, VectorInThreeArgumentsIsNamedAsTheDirection) {
  EXPECT_EQ(Parse({"a", "b", "-d", "0", "0", "-1"}).error,
            "--direction must be X,Y,Z or an axis such as z or -z (got 0)");
}

TEST(SweepOptions, OneBodyMayBeStandardInput) {
  const Parsed moving = Parse({"-", "b", "-d", "z", "--format", "OBJ"});
  EXPECT_EQ(moving.error, "");
  EXPECT_EQ(moving.options.movingFile, "-");
  EXPECT_EQ(moving.options.format, gsl_mesh::MeshFormat::Obj);
  const Parsed fixed = Parse({"a", "-", "-d", "z"});
  EXPECT_EQ(fixed.error, "");
  EXPECT_TRUE(fixed.options.ReadsMeshFromStdin());
  EXPECT_EQ(fixed.options.format, gsl_mesh::MeshFormat::Unknown);
  EXPECT_EQ(Parse({"-", "-", "-d", "z"}).error, tooManyInputs);
  EXPECT_EQ(Parse({"a", "-", "b", "-", "-d", "z"}).error, tooManyInputs);
  EXPECT_TRUE(Parse({"a", "b", "-", "-d", "z"}).options.ReadsMeshFromStdin());
  EXPECT_EQ(ParseMore({"--format", "obj"}).error,
            "--format needs a mesh on standard input; expected - as MOVING or FIXED");
  EXPECT_EQ(Parse({"./-", "b", "-d", "z", "--format", "obj"}).error,
            "--format needs a mesh on standard input; expected - as MOVING or FIXED");
  EXPECT_EQ(Parse({"-", "b", "-d", "z", "--format", "step"}).error,
            "--format must be stl, ply, obj or off (got step)");
  EXPECT_EQ(Parse({"-", "b", "-d", "z", "--format", ""}).error,
            "--format must be stl, ply, obj or off (got an empty value)");
}

TEST(SweepOptions, OneInputMayBeStandardInput) {
  EXPECT_EQ(ParseMore({"--pose", "-"}).options.poseFile, "-");
  EXPECT_EQ(Parse({"-", "b", "-d", "z", "--pose", "-"}).error, tooManyInputs);
  EXPECT_EQ(Parse({"-", "b", "--directions", "-"}).error, tooManyInputs);
  EXPECT_EQ(Parse({"a", "b", "--directions", "-", "--pose", "-"}).error, tooManyInputs);
  EXPECT_EQ(Parse({"a", "b", "--directions", "-", "--pose", "p"}).error, "");
  EXPECT_EQ(Parse({"a", "b", "--directions", "-", "--format", "obj"}).error,
            "--format needs a mesh on standard input; expected - as MOVING or FIXED");
  EXPECT_EQ(Parse({"a", "-", "-d", "z", "--pose", "-"}).error, tooManyInputs);
  EXPECT_EQ(ParseMore({"--pose", "-", "--format", "obj"}).error,
            "--format needs a mesh on standard input; expected - as MOVING or FIXED");
}

TEST(SweepOptions, SeveralFixedBodiesKeepTheirOrder) {
  const std::vector<std::string> files = {"b.stl", "c.stl", "d part.stl", "-e"};
  EXPECT_EQ(Parse({"a", "b.stl", "c.stl", "d part.stl", "-d", "z", "--", "-e"}).options.fixedFiles,
            files);
  EXPECT_EQ(Parse({"a", "b.stl", "--quiet", "c.stl", "-d", "z", "d part.stl", "--", "-e"})
                .options.fixedFiles,
            files);
  EXPECT_EQ(Parse({"-d", "z", "a", "b.stl", "c.stl", "d part.stl", "--", "-e"}).options.fixedFiles,
            files);
  EXPECT_EQ(ParseMore({""}).error, "FIXED must be a file name (got an empty value)");
}

TEST(SweepOptions, MissingArgumentsAreNamedTogether) {
  const std::string expected =
      " missing; expected gsl-sweep MOVING FIXED... --direction X,Y,Z" + seeHelp;
  EXPECT_EQ(Parse({}).error, "MOVING, FIXED and --direction are" + expected);
  EXPECT_EQ(Parse({"a"}).error, "FIXED and --direction are" + expected);
  EXPECT_EQ(Parse({"a", "b"}).error, "--direction is" + expected);
  EXPECT_EQ(Parse({"a", "-d", "z"}).error, "FIXED is" + expected);
}

TEST(SweepOptions, RepeatedOptionIsRefused) {
  EXPECT_EQ(ParseMore({"--direction", "x"}).error, "--direction was given 2 times; expected once");
  EXPECT_EQ(ParseMore({"--json", "a", "--json", "b", "--json", "c"}).error,
            "--json was given 3 times; expected once");
  EXPECT_EQ(ParseMore({"--quiet", "--quiet"}).error, "");
}

TEST(SweepOptions, FilesMayFollowTwoDashes) {
  const Parsed parsed = Parse({"-d", "-z", "--", "-a.stl", "--quiet"});
  EXPECT_EQ(parsed.error, "");
  EXPECT_EQ(parsed.options.movingFile, "-a.stl");
  EXPECT_EQ(parsed.options.fixedFiles, std::vector<std::string>{"--quiet"});
  EXPECT_FALSE(parsed.options.quiet);
}

TEST(SweepOptions, HelpAndVersionWinOverErrors) {
  EXPECT_EQ(Parse({"--version"}).text, "gsl-sweep " GSL_VERSION "\n");
  EXPECT_EQ(Parse({"--bogus", "--version"}).text, "gsl-sweep " GSL_VERSION "\n");
  EXPECT_THAT(Parse({"-h"}).text, HasSubstr("Usage: gsl-sweep MOVING FIXED... --direction X,Y,Z"));
  EXPECT_EQ(Parse({"--help", "--threads", "0"}).text, Parse({"-h"}).text);
}

TEST(SweepOptions, HelpFitsATerminalOfEightyColumns) {
  std::istringstream help(Parse({"--help"}).text);
  int lines = 0;
  for (std::string line; std::getline(help, line); ++lines)
    EXPECT_LT(line.size(), 80u) << line;
  EXPECT_GT(lines, 20);
}
