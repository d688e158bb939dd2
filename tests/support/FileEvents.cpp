#include "FileEvents.h"

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr int kFolder = -2;

FileEvents* active = nullptr;

template <class Function>
Function* Real(const char* name) {
  Function* function = nullptr;
  void* const symbol = dlsym(RTLD_NEXT, name);
  std::memcpy(&function, &symbol, sizeof function);
  return function;
}

} // namespace

FileEvents::FileEvents(const std::string& folder) : m_folder(folder) {
  if (!m_folder.empty() && m_folder.back() == '/') m_folder.pop_back();
  if (active != nullptr) std::abort();
  active = this;
}

FileEvents::~FileEvents() {
  active = nullptr;
}

FileEvents* FileEvents::Active() {
  return active;
}

void FileEvents::Mark(std::uint64_t state) {
  FileEvent event;
  event.at = state;
  Add(event);
}

void FileEvents::FailAt(long call, int error, bool isLasting) {
  m_calls = 0;
  m_failAt = call;
  m_error = error;
  m_isLasting = isLasting;
}

bool FileEvents::Fails() {
  const long call = m_calls++;
  const bool fails = m_failAt >= 0 && (call == m_failAt || (m_isLasting && call > m_failAt));
  if (fails && m_error == kKill) kill(getpid(), SIGKILL);
  if (fails) errno = m_error;
  return fails;
}

bool FileEvents::FolderFails() {
  if (Fails()) return true;
  if (m_folderError != 0) errno = m_folderError;
  return m_folderError != 0;
}

bool FileEvents::NameOf(const char* path, std::string& name) const {
  const std::size_t length = m_folder.size();
  if (std::strncmp(path, m_folder.c_str(), length) != 0 || path[length] != '/') return false;
  name = path + length + 1;
  return !name.empty();
}

int FileEvents::FileOf(int descriptor) const {
  const auto found = m_files.find(descriptor);
  return found != m_files.end() && found->second != kFolder ? found->second : -1;
}

bool FileEvents::IsOpenFolder(int descriptor) const {
  const auto found = m_files.find(descriptor);
  return found != m_files.end() && found->second == kFolder;
}

void FileEvents::Opened(int descriptor, const std::string& name, bool isNew, bool isCut) {
  if (isNew) Linked(m_fileCount++, name);
  const auto known = m_names.find(name);
  // The folder was not empty at the start.
  if (known == m_names.end()) std::abort();
  m_files[descriptor] = known->second;
  if (!isCut || isNew) return;
  FileEvent event;
  event.kind = FileEvent::Kind::Resize;
  event.file = known->second;
  Add(event);
}

void FileEvents::OpenedUnnamed(int descriptor) {
  m_files[descriptor] = m_fileCount++;
}

void FileEvents::OpenedFolder(int descriptor) {
  m_files[descriptor] = kFolder;
}

void FileEvents::Closed(int descriptor) {
  m_files.erase(descriptor);
}

void FileEvents::Linked(int file, const std::string& name) {
  m_names[name] = file;
  FileEvent event;
  event.kind = FileEvent::Kind::Name;
  event.file = file;
  event.name = name;
  Add(event);
}

void FileEvents::Renamed(const std::string& from, const std::string& to) {
  const auto known = m_names.find(from);
  if (known == m_names.end()) std::abort();
  FileEvent event;
  event.kind = FileEvent::Kind::Rename;
  event.file = known->second;
  event.name = from;
  event.to = to;
  m_names[to] = known->second;
  m_names.erase(from);
  Add(event);
}

void FileEvents::Unlinked(const std::string& name) {
  m_names.erase(name);
  FileEvent event;
  event.kind = FileEvent::Kind::Unname;
  event.name = name;
  Add(event);
}

