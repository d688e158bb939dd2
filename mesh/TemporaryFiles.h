#ifndef GSL_MESH_TEMPORARY_FILES_H
#define GSL_MESH_TEMPORARY_FILES_H

#include <csignal>
#include <string>

/// Files under temporary names, which must not stay behind when a signal ends the process.
namespace gsl_mesh {

/// Lists a file that a signal removes, from before the file exists until it has its name or is
/// gone. The list has 32 places, and paths of PATH_MAX bytes or more fit no file; beyond that the
/// file is not listed.
class TemporaryFile {
public:
  explicit TemporaryFile(const std::string& path) noexcept;
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

private:
  int m_place;
};

/// Removes the listed files of this process. It is safe in a signal handler. The process must end
/// afterwards, because the objects that write the files do not notice the removal.
void RemoveTemporaryFiles() noexcept;

/// Makes the signals that end a program remove its temporary files before they end it as usual:
/// SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE and SIGXCPU. A signal that is ignored stays ignored.
void RemoveTemporaryFilesOnSignals();

/// Lets those signals wait while it lives, for a step that leaves a file behind if it is cut short.
/// It holds for the calling thread.
class SignalsWait {
public:
  SignalsWait();
  ~SignalsWait();
  SignalsWait(const SignalsWait&) = delete;
  SignalsWait& operator=(const SignalsWait&) = delete;

private:
  sigset_t m_old = {};
};

} // namespace gsl_mesh

#endif
