#include "SweepOptions.h"

#include "GltfScene.h"
#include "MeshWrite.h"
#include "PictureFormat.h"
#include "support/CommandLine.h"
#include "support/VectorText.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <optional>
#include <system_error>
#include <thread>
#include <vector>

namespace gsl_tools {

namespace {

using gsl_arithmetic::Coord3;
using gsl_mesh::MeshFormat;
using gsl_mesh::MeshFormatNames;

constexpr unsigned kMostThreads = 1024;
// Their answers are kept in memory, about 150 bytes each, and their JSON takes about 600.
constexpr std::size_t kMostDirections = 100000;
// They are kept in memory, about 600 bytes each, and their JSON takes about as much.
constexpr std::size_t kMostPatchPairs = 1000000;

const char* const kDescription =
    "Finds how far one body travels along a direction before it touches another, and where. Reads "
    "meshes (STL, OBJ, PLY, OFF, 3MF, glTF and others), moves the first along the direction and "
    "reports its first contact with the others.";

const char* const kUsage = "MOVING FIXED... --direction X,Y,Z [OPTION...]";

const char* const kFooter = "Exit status:\n"
                            "  0   contact, also from the start or within --clearance; of many, "
                            "along any\n"
                            "  1   no contact; of many directions, along none\n"
                            "  2   wrong usage, or a line of --directions is not a direction\n"
                            "  3   an input cannot be read or was rejected\n"
                            "  4   another failure\n"
                            "\n"
                            "Examples:\n"
                            "  $ gsl-sweep bolt.stl bracket.stl --direction -z\n"
                            "  $ gsl-sweep bolt.stl bracket.stl -d 0,0,-1 --json -\n"
                            "  $ gsl-sweep bolt.stl bracket.stl -d z --solid --allowance=-1e-4\n"
                            "  $ gsl-sweep bolt.stl bracket.stl --sphere 1000 --picture map.pdf";

struct OptionRow {
  const char* names;
  const char* value;        ///< the value that follows the option; null for a flag
  bool SweepOptions::*flag; ///< the field that a flag sets; null for an option with a value
  std::string text;
};

/// The options, in the order of the help.
std::vector<OptionRow> OptionRows() {
  return {
      {"-d,--direction", "X,Y,Z", nullptr,
       "Direction of travel, of any length except zero, or an axis: x -x y -y z -z"},
      {"--directions", "FILE", nullptr,
       "Answers each line of this file, one direction in each, with one line of JSON on stdout; "
       "- for stdin"},
      {"--sphere", "N", nullptr,
       "Answers N directions spread evenly over the sphere, 1 to " +
           std::to_string(kMostDirections)},
      {"--allowance", "E", nullptr,
       "Makes MOVING thicker by E, or thinner if E is negative, before --pose; --output writes it "
       "with its own size"},
      {"--pose", "FILE", nullptr,
       "Places MOVING by the matrix in this file first: 12 or 16 numbers, row by row; - for stdin"},
      {"--offset", "X,Y,Z", nullptr, "Moves MOVING by this vector, after --pose"},
      {"--one-sided", nullptr, &SweepOptions::oneSided,
       "Leaves out triangles of MOVING that face against the direction and triangles of FIXED that "
       "face along it"},
      {"--leaving", nullptr, &SweepOptions::leaving,
       "Leaves out pairs of triangles that part at the start, so that MOVING may leave what it "
       "touches"},
      {"--solid", nullptr, &SweepOptions::solid,
       "Takes the bodies as solids, which may touch and slide: reports where their insides begin "
       "to overlap"},
      {"--clearance", "C", nullptr,
       "Reports the least travel at which the distance between the bodies is at most C"},
      {"--last", nullptr, &SweepOptions::last,
       "Reports the last contact, where the bodies part, in place of the first"},
      {"--patch", nullptr, &SweepOptions::patch,
       "Reports all pairs of triangles that touch at the contact: their number and the box around "
       "them, and each in the JSON"},
      {"--patch-pairs", "N", nullptr,
       "Lists at most N pairs of --patch in the JSON, and marks them in --view and --picture, 1 "
       "to " +
           std::to_string(kMostPatchPairs) + "; by default 1000"},
      {"--max-distance", "L", nullptr, "Reports contacts up to and including this travel"},
      {"--json", "FILE", nullptr,
       "Writes the result as JSON; - writes it to stdout in place of the text"},
      {"--output", "FILE", nullptr,
       "Writes MOVING at its contact, in the format of the extension: " + MeshFormatNames(".") +
           "; .glb holds all bodies and the contact, for 3-D viewers"},
      {"--view", "FILE", nullptr,
       "Writes a page for a browser, FILE.html, that shows the bodies and lets MOVING travel; with "
       "--sphere, a sphere chooses the direction"},
      {"--picture", "FILE", nullptr,
       "Draws one page, .svg, .png or .pdf: the bodies before the travel and at the contact, the "
       "travel and the contact; with --sphere, a map of the travel in each direction"},
      {"--format", "NAME", nullptr,
       "Format of a mesh on stdin: " + MeshFormatNames("") + "; only obj requires it"},
      {"--threads", "N", nullptr, "Number of threads, 1 to 1024; the result does not depend on it"},
      {"--progress", "STYLE", nullptr,
       "Shows progress on stderr if stderr is a terminal: auto, plain or never"},
      {"--quiet", nullptr, &SweepOptions::quiet,
       "Prints only errors, and on stdout only the JSON of --json - and of --directions"},
      {"--verbose", nullptr, &SweepOptions::verbose,
       "Shows the time and the memory of each stage on stderr"},
      {"--force", nullptr, &SweepOptions::force, "Replaces existing output files"},
  };
}

void Declare(CLI::App& app, SweepOptions& options) {
  DeclareProgram(app, kUsage, kFooter);
  app.add_option("MOVING")->description("Mesh file of the body that moves; - for stdin");
  app.add_option("FIXED")
      ->description("Mesh files of the bodies that stay; - for stdin")
      ->expected(-1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  for (const OptionRow& row : OptionRows()) {
    if (row.flag != nullptr) {
      app.add_flag(row.names, options.*row.flag, row.text);
      continue;
    }
    app.add_option(row.names)->description(row.text)->type_name(row.value)->multi_option_policy(
        CLI::MultiOptionPolicy::TakeAll);
  }
}

/// Returns the value of --direction, if it is given.
std::optional<std::string> DirectionTextOf(const CLI::App& app) {
  std::optional<std::string> value = ValueOf(app, "--direction");
  // The parser reads -d=-z as the option -d with the value =-z.
  if (value && value->substr(0, 1) == "=") value->erase(0, 1);
  return value;
}

std::string MeshFileOf(const std::string& name, const std::string& value) {
  if (value.empty()) FailValue(name, "be a file name", value);
  return value;
}

bool IsZero(const Coord3& v) {
  return v.x == 0.0 && v.y == 0.0 && v.z == 0.0;
}

Coord3 DirectionOf(const std::string& value) {
  if (const auto direction = ParseDirection(value)) return *direction;
  const auto vector = ParseVector(value);
  if (vector && IsZero(*vector)) FailValue("--direction", "be a vector that is not zero", value);
  FailValue("--direction", kDirectionForms, value);
}

Coord3 OffsetOf(const std::string& value) {
  const auto offset = ParseVector(value);
  if (!offset) FailValue("--offset", "be three finite numbers X,Y,Z", value);
  return *offset;
}

/// Returns true for a decimal number that is not zero, such as 1e-400.
bool SaysMoreThanZero(const std::string& value) {
  const std::string digits = value.substr(0, value.find_first_of("eE"));
  return digits.find_first_of("123456789") != std::string::npos;
}

/// A zero has no sign.
double NumberOf(const std::string& name, const std::string& value) {
  const auto number = ParseNumber(value);
  if (!number) FailValue(name, "be a finite number", value);
  if (*number == 0.0 && SaysMoreThanZero(value)) FailValue(name, "be 0 or fit a double", value);
  return *number + 0.0;
}

double NumberFromZero(const std::string& name, const std::string& value) {
  const double number = NumberOf(name, value);
  if (number < 0.0) FailValue(name, "be at least 0", value);
  return number;
}

std::string OutputFileOf(const std::string& value) {
  if (gsl_mesh::MeshFormatToWrite(value) == MeshFormat::Unknown && !gsl_view::IsGltfName(value)) {
    FailValue("--output", "end in " + MeshFormatNames(".") + ", or in .glb", value);
  }
  return FileNameOf("--output", value, "be a file name");
}

std::string ViewFileOf(const std::string& value) {
  const std::string extension = gsl_mesh::ExtensionOf(value);
  if (extension != "html" && extension != "htm") FailValue("--view", "end in .html", value);
  return FileNameOf("--view", value, "be a file name");
}

std::string PictureFileOf(const std::string& value) {
  if (!gsl_view::PictureFormatOf(value)) {
    FailValue("--picture", "end in .svg, .png or .pdf", value);
  }
  if (!gsl_view::CanDrawPictures()) {
    FailUsage("--picture cannot be used: this gsl-sweep was built without Cairo");
  }
  return FileNameOf("--picture", value, "be a file name");
}

MeshFormat FormatOf(const std::string& value) {
  const MeshFormat format = gsl_mesh::MeshFormatNamed(value);
  if (format == MeshFormat::Unknown) FailValue("--format", "be " + MeshFormatNames(""), value);
  return format;
}

/// Reads a whole number from 1 to `most`.
template <class Number>
Number CountOf(const std::string& name, const std::string& value, Number most) {
  Number count = 0;
  const char* const end = value.data() + value.size();
  const auto result = std::from_chars(value.data(), end, count);
  const bool isNumber = result.ec == std::errc() && result.ptr == end;
  if (!isNumber || count < 1 || count > most) {
    FailValue(name, "be a whole number from 1 to " + std::to_string(most), value);
  }
  return count;
}

ProgressStyle ProgressOf(const std::string& value) {
  if (value == "auto") return ProgressStyle::Auto;
  if (value == "plain") return ProgressStyle::Plain;
  if (value == "never") return ProgressStyle::Never;
  FailValue("--progress", "be auto, plain or never", value);
}

void TakeValues(const CLI::App& app, SweepOptions& options) {
  if (const auto value = DirectionTextOf(app)) options.direction = DirectionOf(*value);
  if (const auto value = ValueOf(app, "--directions")) {
    options.directionsFile = FileNameOf("--directions", *value, "be a file name or -");
  }
  if (const auto value = ValueOf(app, "--sphere")) {
    options.sphereCount = CountOf("--sphere", *value, kMostDirections);
  }
  if (const auto value = ValueOf(app, "--allowance")) {
    options.allowance = NumberOf("--allowance", *value);
  }
  if (const auto value = ValueOf(app, "--pose")) {
    options.poseFile = FileNameOf("--pose", *value, "be a file name or -");
  }
  if (const auto value = ValueOf(app, "--offset")) options.offset = OffsetOf(*value);
  if (const auto value = ValueOf(app, "--clearance")) {
    options.clearance = NumberFromZero("--clearance", *value);
  }
  if (const auto value = ValueOf(app, "--patch-pairs")) {
    options.patchPairs = CountOf("--patch-pairs", *value, kMostPatchPairs);
  }
  if (const auto value = ValueOf(app, "--max-distance")) {
    options.maxDistance = NumberFromZero("--max-distance", *value);
  }
  if (const auto value = ValueOf(app, "--json")) {
    options.jsonFile = FileNameOf("--json", *value, "be a file name or -");
  }
  if (const auto value = ValueOf(app, "--output")) options.outputFile = OutputFileOf(*value);
  if (const auto value = ValueOf(app, "--view")) options.viewFile = ViewFileOf(*value);
  if (const auto value = ValueOf(app, "--picture")) options.pictureFile = PictureFileOf(*value);
  if (const auto value = ValueOf(app, "--format")) options.format = FormatOf(*value);
  if (const auto value = ValueOf(app, "--threads")) {
    options.threads = CountOf("--threads", *value, kMostThreads);
  }
  if (const auto value = ValueOf(app, "--progress")) options.progress = ProgressOf(*value);
  if (const auto value = ValueOf(app, "MOVING")) options.movingFile = MeshFileOf("MOVING", *value);
  for (const std::string& value : app.get_option("FIXED")->results())
    options.fixedFiles.push_back(MeshFileOf("FIXED", value));
}

/// Returns those of the options that ask for directions that are given.
std::vector<std::string> DirectionOptions(const CLI::App& app) {
  std::vector<std::string> given;
  for (const char* const name : {"--direction", "--directions", "--sphere"}) {
    if (IsGiven(app, name)) given.push_back(name);
  }
  return given;
}

void RefuseTogether(const CLI::App& app, const char* option,
                    std::initializer_list<const char*> others) {
  for (const char* const other : others) {
    if (IsGiven(app, option) && IsGiven(app, other)) {
      FailUsage(std::string(option) + " and " + other +
                " are both given; expected one of them at most");
    }
  }
}

void RefuseConflicts(const CLI::App& app) {
  const std::vector<std::string> given = DirectionOptions(app);
  if (given.size() > 1) {
    FailUsage(given[0] + " and " + given[1] +
              " are both given; expected one of --direction, --directions and --sphere");
  }
  RefuseTogether(app, "--quiet", {"--verbose"});
  for (const char* const name : {"--output", "--patch"}) {
    if (IsGiven(app, name) && !given.empty() && given[0] != "--direction") {
      FailUsage(name + (" cannot be used with " + given[0]) + "; expected --direction");
    }
  }
  for (const char* const name : {"--view", "--picture"}) {
    if (IsGiven(app, name) && !given.empty() && given[0] == "--directions") {
      FailUsage(name + (" cannot be used with " + given[0]) + "; expected --direction or --sphere");
    }
  }
  RefuseTogether(app, "--patch", {"--last"});
  RefuseTogether(app, "--solid", {"--one-sided", "--leaving", "--last", "--patch"});
  RefuseTogether(app, "--clearance", {"--leaving", "--solid", "--last", "--patch"});
  if (IsGiven(app, "--patch-pairs") && !IsGiven(app, "--patch")) {
    FailUsage("--patch-pairs is given without --patch; expected both");
  }
  if (IsGiven(app, "--json") && IsGiven(app, "--directions")) {
    FailUsage(
        "--json cannot be used with --directions, which always writes JSON to stdout; expected "
        "one of them");
  }
}

void RefuseMissing(const CLI::App& app) {
  std::vector<std::string> missing;
  for (const char* const name : {"MOVING", "FIXED"}) {
    if (!IsGiven(app, name)) missing.push_back(name);
  }
  if (DirectionOptions(app).empty()) missing.push_back("--direction");
  RefuseMissingArguments(app, missing, "MOVING FIXED... --direction X,Y,Z");
}

void RefuseMisusedStdin(const SweepOptions& options) {
  std::vector<std::string> inputs = options.fixedFiles;
  inputs.insert(inputs.end(), {options.movingFile, options.poseFile, options.directionsFile});
  if (std::count(inputs.begin(), inputs.end(), "-") > 1) {
    FailUsage(
        "more than one of MOVING, FIXED, --directions and --pose is -; expected standard input "
        "once "
        "at most");
  }
  if (options.format != MeshFormat::Unknown && !options.ReadsMeshFromStdin()) {
    FailUsage("--format needs a mesh on standard input; expected - as MOVING or FIXED");
  }
}

unsigned ThreadsOfMachine() {
  return std::clamp(std::thread::hardware_concurrency(), 1u, kMostThreads);
}

} // namespace

std::string ParseSweepOptions(int argc, const char* const* argv, SweepOptions& options) {
  CLI::App app(kDescription, "gsl-sweep");
  Declare(app, options);
  // A direction such as -z looks like an option.
  const auto meant = [](const std::string& argument) {
    return ParseDirection(argument).has_value() ? "--direction " + argument : std::string();
  };
  std::string text = ParseArguments(app, argc, argv, meant);
  if (!text.empty()) return text;
  options.threads = ThreadsOfMachine();
  TakeValues(app, options);
  RefuseUnexpectedArguments(app);
  RefuseConflicts(app);
  RefuseMisusedStdin(options);
  RefuseMissing(app);
  return {};
}

} // namespace gsl_tools