namespace {

bool HasMode(int flags) {
  return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
}

int OpenAnyFile(const char* path, int flags, mode_t mode) {
  static auto* const real = Real<int(const char*, int, ...)>("open64");
  FileEvents* const events = FileEvents::Active();
  std::string name;
  const bool isUnnamed = (flags & O_TMPFILE) == O_TMPFILE;
  const bool isFolder = events != nullptr && events->IsFolder(path);
  const bool isFile = events != nullptr && events->NameOf(path, name);
  struct stat before = {};
  const bool isNew = isFile && (flags & O_CREAT) != 0 && stat(path, &before) != 0;
  if ((isNew || (isFolder && isUnnamed)) && events->Fails()) return -1;
  const int descriptor = real(path, flags, mode);
  if (descriptor < 0 || events == nullptr) return descriptor;
  if (isFolder && isUnnamed) {
    events->OpenedUnnamed(descriptor);
  } else if (isFolder) {
    events->OpenedFolder(descriptor);
  } else if (isFile) {
    events->Opened(descriptor, name, isNew, (flags & O_TRUNC) != 0);
  }
  return descriptor;
}

/// Passes a write on, and records as much of it as was written.
template <class Write>
ssize_t WriteAt(int descriptor, off_t at, const void* bytes, const Write& write) {
  FileEvents* const events = FileEvents::Active();
  const int file = events != nullptr ? events->FileOf(descriptor) : -1;
  if (file >= 0 && events->Fails()) return -1;
  const ssize_t written = write();
  if (file < 0 || written <= 0) return written;
  FileEvent event;
  event.kind = FileEvent::Kind::Write;
  event.file = file;
  event.at = static_cast<std::uint64_t>(at);
  event.bytes.assign(static_cast<const char*>(bytes), static_cast<std::size_t>(written));
  events->Add(std::move(event));
  return written;
}

int Resize(int descriptor, off_t size) {
  static auto* const real = Real<int(int, off_t)>("ftruncate64");
  FileEvents* const events = FileEvents::Active();
  const int file = events != nullptr ? events->FileOf(descriptor) : -1;
  if (file >= 0 && events->Fails()) return -1;
  const int status = real(descriptor, size);
  if (file < 0 || status != 0) return status;
  FileEvent event;
  event.kind = FileEvent::Kind::Resize;
  event.file = file;
  event.at = static_cast<std::uint64_t>(size);
  events->Add(std::move(event));
  return status;
}

int Synced(int descriptor) {
  FileEvents* const events = FileEvents::Active();
  if (events == nullptr) return 0;
  const int file = events->FileOf(descriptor);
  const bool isFolder = events->IsOpenFolder(descriptor);
  if (file < 0 && !isFolder) return 0;
  if (isFolder ? events->FolderFails() : events->Fails()) return -1;
  FileEvent event;
  event.kind = isFolder ? FileEvent::Kind::SyncFolder : FileEvent::Kind::Sync;
  event.file = file;
  events->Add(std::move(event));
  return 0;
}

} // namespace

#define REPLACED __attribute__((visibility("default")))

extern "C" {

REPLACED int open(const char* path, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const mode_t mode = HasMode(flags) ? va_arg(more, mode_t) : 0;
  va_end(more);
  return OpenAnyFile(path, flags, mode);
}

REPLACED int open64(const char* path, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const mode_t mode = HasMode(flags) ? va_arg(more, mode_t) : 0;
  va_end(more);
  return OpenAnyFile(path, flags, mode);
}

REPLACED int close(int descriptor) {
  static auto* const real = Real<int(int)>("close");
  if (FileEvents* const events = FileEvents::Active()) events->Closed(descriptor);
  return real(descriptor);
}

REPLACED ssize_t write(int descriptor, const void* bytes, std::size_t count) {
  static auto* const real = Real<ssize_t(int, const void*, std::size_t)>("write");
  return WriteAt(descriptor, lseek(descriptor, 0, SEEK_CUR), bytes,
                 [&] { return real(descriptor, bytes, count); });
}

REPLACED ssize_t pwrite(int descriptor, const void* bytes, std::size_t count, off_t at) {
  static auto* const real = Real<ssize_t(int, const void*, std::size_t, off_t)>("pwrite64");
  return WriteAt(descriptor, at, bytes, [&] { return real(descriptor, bytes, count, at); });
}

REPLACED ssize_t pwrite64(int descriptor, const void* bytes, std::size_t count, off64_t at) {
  return pwrite(descriptor, bytes, count, at);
}

REPLACED int ftruncate(int descriptor, off_t size) noexcept {
  return Resize(descriptor, size);
}

REPLACED int ftruncate64(int descriptor, off64_t size) noexcept {
  return Resize(descriptor, size);
}

REPLACED int fsync(int descriptor) {
  return Synced(descriptor);
}

REPLACED int fdatasync(int descriptor) {
  return Synced(descriptor);
}

REPLACED int unlink(const char* path) noexcept {
  static auto* const real = Real<int(const char*)>("unlink");
  FileEvents* const events = FileEvents::Active();
  std::string name;
  const bool isFile = events != nullptr && events->NameOf(path, name);
  if (isFile && events->Fails()) return -1;
  const int status = real(path);
  if (isFile && status == 0) events->Unlinked(name);
  return status;
}

REPLACED int rename(const char* from, const char* to) noexcept {
  static auto* const real = Real<int(const char*, const char*)>("rename");
  FileEvents* const events = FileEvents::Active();
  std::string before;
  std::string after;
  const bool isFile =
      events != nullptr && events->NameOf(from, before) && events->NameOf(to, after);
  if (isFile && events->Fails()) return -1;
  const int status = real(from, to);
  if (isFile && status == 0) events->Renamed(before, after);
  return status;
}

REPLACED int linkat(int fromFolder, const char* from, int toFolder, const char* to,
                    int flags) noexcept {
  static auto* const real = Real<int(int, const char*, int, const char*, int)>("linkat");
  FileEvents* const events = FileEvents::Active();
  constexpr char kOpen[] = "/proc/self/fd/";
  std::string name;
  int file = -1;
  if (events != nullptr && std::strncmp(from, kOpen, sizeof kOpen - 1) == 0 &&
      events->NameOf(to, name)) {
    file = events->FileOf(std::atoi(from + sizeof kOpen - 1));
  }
  if (file >= 0 && events->Fails()) return -1;
  const int status = real(fromFolder, from, toFolder, to, flags);
  if (file >= 0 && status == 0) events->Linked(file, name);
  return status;
}
}
