#include "SweepOptions.h"

#include "MeshWrite.h"
#include "support/HelpFormatter.h"
#include "support/NearName.h"
#include "support/VectorText.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <memory>
#include <optional>
#include <string_view>
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
                            "  0   contact, including contact from the start; of many directions, "
                            "along any\n"
                            "  1   no contact; of many directions, along none\n"
                            "  2   wrong usage, or a line of --directions is not a direction\n"
                            "  3   an input cannot be read or was rejected\n"
                            "  4   another failure\n"
                            "\n"
                            "Examples:\n"
                            "  $ gsl-sweep bolt.stl bracket.stl --direction -z\n"
                            "  $ gsl-sweep bolt.stl bracket.stl -d 0,0,-1 --json -\n"
                            "  $ gsl-sweep bolt.stl bracket.stl --sphere 1000";

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
      {"--pose", "FILE", nullptr,
       "Places MOVING by the matrix in this file first: 12 or 16 numbers, row by row; - for stdin"},
      {"--offset", "X,Y,Z", nullptr, "Moves MOVING by this vector, after --pose"},
      {"--one-sided", nullptr, &SweepOptions::oneSided,
       "Leaves out triangles of MOVING that face against the direction and triangles of FIXED that "
       "face along it"},
      {"--leaving", nullptr, &SweepOptions::leaving,
       "Leaves out pairs of triangles that part at the start, so that MOVING may leave what it "
       "touches"},
      {"--last", nullptr, &SweepOptions::last,
       "Reports the last contact, where the bodies part, in place of the first"},
      {"--patch", nullptr, &SweepOptions::patch,
       "Reports all pairs of triangles that touch at the contact: their number and the box around "
       "them, and each in the JSON"},
      {"--patch-pairs", "N", nullptr,
       "Lists at most N pairs in the JSON of --patch, 1 to " + std::to_string(kMostPatchPairs) +
           "; by default 1000"},
      {"--max-distance", "L", nullptr, "Reports contacts up to and including this travel"},
      {"--json", "FILE", nullptr,
       "Writes the result as JSON; - writes it to stdout in place of the text"},
      {"--output", "FILE", nullptr,
       "Writes MOVING at its contact, in the format of the extension: " + MeshFormatNames(".")},
      {"--format", "NAME", nullptr,
       "Format of a mesh on stdin: " + MeshFormatNames("") + "; only obj requires it"},
      {"--threads", "N", nullptr, "Number of threads, 1 to 1024; the result does not depend on it"},
      {"--progress", "STYLE", nullptr,
       "Shows progress on stderr if stderr is a terminal: auto, plain or never"},
      {"--quiet", nullptr, &SweepOptions::quiet,
       "Prints only errors, and on stdout only the JSON of --json -"},
      {"--verbose", nullptr, &SweepOptions::verbose,
       "Shows the time and the memory of each stage on stderr"},
      {"--force", nullptr, &SweepOptions::force, "Replaces existing output files"},
  };
}

void Declare(CLI::App& app, SweepOptions& options) {
  app.formatter(std::make_shared<HelpFormatter>(kUsage));
  app.get_formatter()->label("Positionals", "Arguments");
  app.set_help_flag("-h,--help", "Prints this help and exits");
  app.set_version_flag("--version", std::string("gsl-sweep ") + GSL_VERSION,
                       "Prints the version and exits");
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
  app.footer(kFooter);
  // The code below reports unexpected and missing arguments, in its own order.
  app.allow_extras();
}

[[noreturn]] void Fail(const std::string& message) {
  throw UsageError(message);
}

[[noreturn]] void FailWithHelp(const std::string& message) {
  Fail(message + " (see gsl-sweep --help)");
}

/// "--max-distance must be at least 0 (got -3)"; `expected` follows "must".
[[noreturn]] void FailValue(const std::string& name, const std::string& expected,
                            const std::string& value) {
  const std::string got = value.empty() ? "an empty value" : value;
  Fail(name + " must " + expected + " (got " + got + ")");
}

/// Returns the argument as a person would type it in a shell.
std::string AsTyped(const std::string& argument) {
  const bool isPlain = !argument.empty() && argument.find_first_of(" \t'\"") == std::string::npos;
  return isPlain ? argument : "'" + argument + "'";
}

std::vector<std::string> LongNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames())
      names.push_back("--" + name);
  }
  return names;
}

[[noreturn]] void FailUnknown(const std::string& name, const std::string& meant) {
  const std::string unknown = "unknown option " + AsTyped(name);
  if (!meant.empty()) Fail(unknown + "; did you mean " + meant + "?");
  FailWithHelp(unknown);
}

