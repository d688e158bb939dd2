#ifndef GSL_TOOLS_MODEL_OPTIONS_H
#define GSL_TOOLS_MODEL_OPTIONS_H

#include "support/UsageError.h"

#include <string>

/// The command line of gsl-model.
namespace gsl_tools {

enum class ModelCommand { List, Show, Check, Convert, Diff };

struct ModelOptions {
  std::string file; ///< as typed; "-" is standard input
  ModelCommand command = ModelCommand::List;
  std::string root;     ///< of Show: a name or a number
  std::string other;    ///< of Diff: a file, of which "-" is standard input
  std::string output;   ///< of Convert
  std::string jsonFile; ///< empty when not requested; "-" is stdout
  bool quiet = false, force = false;

  bool JsonToStdout() const { return jsonFile == "-"; }
};

/// Reads the command line. Returns the text that is printed in place of everything else, which is
/// the help or the version with a newline at its end; or returns an empty text.
///
/// Errors     UsageError. An unknown option is reported before a wrong value, a wrong value before
///            an unexpected argument, and a missing argument comes last.
std::string ParseModelOptions(int argc, const char* const* argv, ModelOptions& options);

} // namespace gsl_tools

#endif
