#include "OutputFile.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <random>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace gsl_mesh {

namespace {

constexpr std::size_t kLongestName = 255; ///< of one component of a path

[[noreturn]] void FailOutput(const std::string& name, const std::string& message) {
  throw OutputError(name + ": " + message);
}

std::string Reason(int error) {
  return std::strerror(error);
}

/// Returns the path with its symbolic links resolved.
std::string Resolved(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr),
                                                         &std::free);
  if (real != nullptr) return real.get();
  // The path itself would replace a link.
  if (errno == ENOMEM) throw std::bad_alloc();
  return path;
}

/// True when the file exists and may be replaced.
bool CheckExisting(const std::string& name, bool force, struct stat& status) {
  if (stat(name.c_str(), &status) != 0) {
    if (errno == ENOENT) {
      // stat fails for a link without a target; renaming over it would replace the link.
      if (lstat(name.c_str(), &status) == 0)
        FailOutput(name, "is a link whose target does not exist");
      return false;
    }
    FailOutput(name, "cannot be written: " + Reason(errno));
  }
  if (!S_ISREG(status.st_mode)) {
    FailOutput(name, "exists, is not a regular file, and is kept");
  }
  if (!force) FailOutput(name, "already exists and is kept; --force replaces it");
  return true;
}

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "" : path.substr(0, slash + 1);
}

std::string RandomLetters() {
  static std::atomic<unsigned> serial{0};
  std::random_device random;
  char text[32];
  std::snprintf(text, sizeof text, "%ld.%u.%08x", static_cast<long>(getpid()), serial++, random());
  return text;
}

std::string TemporaryName(const std::string& path) {
  const std::string folder = FolderOf(path);
  const std::string suffix = "." + RandomLetters() + ".tmp";
  const std::string base = path.substr(folder.size());
  return folder + "." + base.substr(0, kLongestName - 1 - suffix.size()) + suffix;
}

} // namespace

OutputFile::OutputFile(const std::string& path, bool force)
    : m_name(path), m_path(Resolved(path)), m_force(force) {
  if (path.empty()) FailOutput("output", "the file name is empty");
  struct stat old {};
  const bool replaces = CheckExisting(path, force, old);
  CreateTemporary();
  // The result is kept even if its permissions cannot be set.
  if (replaces) static_cast<void>(fchmod(m_file, old.st_mode & 07777));
}

OutputFile::~OutputFile() {
  if (m_file >= 0) close(m_file);
  DropTemporary();
}

void OutputFile::CreateTemporary() {
  constexpr int kAttempts = 100;
  for (int k = 0; k < kAttempts; ++k) {
    m_temporary = TemporaryName(m_path);
    m_listed.emplace(m_temporary);
    m_file = open(m_temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (m_file >= 0) return;
    const int error = errno;
    m_temporary.clear();
    m_listed.reset();
    if (error != EEXIST) Fail("cannot be written: " + Reason(error));
  }
  Fail("cannot be written: no temporary name is free in its folder");
}

void OutputFile::Write(const void* data, std::size_t size) {
  const char* next = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t written = write(m_file, next, size);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) Fail("cannot be written: " + Reason(errno));
    next += written;
    size -= static_cast<std::size_t>(written);
  }
}

void OutputFile::Commit() {
  Close();
  MoveIntoPlace();
  m_temporary.clear();
  m_listed.reset();
}

/// Some file systems report a full disk only here.
void OutputFile::Close() {
  const int file = m_file;
  m_file = -1;
  if (close(file) != 0 && errno != EINTR) Fail("cannot be written: " + Reason(errno));
}

void OutputFile::MoveIntoPlace() {
  if (m_force) {
    if (rename(m_temporary.c_str(), m_path.c_str()) != 0) {
      Fail("cannot be written: " + Reason(errno));
    }
    return;
  }
  const int folder = AT_FDCWD;
  if (renameat2(folder, m_temporary.c_str(), folder, m_path.c_str(), RENAME_NOREPLACE) == 0) {
    return;
  }
  // Some file systems lack that call; a hard link cannot take a name that is in use either.
  const bool unknown = errno == EINVAL || errno == ENOSYS;
  if (unknown && link(m_temporary.c_str(), m_path.c_str()) == 0) {
    unlink(m_temporary.c_str());
    return;
  }
  if (errno == EEXIST) Fail("was created by another process meanwhile and is kept");
  Fail("cannot be written: " + Reason(errno));
}

void OutputFile::DropTemporary() noexcept {
  if (!m_temporary.empty()) unlink(m_temporary.c_str());
  m_listed.reset();
}

void OutputFile::Fail(const std::string& message) const {
  FailOutput(m_name, message);
}

void WriteTextFile(const std::string& path, std::string_view text, bool force) {
  OutputFile file(path, force);
  file.Write(text.data(), text.size());
  file.Commit();
}

void CheckOutputPath(const std::string& path, bool force) {
  const OutputFile file(path, force);
}

} // namespace gsl_mesh
