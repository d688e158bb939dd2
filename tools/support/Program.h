#ifndef GSL_TOOLS_PROGRAM_H
#define GSL_TOOLS_PROGRAM_H

#include <functional>
#include <string>
#include <string_view>

/// What the programs share: what they print, and how they end.
namespace gsl_tools {

/// The exit status of a program that does not end with an answer.
enum FailureStatus { kUsage = 2, kBadInput = 3, kFailure = 4 };

/// Writes to stdout and waits where stdout is a pipe that is full. Throws OutputError.
void WriteStdout(std::string_view text);

/// Writes "gsl-sweep: ..." to stderr, in one line.
void PrintLine(const std::string& program, const std::string& line);

/// Returns what `work` returns. An exception becomes one line on stderr and a FailureStatus:
/// UsageError kUsage, MeshError and InputError kBadInput, and any other exception kFailure.
int Guarded(const std::string& program, const std::function<int()>& work);

} // namespace gsl_tools

#endif
