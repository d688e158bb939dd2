#include "gsl_RecordFile.h"

#include "RecordBytes.h"
#include "RecordFrame.h"
#include "gsl_RecordError.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <new>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

[[noreturn]] void Fail(const std::string& path, const char* doing, int error) {
  throw gsl_RecordError(path + ": cannot " + doing + ": " + std::strerror(error));
}

/// The folder of a path, which must be flushed after a rename.
std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

/// The path that symbolic links lead to, or the path itself where no file exists yet.
std::string ResolvedPath(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.c_str(), nullptr),
                                                             &std::free);
  if (resolved != nullptr) return resolved.get();
  // The path itself would replace a link.
  if (errno == ENOMEM) throw std::bad_alloc();
  return path;
}

/// A descriptor that is closed when it goes out of scope.
class Descriptor {
public:
  explicit Descriptor(int number) : m_descriptor(number) {}
  ~Descriptor() {
    if (m_descriptor >= 0) close(m_descriptor);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int Number() const { return m_descriptor; }
  /// Returns the descriptor, which the caller closes.
  int Release() { return std::exchange(m_descriptor, -1); }
  /// Returns 0, or the error.
  int Close() {
    const int status = close(m_descriptor);
    m_descriptor = -1;
    return status == 0 ? 0 : errno;
  }

private:
  int m_descriptor;
};

/// A file beside its place, which is removed unless it was moved there. Where the file system can,
/// the file has no name before it is whole, so that nothing of a writer that is killed remains.
class TemporaryFile {
public:
  explicit TemporaryFile(const std::string& place) : m_file(Create(place)) {
    if (m_file.Number() < 0) Fail(place, "write beside the file", errno);
  }
  ~TemporaryFile() {
    if (m_isNamed) unlink(m_name.c_str());
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  /// Gives the file the permissions of the file that it replaces, if there is one.
  void TakePermissions(const std::string& place) {
    struct stat existing = {};
    if (stat(place.c_str(), &existing) != 0) return;
    if (fchmod(m_file.Number(), existing.st_mode & 07777) != 0)
      Fail(place, "set permissions", errno);
  }

  void Write(const std::string& place, gsl_records::Bytes bytes) {
    for (std::size_t at = 0; at < bytes.count;) {
      const ssize_t written = write(m_file.Number(), bytes.begin + at, bytes.count - at);
      if (written < 0 && errno == EINTR) continue;
      if (written <= 0) Fail(place, "write", written < 0 ? errno : ENOSPC);
      at += static_cast<std::size_t>(written);
    }
  }

  void Close(const std::string& place) {
    if (fsync(m_file.Number()) != 0) Fail(place, "flush to the disk", errno);
    if (!m_isNamed && !TakeName(place)) Fail(place, "write beside the file", errno);
    if (const int error = m_file.Close()) Fail(place, "write", error);
  }

  void MoveTo(const std::string& place) {
    if (rename(m_name.c_str(), place.c_str()) != 0) Fail(place, "replace the file", errno);
    m_isNamed = false;
  }

private:
  int Create(const std::string& place) {
    Descriptor unnamed(open(FolderOf(place).c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, 0666));
    if (unnamed.Number() >= 0) {
      if (access(PathOf(unnamed.Number()).c_str(), F_OK) == 0) return unnamed.Release();
      unnamed.Close(); // without /proc the file could not get a name
    }
    return CreateNamed(place);
  }

  /// Creates a file whose name no other process and no other thread uses.
  int CreateNamed(const std::string& place) {
    int number = -1;
    do {
      m_name = NextName(place);
      number = open(m_name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (number < 0 && errno == EEXIST);
    m_isNamed = number >= 0;
    return number;
  }

  /// Returns false, with the error in errno, when the file cannot get a name.
  bool TakeName(const std::string& place) {
    do {
      m_name = NextName(place);
      m_isNamed = linkat(AT_FDCWD, PathOf(m_file.Number()).c_str(), AT_FDCWD, m_name.c_str(),
                         AT_SYMLINK_FOLLOW) == 0;
    } while (!m_isNamed && errno == EEXIST);
    return m_isNamed;
  }

  static std::string PathOf(int descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor);
  }

  static std::string NextName(const std::string& place) {
    static std::atomic<unsigned int> counter{0};
    return place + '.' + std::to_string(getpid()) + '.' + std::to_string(counter++);
  }

  std::string m_name;
  bool m_isNamed = false;
  Descriptor m_file;
};

void RefuseAllButFiles(const std::string& path) {
  struct stat existing = {};
  if (stat(path.c_str(), &existing) == 0 && !S_ISREG(existing.st_mode)) {
    throw gsl_RecordError(path + ": cannot be replaced: it is not a regular file");
  }
}

/// Reads until the end, which a file may reach later than its size says.
gsl_records::PlainBuffer<unsigned char> ContentsOf(const std::string& path) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (file.Number() < 0) Fail(path, "open", errno);
  struct stat status = {};
  if (fstat(file.Number(), &status) != 0) Fail(path, "read", errno);
  constexpr std::size_t kStep = std::size_t{1} << 16;
  gsl_records::PlainBuffer<unsigned char> bytes;
  const bool isFile = S_ISREG(status.st_mode);
  std::size_t room = isFile ? static_cast<std::size_t>(status.st_size) + 1 : kStep;
  for (;; room = kStep) {
    unsigned char* const end = bytes.Room(room);
    const ssize_t taken = read(file.Number(), end, room);
    if (taken < 0 && errno == EINTR) continue;
    if (taken < 0) Fail(path, "read", errno);
    if (taken == 0) return bytes;
    bytes.SetEnd(end + taken);
  }
}

} // namespace

void gsl_SaveRecords(const gsl_RecordStore& store, const std::string& path) {
  const std::string place = ResolvedPath(path);
  RefuseAllButFiles(place);
  gsl_RecordStore::Data& data = *store.m_data;
  data.EndAll();
  const gsl_records::PlainBuffer<unsigned char> tables = gsl_RecordCodec::TablesOf(data);
  const gsl_records::Bytes records = gsl_RecordCodec::RecordsOf(data);
  const auto header = gsl_records::HeaderOf(tables.Size() + records.count);
  TemporaryFile file(place);
  file.TakePermissions(place);
  gsl_records::BlockSums body(tables.Size() + records.count);
  file.Write(place, {header.data(), header.size()});
  for (const gsl_records::Bytes part :
       {gsl_records::Bytes{tables.Begin(), tables.Size()}, records}) {
    body.Add(part);
    file.Write(place, part);
  }
  const std::vector<unsigned char> sums = body.Finish();
  file.Write(place, {sums.data(), sums.size()});
  file.Close(place);
  // The rename is on the disk when the folder is; a folder that cannot be opened is left to the
  // system. It is opened first: once the file is in its place, nothing may fail.
  const Descriptor folder(open(FolderOf(place).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  file.MoveTo(place);
  if (folder.Number() >= 0) fsync(folder.Number());
}

gsl_RecordStore gsl_LoadRecords(const std::string& path) {
  gsl_records::PlainBuffer<unsigned char> bytes = ContentsOf(path);
  gsl_RecordStore store;
  try {
    gsl_records::CheckedBody checked({bytes.Begin(), bytes.Size()});
    gsl_RecordCodec::Decode(checked, bytes.Begin(), *store.m_data);
    bytes.SetEnd(checked.Body().begin + checked.Body().count);
  } catch (const gsl_RecordError& error) {
    throw gsl_RecordError(path + ": " + error.what());
  }
  // The records stay where they were read.
  store.m_data->bytes = std::move(bytes);
  return store;
}
