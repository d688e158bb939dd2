#ifndef FILE_EVENTS_H
#define FILE_EVENTS_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// One change of the files of a folder, or one request to make changes lasting.
struct FileEvent {
  enum class Kind {
    Name,       ///< `name` becomes a name of the file
    Unname,     ///< `name` is removed
    Rename,     ///< the name `name` becomes `to`, and replaces the file of that name
    Write,      ///< `bytes` are written from `at` on
    Resize,     ///< the file has `at` bytes
    Sync,       ///< the contents of the file are on the disk
    SyncFolder, ///< the names are on the disk
    Mark        ///< the test says that state `at` was promised
  };

  Kind kind = Kind::Mark;
  int file = -1; ///< the number of the file, in the order of their creation
  std::uint64_t at = 0;
  std::string name, to, bytes;
};

/// Records what this process does to the files of an empty folder while this object lives, which is
/// the only one. Programs that use it link FileEvents.cpp, whose definitions of the calls of the
/// system come before those of the C library, also for shared libraries. Nothing is flushed in
/// truth.
///
/// Only one thread may change files meanwhile.
class FileEvents {
public:
  explicit FileEvents(const std::string& folder);
  ~FileEvents();
  FileEvents(const FileEvents&) = delete;
  FileEvents& operator=(const FileEvents&) = delete;

  /// Says that the writer has promised state number `state`.
  void Mark(std::uint64_t state);
  const std::vector<FileEvent>& All() const { return m_events; }

  /// In place of an error: the process is killed before the call.
  static constexpr int kKill = -1;

  /// From now on the call number `call` (from 0) that changes a file or makes changes lasting fails
  /// with that error, and every later one too where `isLasting`.
  void FailAt(long call, int error, bool isLasting);
  /// From now on every flush of the folder fails with that error, and nothing else does.
  void FailFolders(int error) {
    FailNever();
    m_folderError = error;
  }
  /// No call fails from now on.
  void FailNever() {
    FailAt(-1, 0, false);
    m_folderError = 0;
  }
  /// How many such calls there were since FailAt.
  long Calls() const { return m_calls; }

  // For the calls of the system.

  [[nodiscard]] static FileEvents* Active();
  /// Whether the path is that of a file of the folder; then writes the name.
  [[nodiscard]] bool NameOf(const char* path, std::string& name) const;
  [[nodiscard]] bool IsFolder(const char* path) const { return path == m_folder; }
  /// The number of an open file, -1 for any other descriptor.
  [[nodiscard]] int FileOf(int descriptor) const;
  [[nodiscard]] bool IsOpenFolder(int descriptor) const;
  void Opened(int descriptor, const std::string& name, bool isNew, bool isCut);
  void OpenedUnnamed(int descriptor);
  void OpenedFolder(int descriptor);
  void Closed(int descriptor);
  void Add(FileEvent event) { m_events.push_back(std::move(event)); }
  void Renamed(const std::string& from, const std::string& to);
  void Linked(int file, const std::string& name);
  void Unlinked(const std::string& name);
  /// Counts a call that changes something. Returns whether it fails, with the error in errno.
  [[nodiscard]] bool Fails();
  /// The same for a flush of the folder.
  [[nodiscard]] bool FolderFails();

private:
  std::string m_folder;
  std::vector<FileEvent> m_events;
  std::map<std::string, int> m_names;
  std::map<int, int> m_files; ///< by descriptor; kFolder for the folder
  int m_fileCount = 0;
  long m_calls = 0, m_failAt = -1;
  int m_error = 0, m_folderError = 0;
  bool m_isLasting = false;
};

#endif
