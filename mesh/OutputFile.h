#ifndef GSL_MESH_OUTPUT_FILE_H
#define GSL_MESH_OUTPUT_FILE_H

#include "Printable.h"
#include "TemporaryFiles.h"

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace gsl_mesh {

/// An output cannot be written. what() is one line that names the file.
class OutputError : public std::runtime_error {
public:
  explicit OutputError(const std::string& message) : std::runtime_error(Printable(message)) {}
};

/// A file that appears under its name either whole or not at all.
/// It is written under a temporary name in the same folder, and Commit renames it; without Commit
/// no file is left. A symbolic link stays and its target is replaced. The file is not flushed to
/// the disk.
///
/// Existing   an existing file is kept, with OutputError, unless `force` is set; so is a file that
///            appears before Commit. With `force` the new file takes the permissions of the old
///            file. Directories, devices and pipes are never replaced.
/// Errors     OutputError and std::bad_alloc; the temporary file is then removed by the destructor.
class OutputFile {
public:
  OutputFile(const std::string& path, bool force);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  void Write(const void* data, std::size_t size);
  void Commit();

private:
  void CreateTemporary();
  void Close();
  void MoveIntoPlace();
  void DropTemporary() noexcept;
  [[noreturn]] void Fail(const std::string& message) const;

  std::string m_name;      ///< as it was given, for messages
  std::string m_path;      ///< with symbolic links resolved
  std::string m_temporary; ///< empty once it is gone
  bool m_force;
  int m_file = -1;
  std::optional<TemporaryFile> m_listed;
};

/// Writes a whole text, such as a report, through an OutputFile.
void WriteTextFile(const std::string& path, std::string_view text, bool force);

/// Throws the OutputError that the constructor of an OutputFile would throw, and writes nothing.
/// Programs call it before a long computation.
void CheckOutputPath(const std::string& path, bool force);

} // namespace gsl_mesh

#endif
