#ifndef GSL_TESTS_TOOL_RUN_H
#define GSL_TESTS_TOOL_RUN_H

#include "JsonDocuments.h"
#include "MeshWrite.h"
#include "TemporaryFolder.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <string>

#include <sys/wait.h>

/// Runs the programs as a person does, through a shell.
namespace tool_run {

struct Outcome {
  int status = -1; ///< exit status; 128 + signal when a signal ended it
  std::string out, err;
};

class Folder : public TemporaryFolder {
public:
  using TemporaryFolder::Write;
  std::string Write(const std::string& name, const gsl_mesh::Mesh& mesh) const {
    gsl_mesh::WriteMesh(Path(name), mesh, true);
    return Path(name);
  }
};

/// Has the JSON documents of an output validated: one document, or one in each line.
inline void KeepJson(const std::string& out) {
  // The documents of gsl-mesh and gsl-model have version 1, and those of gsl-sweep version 2.
  if (out.find("{\n  \"schema_version\": 1,") == 0) {
    const bool isOfMeshes = out.find("\n  \"meshes\": [") != std::string::npos;
    json_documents::Keep(out,
                         isOfMeshes ? json_documents::Schema::Mesh : json_documents::Schema::Model);
    return;
  }
  if (out.substr(0, 8) != "{\"line\":") {
    if (out.substr(0, 1) == "{") json_documents::Keep(out);
    return;
  }
  std::istringstream lines(out);
  for (std::string line; std::getline(lines, line);)
    json_documents::Keep(line);
}

/// Runs a shell command in which $SWEEP, $MESH and $MODEL are the programs. JSON on its stdout is
/// validated.
inline Outcome Shell(const std::string& command) {
  const Folder folder;
  const std::string line = "SWEEP='" GSL_SWEEP_PROGRAM "'; MESH='" GSL_MESH_PROGRAM
                           "'; MODEL='" GSL_MODEL_PROGRAM "'; { " +
                           command + "; } >'" + folder.Path("out") + "' 2>'" + folder.Path("err") +
                           "' </dev/null";
  Outcome outcome;
  const int status = std::system(line.c_str());
  outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  outcome.out = BytesOf(folder.Path("out"));
  outcome.err = BytesOf(folder.Path("err"));
  KeepJson(outcome.out);
  return outcome;
}

inline Outcome Sweep(const std::string& arguments) {
  return Shell("$SWEEP " + arguments);
}

inline Outcome MeshTool(const std::string& arguments) {
  return Shell("$MESH " + arguments);
}

inline Outcome Model(const std::string& arguments) {
  return Shell("$MODEL " + arguments);
}

inline std::size_t LineCount(const std::string& text) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

inline std::string FirstLine(const std::string& text) {
  return text.substr(0, text.find('\n'));
}

} // namespace tool_run

#endif