/// Refuses what the parser would misunderstand: "--json=" takes the next argument as its value, and
/// "-direction" is "-d" with the value "irection".
void RefuseMalformedOption(const CLI::App& app, const std::string& argument) {
  const std::size_t equals = argument.find('=');
  const std::string name = argument.substr(0, equals);
  const std::vector<std::string> names = LongNames(app);
  const bool hasOneDash = argument.size() > 1 && argument[0] == '-' && argument[1] != '-';
  if (hasOneDash && std::find(names.begin(), names.end(), "-" + name) != names.end()) {
    FailUnknown(name, "-" + name);
  }
  const bool isKnown = std::find(names.begin(), names.end(), name) != names.end();
  if (!isKnown || equals == std::string::npos) return;
  const bool isFlag = app.get_option(name)->get_items_expected_max() == 0;
  if (isFlag) Fail(name + " takes no value (got " + AsTyped(argument) + ")");
  if (equals + 1 == argument.size()) FailWithHelp(name + " must be followed by a value");
}

/// Returns the arguments that belong to no option and to no body, as typed.
std::vector<std::string> LeftOver(const CLI::App& app) {
  std::vector<std::string> arguments = app.remaining();
  const auto mark = std::find(arguments.begin(), arguments.end(), "--");
  if (mark != arguments.end()) arguments.erase(mark);
  return arguments;
}

