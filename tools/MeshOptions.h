#ifndef GSL_TOOLS_MESH_OPTIONS_H
#define GSL_TOOLS_MESH_OPTIONS_H

#include "MeshFormat.h"
#include "support/UsageError.h"

#include <string>
#include <vector>

/// The command line of gsl-mesh.
namespace gsl_tools {

enum class MeshCommand { Check, Convert, Move };

struct MeshOptions {
  MeshCommand command = MeshCommand::Check;
  std::vector<std::string> files; ///< as typed; "-" is standard input; of Convert and Move one
  std::string output;             ///< of Convert and Move
  std::string matrixFile;         ///< of Move; "-" is standard input
  std::string jsonFile;           ///< of Check; empty when not requested; "-" is stdout
  gsl_mesh::MeshFormat format = gsl_mesh::MeshFormat::Unknown; ///< of standard input
  bool quiet = false, force = false;

  bool JsonToStdout() const { return jsonFile == "-"; }
};

/// Reads the command line. Returns the text that is printed in place of everything else, which is
/// the help or the version with a newline at its end; or returns an empty text.
///
/// Errors     UsageError. An unknown option is reported before a wrong value, a wrong value before
///            an unexpected argument, and a missing argument comes last.
std::string ParseMeshOptions(int argc, const char* const* argv, MeshOptions& options);

} // namespace gsl_tools

#endif
