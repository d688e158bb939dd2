// Opens any bytes as the database of a model and reads it whole. The result is roots whose
// checksums hold, or one line of error that names the file.

#include "FuzzInput.h"
#include "gsl_Model.h"
#include "gsl_RecordError.h"

#include <chrono>
#include <cstdio>
#include <string>
#include <string_view>

#include <unistd.h>

namespace {

using gsl_model::Access;
using gsl_model::Model;

/// A file in memory where there is one, which goes with the program.
class InputFile {
public:
  InputFile() : m_path(NameIn("/dev/shm")) {
    if (std::FILE* const file = std::fopen(m_path.c_str(), "wb")) {
      std::fclose(file);
    } else {
      m_path = NameIn("/tmp");
    }
  }
  ~InputFile() {
    for (const char* const end : {"", "-journal", "-wal", "-shm"})
      std::remove((m_path + end).c_str());
  }
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  const std::string& Path() const { return m_path; }

  void Write(const std::uint8_t* bytes, std::size_t count) const {
    std::FILE* const file = std::fopen(m_path.c_str(), "wb");
    Require(file != nullptr && std::fwrite(bytes, 1, count, file) == count);
    Require(std::fclose(file) == 0);
  }

private:
  static std::string NameIn(const std::string& folder) {
    return folder + "/gsl-fuzz-model-" + std::to_string(getpid());
  }

  std::string m_path;
};

void ReadAll(const std::string& path) {
  const Model model(path, Access::Read, std::chrono::milliseconds(0));
  for (const gsl_model::RootEntry& root : model.Roots()) {
    if (!root.name.empty()) Require(model.Has(root.name));
  }
  Require(model.ReadAll() != nullptr);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
  static const InputFile file;
  file.Write(bytes, count);
  try {
    ReadAll(file.Path());
  } catch (const gsl_RecordError& error) {
    const std::string_view message = error.what();
    Require(message.substr(0, file.Path().size()) == file.Path());
    Require(message.find('\n') == message.npos);
  }
  return 0;
}
