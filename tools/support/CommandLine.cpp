#include "support/CommandLine.h"

#include "support/HelpFormatter.h"
#include "support/NearName.h"

#include <algorithm>
#include <memory>
#include <string_view>

namespace gsl_tools {

namespace {

std::vector<std::string> LongNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames())
      names.push_back("--" + name);
  }
  return names;
}

[[noreturn]] void FailUnknown(const CLI::App& app, const std::string& name,
                              const std::string& meant) {
  const std::string unknown = "unknown option " + AsTyped(name);
  if (!meant.empty()) FailUsage(unknown + "; did you mean " + meant + "?");
  FailWithHelp(app, unknown);
}

/// Refuses what the parser would misunderstand: "--json=" takes the next argument as its value, and
/// "-direction" is "-d" with the value "irection".
void RefuseMalformedOption(const CLI::App& app, const std::string& argument) {
  const std::size_t equals = argument.find('=');
  const std::string name = argument.substr(0, equals);
  const std::vector<std::string> names = LongNames(app);
  const bool hasOneDash = argument.size() > 1 && argument[0] == '-' && argument[1] != '-';
  if (hasOneDash && std::find(names.begin(), names.end(), "-" + name) != names.end()) {
    FailUnknown(app, name, "-" + name);
  }
  const bool isKnown = std::find(names.begin(), names.end(), name) != names.end();
  if (!isKnown || equals == std::string::npos) return;
  const bool isFlag = app.get_option(name)->get_items_expected_max() == 0;
  if (isFlag) FailUsage(name + " takes no value (got " + AsTyped(argument) + ")");
  if (equals + 1 == argument.size()) FailWithHelp(app, name + " must be followed by a value");
}

/// Returns the arguments that belong to no option and have no place, as typed.
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
void RefuseUnknownOptions(const CLI::App& app, const char* const* begin, const char* const* end,
                          const MeantBy& meant) {
  for (const std::string& argument : LeftOver(app)) {
    const bool isBeforeEnd = std::find(begin, end, std::string_view(argument)) != end;
    if (!LooksLikeOption(argument) || !isBeforeEnd) continue;
    const std::string name = argument.substr(0, argument.find('='));
    const std::string own = meant ? meant(argument) : std::string();
    FailUnknown(app, name, own.empty() ? NearName(name, LongNames(app)) : own);
  }
}

} // namespace

void FailUsage(const std::string& message) {
  throw UsageError(message);
}

void FailWithHelp(const CLI::App& app, const std::string& message) {
  FailUsage(message + " (see " + app.get_name() + " --help)");
}

void FailValue(const std::string& name, const std::string& expected, const std::string& value) {
  const std::string got = value.empty() ? "an empty value" : value;
  FailUsage(name + " must " + expected + " (got " + got + ")");
}

std::string AsTyped(const std::string& argument) {
  const bool isPlain = !argument.empty() && argument.find_first_of(" \t'\"") == std::string::npos;
  return isPlain ? argument : "'" + argument + "'";
}

void DeclareProgram(CLI::App& app, const std::string& usage, const std::string& footer) {
  app.formatter(std::make_shared<HelpFormatter>(usage));
  app.get_formatter()->label("Positionals", "Arguments");
  app.set_help_flag("-h,--help", "Prints this help and exits");
  app.set_version_flag("--version", app.get_name() + " " + GSL_VERSION,
                       "Prints the version and exits");
  app.footer(footer);
  // The caller reports unexpected and missing arguments, in its own order.
  app.allow_extras();
}

std::string ParseArguments(CLI::App& app, int argc, const char* const* argv, const MeantBy& meant) {
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
    FailWithHelp(app, AsTyped(argv[argc - 1]) + " must be followed by a value");
  } catch (const CLI::ParseError& error) {
    FailWithHelp(app, error.what());
  }
  RefuseUnknownOptions(app, begin, end, meant);
  return {};
}

void RefuseUnexpectedArguments(const CLI::App& app) {
  const std::vector<std::string> arguments = LeftOver(app);
  if (arguments.empty()) return;
  std::string list;
  for (const std::string& argument : arguments)
    list += " " + AsTyped(argument);
  FailWithHelp(app, std::string("unexpected ") +
                        (arguments.size() == 1 ? "argument" : "arguments") + list);
}

void RefuseMissingArguments(const CLI::App& app, const std::vector<std::string>& missing,
                            const std::string& expected) {
  if (missing.empty()) return;
  std::string list = missing[0];
  for (std::size_t k = 1; k < missing.size(); ++k)
    list += (k + 1 == missing.size() ? " and " : ", ") + missing[k];
  FailWithHelp(app, list + (missing.size() == 1 ? " is" : " are") + " missing; expected " +
                        app.get_name() + " " + expected);
}

bool IsGiven(const CLI::App& app, const std::string& name) {
  return app.get_option(name)->count() > 0;
}

std::optional<std::string> ValueOf(const CLI::App& app, const std::string& name) {
  const std::vector<std::string> values = app.get_option(name)->results();
  if (values.empty()) return std::nullopt;
  if (values.size() > 1) {
    FailUsage(name + " was given " + std::to_string(values.size()) + " times; expected once");
  }
  return values[0];
}

std::string FileNameOf(const std::string& name, const std::string& value, const char* expected) {
  if (value.empty()) FailValue(name, expected, value);
  if (value != "-" && value[0] == '-') {
    FailValue(name, expected, value + "; a file of that name is ./" + value);
  }
  return value;
}

} // namespace gsl_tools
