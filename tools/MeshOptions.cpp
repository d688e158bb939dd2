#include "MeshOptions.h"

#include "MeshWrite.h"
#include "support/CommandLine.h"
#include "support/NearName.h"

#include <algorithm>

namespace gsl_tools {

namespace {

using gsl_mesh::MeshFormat;
using gsl_mesh::MeshFormatNames;

const char* const kDescription =
    "Checks mesh files for what makes them unfit as surfaces of bodies, converts them and moves "
    "them. Whether triangles have area, and whether they cross each other, is decided exactly.";

const char* const kUsage = "COMMAND FILE... [OPTION...]";

const char* const kFooter =
    "Commands:\n"
    "  check FILE...               Counts and measures each mesh, and lists what is\n"
    "                              wrong with it\n"
    "  convert FILE OUT            Writes the mesh in the format of OUT's extension\n"
    "  move FILE OUT --matrix M    Writes the mesh where a matrix puts it\n"
    "\n"
    "Exit status:\n"
    "  0   success; of check, nothing is wrong with any mesh\n"
    "  1   of check, something is wrong with a mesh\n"
    "  2   wrong usage\n"
    "  3   an input cannot be read or was rejected\n"
    "  4   another failure\n"
    "\n"
    "Examples:\n"
    "  $ gsl-mesh check bolt.stl nut.stl\n"
    "  $ gsl-mesh check bolt.stl --json -\n"
    "  $ gsl-mesh convert bolt.stl bolt.ply\n"
    "  $ gsl-mesh move bolt.stl placed.stl --matrix pose.txt";

struct CommandRow {
  const char* name;
  MeshCommand command;
  const char* arguments;
};

constexpr CommandRow kCommands[] = {
    {"check", MeshCommand::Check, "FILE..."},
    {"convert", MeshCommand::Convert, "FILE OUT"},
    {"move", MeshCommand::Move, "FILE OUT --matrix M"},
};

void Declare(CLI::App& app, MeshOptions& options) {
  DeclareProgram(app, kUsage, kFooter);
  app.add_option("COMMAND")->description("check, convert or move");
  app.add_option("FILE")
      ->description("Mesh files; - for stdin. Of convert and move, the second is written: " +
                    MeshFormatNames("."))
      ->expected(-1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  const auto add = [&app](const char* name, const char* value, const std::string& description) {
    app.add_option(name)
        ->description(description)
        ->type_name(value)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  };
  add("--matrix", "FILE",
      "Reads the matrix of move from this file: 12 or 16 numbers, row by row; - for stdin");
  add("--json", "FILE",
      "Writes the result of check as JSON; - writes it to stdout in place of the text");
  add("--format", "NAME", "Format of a mesh on stdin: " + MeshFormatNames(""));
  app.add_flag("--quiet", options.quiet, "Prints only errors, and what --json - asks for");
  app.add_flag("--force", options.force, "Replaces existing output files");
}

const CommandRow& CommandOf(const CLI::App& app, const std::string& value) {
  std::vector<std::string> names;
  for (const CommandRow& row : kCommands) {
    if (value == row.name) return row;
    names.push_back(row.name);
  }
  const std::string unknown = "unknown command " + AsTyped(value);
  const std::string meant = NearName(value, names);
  if (!meant.empty()) FailUsage(unknown + "; did you mean " + meant + "?");
  FailWithHelp(app, unknown + "; expected check, convert or move");
}

/// Takes the second file of convert and of move away from the files that are read.
void TakeOutput(MeshOptions& options) {
  if (options.command == MeshCommand::Check || options.files.size() < 2) return;
  options.output = FileNameOf("OUT", options.files[1], "be a file name");
  if (gsl_mesh::MeshFormatToWrite(options.output) == MeshFormat::Unknown) {
    FailValue("OUT", "end in " + MeshFormatNames("."), options.output);
  }
  if (options.files.size() > 2) FailUsage("unexpected argument " + AsTyped(options.files[2]));
  options.files.resize(1);
}

void ReadValues(const CLI::App& app, MeshOptions& options) {
  if (const auto value = ValueOf(app, "--matrix")) {
    options.matrixFile = FileNameOf("--matrix", *value, "be a file name or -");
  }
  if (const auto value = ValueOf(app, "--json")) {
    options.jsonFile = FileNameOf("--json", *value, "be a file name or -");
  }
  if (const auto value = ValueOf(app, "--format")) {
    options.format = gsl_mesh::MeshFormatNamed(*value);
    if (options.format == MeshFormat::Unknown) {
      FailValue("--format", "be " + MeshFormatNames(""), *value);
    }
  }
  for (const std::string& value : app.get_option("FILE")->results()) {
    if (value.empty()) FailValue("FILE", "be a file name", value);
    options.files.push_back(value);
  }
}

void RefuseMisuse(const MeshOptions& options, const CommandRow& row) {
  const std::string with = std::string(" cannot be used with ") + row.name;
  if (!options.jsonFile.empty() && row.command != MeshCommand::Check) {
    FailUsage("--json" + with + "; expected check");
  }
  if (!options.matrixFile.empty() && row.command != MeshCommand::Move) {
    FailUsage("--matrix" + with + "; expected move");
  }
  std::vector<std::string> inputs = options.files;
  inputs.push_back(options.matrixFile);
  const auto streams = std::count(inputs.begin(), inputs.end(), "-");
  if (streams > 1) {
    FailUsage("more than one of FILE and --matrix is -; expected standard input once at most");
  }
  const bool readsMesh = std::count(options.files.begin(), options.files.end(), "-") > 0;
  if (options.format != MeshFormat::Unknown && !readsMesh) {
    FailUsage("--format needs a mesh on standard input; expected - as FILE");
  }
}

void RefuseMissing(const CLI::App& app, const MeshOptions& options, const CommandRow* row) {
  std::vector<std::string> missing;
  if (row == nullptr) missing.push_back("COMMAND");
  if (options.files.empty()) missing.push_back("FILE");
  const bool writes = row != nullptr && row->command != MeshCommand::Check;
  if (writes && options.output.empty()) missing.push_back("OUT");
  const bool moves = row != nullptr && row->command == MeshCommand::Move;
  if (moves && options.matrixFile.empty()) missing.push_back("--matrix");
  const std::string expected =
      row == nullptr ? kUsage : row->name + (" " + std::string(row->arguments));
  RefuseMissingArguments(app, missing, expected);
}

} // namespace

std::string ParseMeshOptions(int argc, const char* const* argv, MeshOptions& options) {
  CLI::App app(kDescription, "gsl-mesh");
  Declare(app, options);
  std::string text = ParseArguments(app, argc, argv, nullptr);
  if (!text.empty()) return text;
  ReadValues(app, options);
  const CommandRow* row = nullptr;
  if (const auto value = ValueOf(app, "COMMAND")) {
    row = &CommandOf(app, *value);
    options.command = row->command;
    TakeOutput(options);
  }
  RefuseUnexpectedArguments(app);
  if (row != nullptr) RefuseMisuse(options, *row);
  RefuseMissing(app, options, row);
  return {};
}

} // namespace gsl_tools
