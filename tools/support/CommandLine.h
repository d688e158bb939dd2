#ifndef GSL_TOOLS_COMMAND_LINE_H
#define GSL_TOOLS_COMMAND_LINE_H

#include "support/UsageError.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <optional>
#include <string>
#include <vector>

/// What the command lines of the programs share. Every error is a UsageError.
namespace gsl_tools {

[[noreturn]] void FailUsage(const std::string& message);

/// "...  (see gsl-sweep --help)".
[[noreturn]] void FailWithHelp(const CLI::App& app, const std::string& message);

/// "--max-distance must be at least 0 (got -3)"; `expected` follows "must".
[[noreturn]] void FailValue(const std::string& name, const std::string& expected,
                            const std::string& value);

/// Returns the argument as a person would type it in a shell.
std::string AsTyped(const std::string& argument);

/// Gives a program its help, its version and its manners. `usage` follows the name of the program.
void DeclareProgram(CLI::App& app, const std::string& usage, const std::string& footer);

/// Returns what a person meant who typed an option that does not exist; empty for nothing.
using MeantBy = std::function<std::string(const std::string&)>;

/// Reads the arguments. Returns the text that is printed in place of everything else, which is the
/// help or the version with a newline at its end; or returns an empty text. Unknown options are
/// refused; arguments without a place are not, because wrong values are reported before them.
std::string ParseArguments(CLI::App& app, int argc, const char* const* argv, const MeantBy& meant);

/// Refuses arguments that belong to no option and have no place.
void RefuseUnexpectedArguments(const CLI::App& app);

/// Refuses a command line that lacks arguments. `expected` is the whole command line.
void RefuseMissingArguments(const CLI::App& app, const std::vector<std::string>& missing,
                            const std::string& expected);

bool IsGiven(const CLI::App& app, const std::string& name);

/// Returns the value of an option or an argument, if it is given; refuses a second value.
std::optional<std::string> ValueOf(const CLI::App& app, const std::string& name);

/// Refuses an empty name, and a name that begins with a dash: it is usually an option whose
/// preceding value is missing.
std::string FileNameOf(const std::string& name, const std::string& value, const char* expected);

} // namespace gsl_tools

#endif
