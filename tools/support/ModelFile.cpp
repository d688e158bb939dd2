#include "support/ModelFile.h"

#include "TemporaryFiles.h"
#include "gsl_RecordError.h"
#include "gsl_RecordFile.h"
#include "support/RecordCopy.h"

#ifndef GSL_WITHOUT_MODEL
#include "gsl_Model.h"
#endif

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace gsl_tools {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kDatabase{"SQLite format 3\0", 16};

#ifdef GSL_WITHOUT_MODEL

[[noreturn]] void RefuseDatabase(const std::string& path) {
  throw gsl_RecordError(path + ": is a database, but this program was built without SQLite");
}

gsl_RecordStore LoadDatabase(const std::string& path) {
  RefuseDatabase(path);
}

void SaveDatabase(const gsl_RecordStore&, const std::string& path) {
  RefuseDatabase(path);
}

#else

gsl_RecordStore LoadDatabase(const std::string& path) {
  gsl_RecordStore store;
  CopyRecords(*gsl_model::Model(path, gsl_model::Access::Read).ReadAll(), store);
  return store;
}

/// A database beside its place, which is removed unless it was renamed.
class NewDatabase {
public:
  explicit NewDatabase(const std::string& path) : m_path(path), m_place(PlaceOf(path)) {
    RefuseJournal();
    Create();
  }
  ~NewDatabase() {
    std::error_code ignored;
    fs::remove(m_name, ignored);
    fs::remove(JournalOf(m_name), ignored);
  }
  NewDatabase(const NewDatabase&) = delete;
  NewDatabase& operator=(const NewDatabase&) = delete;

  void Fill(const gsl_RecordStore& records) const {
    try {
      gsl_model::Model(m_name).Write(
          [&](gsl_model::Transaction& t) { CopyRecords(records, t.Writer()); });
    } catch (const gsl_RecordError& error) {
      // The message names the file beside the place.
      const std::string what = error.what();
      if (what.find(m_name + ": ") == 0) Fail(what.substr(m_name.size() + 2));
      Fail(what);
    }
  }

  void MoveIntoPlace() const {
    RefuseJournal();
    if (std::rename(m_name.c_str(), m_place.c_str()) != 0) {
      Fail(std::string("cannot replace the file: ") + std::strerror(errno));
    }
    // The rename is on the disk when the folder is.
    const fs::path folder = fs::path(m_place).parent_path();
    const int descriptor = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return;
    fsync(descriptor);
    close(descriptor);
  }

private:
  static std::string JournalOf(const std::string& database) { return database + "-journal"; }

  /// Where symbolic links lead.
  static std::string PlaceOf(const std::string& path) {
    std::error_code failed;
    const fs::path place = fs::canonical(path, failed);
    return failed ? path : place.string();
  }

  /// The journal belongs to the old file, and would be applied to the new one.
  void RefuseJournal() const {
    std::error_code ignored;
    for (const char* const ending : {"-journal", "-wal"}) {
      if (fs::exists(m_place + ending, ignored)) {
        Fail("cannot be replaced: a writer of it was interrupted or is not done");
      }
    }
  }

  /// Returns -1 and sets errno where it cannot create the file. A signal removes the file and its
  /// journal from then on.
  int OpenNew() {
    const gsl_mesh::SignalsWait wait; // until it is known whose file it is
    const int file = open(m_name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0) return file;
    m_listed.emplace(m_name);
    m_listedJournal.emplace(JournalOf(m_name));
    return file;
  }

  /// Creates an empty file that nobody else has, with the permissions of the file that it replaces.
  void Create() {
    int file = -1;
    for (unsigned k = 0; file < 0; ++k) {
      m_name = m_place + '.' + std::to_string(getpid()) + '.' + std::to_string(k);
      file = OpenNew();
      if (file < 0 && errno != EEXIST) {
        const int error = errno;
        m_name.clear();
        Fail(std::string("cannot open: ") + std::strerror(error));
      }
    }
    struct stat existing = {};
    const bool isKept =
        stat(m_place.c_str(), &existing) != 0 || fchmod(file, existing.st_mode & 07777) == 0;
    const int error = errno;
    close(file);
    if (isKept) return;
    unlink(m_name.c_str());
    Fail(std::string("cannot set permissions: ") + std::strerror(error));
  }

  [[noreturn]] void Fail(const std::string& why) const {
    throw gsl_RecordError(m_path + ": " + why);
  }

  std::string m_path, m_place, m_name;
  std::optional<gsl_mesh::TemporaryFile> m_listed, m_listedJournal;
};

void SaveDatabase(const gsl_RecordStore& records, const std::string& path) {
  const NewDatabase file(path);
  file.Fill(records);
  file.MoveIntoPlace();
}

#endif

} // namespace

bool IsDatabase(std::string_view bytes) {
  return bytes.substr(0, kDatabase.size()) == kDatabase;
}

bool NamesDatabase(const std::string& path) {
  const std::string extension = fs::path(path).extension().string();
  return extension == ".gslm" || extension == ".sqlite" || extension == ".db";
}

gsl_RecordStore LoadModelFile(const std::string& path) {
  std::array<char, kDatabase.size()> start = {};
  std::error_code ignored;
  if (fs::is_regular_file(path, ignored)) {
    std::ifstream file(path, std::ios::binary);
    file.read(start.data(), static_cast<std::streamsize>(start.size()));
  }
  if (IsDatabase({start.data(), start.size()})) return LoadDatabase(path);
  return gsl_LoadRecords(path);
}

void SaveModelFile(const gsl_RecordStore& records, const std::string& path) {
  if (NamesDatabase(path)) {
    SaveDatabase(records, path);
  } else {
    // The file beside the place is not listed for removal.
    const gsl_mesh::SignalsWait wait;
    gsl_SaveRecords(records, path);
  }
}

} // namespace gsl_tools
