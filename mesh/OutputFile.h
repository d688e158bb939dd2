#ifndef GSL_MESH_OUTPUT_FILE_H
#define GSL_MESH_OUTPUT_FILE_H

#include "Printable.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace gsl_sweep {

/// An output that cannot be written. what() is one line that names the file.
class OutputError : public std::runtime_error {
public:
  explicit OutputError(const std::string& message) : std::runtime_error(Printable(message)) {}
};

/// A file that appears under its name whole or not at all.
///
/// Written beside its place under a temporary name and renamed by Commit; without Commit nothing
/// is left. A symbolic link stays and its target is replaced. Not flushed to the disk.
/// Existing   kept, with OutputError, unless `force`; also one that appears before Commit. With
///            `force` its permissions pass to the new one. Directories, devices and pipes are
///            never replaced.
/// Errors     OutputError; the temporary file is then removed by the destructor.
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
  int m_slot = -1; ///< in the table that the signal handler sees
};

/// Writes a whole text, such as a report, by an OutputFile.
void WriteTextFile(const std::string& path, std::string_view text, bool force);

/// Throws the OutputError with which an OutputFile would begin, and writes nothing. For programs
/// that want to know before a long computation.
void CheckOutputPath(const std::string& path, bool force);

/// Removes the temporary files that this process is writing. Safe in a signal handler; afterwards
/// the process must end, for their OutputFiles know nothing of it.
void RemoveTemporaryFiles() noexcept;

/// Lets SIGINT, SIGTERM, SIGHUP and SIGQUIT remove the temporary files before they end the process
/// as they would have done. A signal that is ignored stays ignored.
void RemoveTemporaryFilesOnInterrupt();

} // namespace gsl_sweep

#endif