bool LooksLikeOption(const std::string& argument) {
  if (argument.size() < 2 || argument[0] != '-') return false;
  const char c = argument[1];
  return c == '-' || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// Options end at `end`: at "--" or at the end of the arguments.
void RefuseUnknownOptions(const CLI::App& app, const char* const* begin, const char* const* end) {
  for (const std::string& argument : LeftOver(app)) {
    const bool isBeforeEnd = std::find(begin, end, std::string_view(argument)) != end;
    if (!LooksLikeOption(argument) || !isBeforeEnd) continue;
    const std::string name = argument.substr(0, argument.find('='));
    const bool isDirection = ParseDirection(argument).has_value();
    FailUnknown(name, isDirection ? "--direction " + name : NearName(name, LongNames(app)));
  }
}

void RefuseUnexpectedArguments(const CLI::App& app) {
  const std::vector<std::string> arguments = LeftOver(app);
  if (arguments.empty()) return;
  std::string list;
  for (const std::string& argument : arguments)
    list += " " + AsTyped(argument);
  FailWithHelp(std::string("unexpected ") + (arguments.size() == 1 ? "argument" : "arguments") +
               list);
}

/// Returns the value of an option or an argument, if it is given.
std::optional<std::string> ValueOf(const CLI::App& app, const std::string& name) {
  const std::vector<std::string> values = app.get_option(name)->results();
  if (values.empty()) return std::nullopt;
  if (values.size() > 1) {
    Fail(name + " was given " + std::to_string(values.size()) + " times; expected once");
  }
  // The parser reads -d=-z as the option -d with the value =-z.
  const bool isAssigned = name == "--direction" && values[0].substr(0, 1) == "=";
  return isAssigned ? values[0].substr(1) : values[0];
}

std::string MeshFileOf(const std::string& name, const std::string& value) {
  if (value.empty()) FailValue(name, "be a file name", value);
  return value;
}

/// A file name that begins with a dash is usually an option whose preceding value is missing.
std::string FileNameOf(const std::string& name, const std::string& value, const char* expected) {
  if (value.empty()) FailValue(name, expected, value);
  if (value != "-" && value[0] == '-') {
    FailValue(name, expected, value + "; a file of that name is ./" + value);
  }
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

double MaxDistanceOf(const std::string& value) {
  const auto limit = ParseNumber(value);
  if (!limit) FailValue("--max-distance", "be a finite number", value);
  if (*limit < 0.0) FailValue("--max-distance", "be at least 0", value);
  return *limit;
}

std::string OutputFileOf(const std::string& value) {
  if (gsl_mesh::MeshFormatToWrite(value) == MeshFormat::Unknown) {
    FailValue("--output", "end in " + MeshFormatNames("."), value);
  }
  return FileNameOf("--output", value, "be a file name");
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
  if (const auto value = ValueOf(app, "--direction")) options.direction = DirectionOf(*value);
  if (const auto value = ValueOf(app, "--directions")) {
    options.directionsFile = FileNameOf("--directions", *value, "be a file name or -");
  }
  if (const auto value = ValueOf(app, "--sphere")) {
    options.sphereCount = CountOf("--sphere", *value, kMostDirections);
  }
  if (const auto value = ValueOf(app, "--pose")) {
    options.poseFile = FileNameOf("--pose", *value, "be a file name or -");
  }
  if (const auto value = ValueOf(app, "--offset")) options.offset = OffsetOf(*value);
  if (const auto value = ValueOf(app, "--patch-pairs")) {
    options.patchPairs = CountOf("--patch-pairs", *value, kMostPatchPairs);
  }
  if (const auto value = ValueOf(app, "--max-distance")) {
    options.maxDistance = MaxDistanceOf(*value);
  }
  if (const auto value = ValueOf(app, "--json")) {
    options.jsonFile = FileNameOf("--json", *value, "be a file name or -");
  }
  if (const auto value = ValueOf(app, "--output")) options.outputFile = OutputFileOf(*value);
  if (const auto value = ValueOf(app, "--format")) options.format = FormatOf(*value);
  if (const auto value = ValueOf(app, "--threads")) {
    options.threads = CountOf("--threads", *value, kMostThreads);
  }
  if (const auto value = ValueOf(app, "--progress")) options.progress = ProgressOf(*value);
  if (const auto value = ValueOf(app, "MOVING")) options.movingFile = MeshFileOf("MOVING", *value);
  for (const std::string& value : app.get_option("FIXED")->results())
    options.fixedFiles.push_back(MeshFileOf("FIXED", value));
}

bool IsGiven(const CLI::App& app, const char* name) {
  return app.get_option(name)->count() > 0;
}

/// Returns those of the options that ask for directions that are given.
std::vector<std::string> DirectionOptions(const CLI::App& app) {
  std::vector<std::string> given;
  for (const char* const name : {"--direction", "--directions", "--sphere"}) {
    if (IsGiven(app, name)) given.push_back(name);
  }
  return given;
}

void RefuseConflicts(const CLI::App& app) {
  const std::vector<std::string> given = DirectionOptions(app);
  if (given.size() > 1) {
    Fail(given[0] + " and " + given[1] +
         " are both given; expected one of --direction, --directions and --sphere");
  }
  if (IsGiven(app, "--quiet") && IsGiven(app, "--verbose")) {
    Fail("--quiet and --verbose are both given; expected one of them at most");
  }
  for (const char* const name : {"--output", "--patch"}) {
    if (IsGiven(app, name) && !given.empty() && given[0] != "--direction") {
      Fail(name + (" cannot be used with " + given[0]) + "; expected --direction");
    }
  }
  if (IsGiven(app, "--patch") && IsGiven(app, "--last")) {
    Fail("--patch and --last are both given; expected one of them at most");
  }
  if (IsGiven(app, "--patch-pairs") && !IsGiven(app, "--patch")) {
    Fail("--patch-pairs is given without --patch; expected both");
  }
  if (IsGiven(app, "--json") && IsGiven(app, "--directions")) {
    Fail("--json cannot be used with --directions, which always writes JSON to stdout; expected "
         "one of them");
  }
}

void RefuseMissing(const CLI::App& app) {
  std::vector<std::string> missing;
  for (const char* const name : {"MOVING", "FIXED"}) {
    if (!IsGiven(app, name)) missing.push_back(name);
  }
  if (DirectionOptions(app).empty()) missing.push_back("--direction");
  if (missing.empty()) return;
  std::string list = missing[0];
  for (std::size_t k = 1; k < missing.size(); ++k)
    list += (k + 1 == missing.size() ? " and " : ", ") + missing[k];
  FailWithHelp(list + (missing.size() == 1 ? " is" : " are") +
               " missing; expected gsl-sweep MOVING FIXED... --direction X,Y,Z");
}

void RefuseMisusedStdin(const SweepOptions& options) {
  std::vector<std::string> inputs = options.fixedFiles;
  inputs.insert(inputs.end(), {options.movingFile, options.poseFile, options.directionsFile});
  if (std::count(inputs.begin(), inputs.end(), "-") > 1) {
    Fail("more than one of MOVING, FIXED, --directions and --pose is -; expected standard input "
         "once "
         "at most");
  }
  if (options.format != MeshFormat::Unknown && !options.ReadsMeshFromStdin()) {
    Fail("--format needs a mesh on standard input; expected - as MOVING or FIXED");
  }
}

unsigned ThreadsOfMachine() {
  return std::clamp(std::thread::hardware_concurrency(), 1u, kMostThreads);
}

} // namespace

std::string ParseSweepOptions(int argc, const char* const* argv, SweepOptions& options) {
  CLI::App app(kDescription, "gsl-sweep");
  Declare(app, options);
  const char* const* const begin = argv + std::min(argc, 1);
  const char* const* const end = std::find(begin, argv + argc, std::string_view("--"));
  std::for_each(begin, end, [&](const char* argument) { RefuseMalformedOption(app, argument); });
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return app.help();
  } catch (const CLI::CallForVersion& version) {
    return std::string(version.what()) + "\n";
  } catch (const CLI::ArgumentMismatch&) {
    // Only the last argument can be an option whose value is missing.
    FailWithHelp(AsTyped(argv[argc - 1]) + " must be followed by a value");
  } catch (const CLI::ParseError& error) {
    FailWithHelp(error.what());
  }
  RefuseUnknownOptions(app, begin, end);
  options.threads = ThreadsOfMachine();
  TakeValues(app, options);
  RefuseUnexpectedArguments(app);
  RefuseConflicts(app);
  RefuseMisusedStdin(options);
  RefuseMissing(app);
  return {};
}

} // namespace gsl_tools
