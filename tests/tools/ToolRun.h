#ifndef GSL_TESTS_TOOL_RUN_H
#define GSL_TESTS_TOOL_RUN_H

#include "MeshWriteStl.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

/// Running gsl-sweep as a person would, through a shell.
namespace tool_run {

struct Outcome {
  int status = -1; ///< exit status; 128 + signal when a signal ended it
  std::string out, err;
};

inline std::string ContentsOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// A folder of its own, removed at the end.
class Folder {
public:
  Folder() {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "gsl_tools_test_XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    m_path = pattern;
  }
  ~Folder() { std::filesystem::remove_all(m_path); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  std::string File(const std::string& name) const { return (m_path / name).string(); }

  std::string Write(const std::string& name, const std::string& contents) const {
    std::ofstream(m_path / name, std::ios::binary) << contents;
    return File(name);
  }

  std::string Write(const std::string& name, const gsl_sweep::Mesh& mesh) const {
    gsl_sweep::WriteStl(File(name), mesh, true);
    return File(name);
  }

  /// Names of all files, hidden ones too, in order.
  std::vector<std::string> List() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(m_path)) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

private:
  std::filesystem::path m_path;
};

/// Runs a shell command in which $SWEEP is the program.
inline Outcome Shell(const std::string& command) {
  const Folder folder;
  const std::string line = "SWEEP='" GSL_SWEEP_PROGRAM "'; { " + command + "; } >'" +
                           folder.File("out") + "' 2>'" + folder.File("err") + "' </dev/null";
  Outcome outcome;
  const int status = std::system(line.c_str());
  outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  outcome.out = ContentsOf(folder.File("out"));
  outcome.err = ContentsOf(folder.File("err"));
  return outcome;
}

inline Outcome Sweep(const std::string& arguments) {
  return Shell("$SWEEP " + arguments);
}

inline std::size_t LineCount(const std::string& text) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

inline std::string FirstLine(const std::string& text) {
  return text.substr(0, text.find('\n'));
}

} // namespace tool_run

#endif
