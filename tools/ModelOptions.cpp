#include "ModelOptions.h"

#include "support/CommandLine.h"
#include "support/NearName.h"

#include <algorithm>
#include <vector>

namespace gsl_tools {

namespace {

const char* const kDescription =
    "Lists, shows, checks, converts and compares saved models. It reads records without the "
    "classes that wrote them, and keeps classes and fields that it does not know.";

const char* const kUsage = "FILE COMMAND [ARGUMENT] [OPTION...]";

const char* const kFooter =
    "Commands:\n"
    "  list         Lists the roots of FILE\n"
    "  show NAME    Shows a root, by its name or its number, and what it "
    "holds\n"
    "  check        Checks FILE, and that the library can restore its records\n"
    "  convert OUT  Writes the records of FILE to the file OUT, in the "
    "form that this\n"
    "               version writes\n"
    "  diff OTHER   Compares FILE with the file OTHER\n"
    "\n"
    "Exit status:\n"
    "  0   success; of diff, no difference\n"
    "  1   of diff, a difference\n"
    "  2   wrong usage, or no root has the name\n"
    "  3   an input cannot be read or was rejected\n"
    "  4   another failure\n"
    "\n"
    "Examples:\n"
    "  $ gsl-model part.gslr list\n"
    "  $ gsl-model part.gslr show axis --json -\n"
    "  $ gsl-model part.gslr diff other.gslr";

struct CommandRow {
  const char* name;
  ModelCommand command;
  const char* argument; ///< null for a command without an argument
  std::string ModelOptions::*field;
};

constexpr CommandRow kCommands[] = {
    {"list", ModelCommand::List, nullptr, nullptr},
    {"show", ModelCommand::Show, "NAME", &ModelOptions::root},
    {"check", ModelCommand::Check, nullptr, nullptr},
    {"convert", ModelCommand::Convert, "OUT", &ModelOptions::output},
    {"diff", ModelCommand::Diff, "OTHER", &ModelOptions::other},
};

void Declare(CLI::App& app, ModelOptions& options) {
  DeclareProgram(app, kUsage, kFooter);
  app.add_option("FILE")->description("File of saved records; - for stdin");
  app.add_option("COMMAND")->description("list, show, check, convert or diff");
  app.add_option("ARGUMENT")->description("What the command works with");
  app.add_option("--json")
      ->description("Writes the result of list or show as JSON; - writes it to stdout in place of "
                    "the text")
      ->type_name("FILE")
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
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
  FailWithHelp(app, unknown + "; expected list, show, check, convert or diff");
}

void TakeArgument(const CLI::App& app, const CommandRow& row, ModelOptions& options) {
  const auto value = ValueOf(app, "ARGUMENT");
  if (row.argument == nullptr) {
    if (value) FailWithHelp(app, "unexpected argument " + AsTyped(*value));
    return;
  }
  if (!value) return;
  options.*row.field = row.command == ModelCommand::Show
                           ? *value
                           : FileNameOf(row.argument, *value, "be a file name");
  if (value->empty()) FailValue(row.argument, "be a name or a number", *value);
}

void RefuseMisuse(const ModelOptions& options, const CommandRow* row) {
  const bool hasJson =
      options.command == ModelCommand::List || options.command == ModelCommand::Show;
  if (!options.jsonFile.empty() && row != nullptr && !hasJson) {
    FailUsage(std::string("--json cannot be used with ") + row->name + "; expected list or show");
  }
  if (options.file == "-" && options.other == "-") {
    FailUsage("FILE and OTHER are both -; expected standard input once at most");
  }
  if (options.output == "-") FailValue("OUT", "be a file name", "-");
}

std::string ExpectedUsage(const CommandRow* row) {
  if (row == nullptr) return kUsage;
  return std::string("FILE ") + row->name + (row->argument != nullptr ? " " : "") +
         (row->argument != nullptr ? row->argument : "");
}

} // namespace

std::string ParseModelOptions(int argc, const char* const* argv, ModelOptions& options) {
  CLI::App app(kDescription, "gsl-model");
  Declare(app, options);
  std::string text = ParseArguments(app, argc, argv, nullptr);
  if (!text.empty()) return text;
  const CommandRow* row = nullptr;
  if (const auto value = ValueOf(app, "--json")) {
    options.jsonFile = FileNameOf("--json", *value, "be a file name or -");
  }
  if (const auto value = ValueOf(app, "FILE")) {
    options.file = FileNameOf("FILE", *value, "be a file name or -");
  }
  if (const auto value = ValueOf(app, "COMMAND")) {
    row = &CommandOf(app, *value);
    options.command = row->command;
    TakeArgument(app, *row, options);
  }
  RefuseUnexpectedArguments(app);
  RefuseMisuse(options, row);
  std::vector<std::string> missing;
  if (!IsGiven(app, "FILE")) missing.push_back("FILE");
  if (row == nullptr) missing.push_back("COMMAND");
  if (row != nullptr && row->argument != nullptr && !IsGiven(app, "ARGUMENT")) {
    missing.push_back(row->argument);
  }
  RefuseMissingArguments(app, missing, ExpectedUsage(row));
  return {};
}

} // namespace gsl_tools
