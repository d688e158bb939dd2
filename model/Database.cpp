#include "Database.h"

#include "gsl_RecordError.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace gsl_model {

namespace {

constexpr std::string_view kMagic{"SQLite format 3\0", 16};
constexpr std::string_view kJournalMagic{"\xd9\xd5\x05\xf9\x20\xa1\x63\xd7", 8};

/// Whether each byte is 0 or that of the magic. A page that did not reach the disk whole has no
/// other bytes.
bool MayBecome(std::string_view magic, std::string_view found) {
  for (std::size_t i = 0; i < found.size(); ++i) {
    if (found[i] != 0 && found[i] != magic[i]) return false;
  }
  return true;
}

/// What is where the journal of a database would be.
enum class Journal {
  None,
  Begun,  ///< nothing can be restored from it yet
  Whole,  ///< it may restore what its writer has changed
  Foreign ///< another file, or one that cannot be read
};

Journal JournalAt(const char* path) {
  struct stat status = {};
  if (stat(path, &status) != 0) return Journal::None;
  const int file = S_ISREG(status.st_mode) ? open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC) : -1;
  if (file < 0) return Journal::Foreign;
  std::array<char, kJournalMagic.size()> start = {};
  const ssize_t count = read(file, start.data(), start.size());
  close(file);
  if (count < 0) return Journal::Foreign;
  const std::string_view found(start.data(), static_cast<std::size_t>(count));
  if (found == kJournalMagic) return Journal::Whole;
  return MayBecome(kJournalMagic, found) ? Journal::Begun : Journal::Foreign;
}

/// Whether the bytes are UTF-8 and have no zero byte.
bool IsPlainText(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i]);
    if (lead == 0) return false;
    if (lead < 0x80) {
      ++i;
      continue;
    }
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || i + length > text.size()) return false;
    const auto second = static_cast<unsigned char>(text[i + 1]);
    // Overlong forms, surrogates, and what is beyond the last character.
    if ((lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F)) return false;
    if ((lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F)) return false;
    for (std::size_t k = 1; k < length; ++k) {
      if ((static_cast<unsigned char>(text[i + k]) & 0xC0u) != 0x80u) return false;
    }
    i += length;
  }
  return true;
}

std::string HexOf(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    char digits[4];
    std::snprintf(digits, sizeof digits, "%02x ", static_cast<unsigned char>(byte));
    text += digits;
  }
  if (!text.empty()) text.pop_back();
  return text;
}

/// The text without what a damaged file may have put into it: control characters, bytes that are
/// not UTF-8, and more than a line.
std::string InOneLine(std::string text) {
  constexpr std::size_t kMost = 300;
  const bool isText = IsPlainText(text);
  for (char& c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F || (!isText && byte >= 0x80)) c = '?';
  }
  if (!isText && text.size() > kMost) text.resize(kMost);
  return text;
}

/// The name that SQLite takes for a file and for nothing else.
std::string FileName(const std::string& path) {
  return !path.empty() && path[0] == '/' ? path : "./" + path;
}

} // namespace

Statement::Statement(Database& database, std::string_view sql) : m_database(database) {
  Check(sqlite3_prepare_v3(database.Connection(), sql.data(), static_cast<int>(sql.size()),
                           SQLITE_PREPARE_PERSISTENT, &m_statement, nullptr));
}

Statement::~Statement() {
  sqlite3_finalize(m_statement);
}

void Statement::Check(int code) {
  m_database.Check(code);
}

Statement& Statement::Bind(int parameter, std::int64_t value) {
  Check(sqlite3_bind_int64(m_statement, parameter, value));
  return *this;
}

Statement& Statement::BindText(int parameter, std::string_view text) {
  if (!IsPlainText(text)) return BindBytes(parameter, text.data(), text.size());
  Check(sqlite3_bind_text64(m_statement, parameter, text.data() != nullptr ? text.data() : "",
                            text.size(), SQLITE_STATIC, SQLITE_UTF8));
  return *this;
}

Statement& Statement::BindBytes(int parameter, const void* bytes, std::size_t count) {
  Check(sqlite3_bind_blob64(m_statement, parameter, bytes != nullptr ? bytes : "", count,
                            SQLITE_STATIC));
  return *this;
}

Statement& Statement::BindNull(int parameter) {
  Check(sqlite3_bind_null(m_statement, parameter));
  return *this;
}

bool Statement::Step() {
  const int code = sqlite3_step(m_statement);
  if (code == SQLITE_ROW) return true;
  if (code == SQLITE_DONE) return false;
  // A reset would forget the error of the system.
  try {
    Check(code);
  } catch (...) {
    Reset();
    throw;
  }
  return false;
}

void Statement::Run() {
  while (Step()) {
  }
  Reset();
}

void Statement::Reset() {
  sqlite3_reset(m_statement);
}

bool Statement::IsNull(int column) const {
  return sqlite3_column_type(m_statement, column) == SQLITE_NULL;
}

bool Statement::IsInteger(int column) const {
  return sqlite3_column_type(m_statement, column) == SQLITE_INTEGER;
}

std::int64_t Statement::Integer(int column) const {
  return sqlite3_column_int64(m_statement, column);
}

std::string_view Statement::Bytes(int column) const {
  const void* const bytes = sqlite3_column_blob(m_statement, column);
  const int count = sqlite3_column_bytes(m_statement, column);
  if (bytes == nullptr) return {};
  return {static_cast<const char*>(bytes), static_cast<std::size_t>(count)};
}

void Database::Close::operator()(sqlite3* connection) const {
  sqlite3_close_v2(connection);
}

void Database::Close::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

Database::Database(const std::string& path, Access access, std::chrono::milliseconds patience)
    : m_path(path) {
  CheckPath(access);
  // A reader too may have to complete what a writer that was interrupted left.
  const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE |
                    (access == Access::Create ? SQLITE_OPEN_CREATE : 0);
  sqlite3* connection = nullptr;
  const int code = sqlite3_open_v2(FileName(path).c_str(), &connection, flags, nullptr);
  m_connection.reset(connection);
  if (connection == nullptr) throw std::bad_alloc();
  Check(code);
  m_isOpen = true;
  CheckHeader(access);
  KeepLog();
  if (access != Access::Read && sqlite3_db_readonly(connection, "main") == 1) {
    Fail("cannot be written: Permission denied");
  }
  constexpr std::chrono::milliseconds kLongest{std::numeric_limits<int>::max()};
  const auto wait = std::clamp(patience, std::chrono::milliseconds{0}, kLongest);
  sqlite3_busy_timeout(connection, static_cast<int>(wait.count()));
  sqlite3_db_config(connection, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(connection, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
  Run("PRAGMA trusted_schema = OFF; PRAGMA cell_size_check = ON; PRAGMA foreign_keys = ON; "
      "PRAGMA temp_store = MEMORY");
  sqlite3_stmt* rollBack = nullptr;
  Check(sqlite3_prepare_v3(connection, "ROLLBACK", -1, SQLITE_PREPARE_PERSISTENT, &rollBack,
                           nullptr));
  m_rollBack.reset(rollBack);
}

Database::~Database() = default;

/// Judges the path before SQLite does, whose words for it are general.
void Database::CheckPath(Access access) const {
  struct stat status = {};
  if (stat(m_path.c_str(), &status) != 0) {
    if (errno == ENOENT && access == Access::Create) {
      return CheckBeforeCreation((m_path + "-journal").c_str());
    }
    Fail(std::string("cannot open: ") + std::strerror(errno));
  }
  if (!S_ISREG(status.st_mode)) Fail("is not a regular file");
}

/// A journal beside an empty file is removed when the file is read, whatever it holds.
void Database::CheckBeforeCreation(const char* journal) const {
  if (JournalAt(journal) != Journal::Foreign) return;
  Fail("cannot be created: " + std::string(journal) +
       " is beside it, and is not a journal that can be read");
}

/// Judges how the file begins. It is read through the connection: a descriptor of our own would,
/// when it is closed, end the locks that other connections of this process have on the file.
void Database::CheckHeader(Access access) const {
  sqlite3_file* file = nullptr;
  Check(sqlite3_file_control(Connection(), "main", SQLITE_FCNTL_FILE_POINTER, &file));
  if (file == nullptr || file->pMethods == nullptr) return;
  sqlite3_int64 size = 0;
  Check(file->pMethods->xFileSize(file, &size));
  // The journal is beside the file itself, where the path is a link.
  const char* const journal = sqlite3_filename_journal(sqlite3_db_filename(Connection(), "main"));
  const bool canRestore = JournalAt(journal) == Journal::Whole;
  std::array<char, kMagic.size()> start = {};
  const auto count = std::min(start.size(), static_cast<std::size_t>(size));
  if (count == 0) {
    // A writer that was interrupted while it created the file leaves an empty one.
    if (access == Access::Create) return CheckBeforeCreation(journal);
    if (canRestore) return;
    Fail("is not a model: the file is empty");
  }
  Check(file->pMethods->xRead(file, start.data(), static_cast<int>(count), 0));
  const std::string_view found(start.data(), count);
  if (found == kMagic) return;
  // What a writer that was interrupted has left is restored first, when the file is read.
  if (canRestore && MayBecome(kMagic, found)) return;
  Fail("is not a model: the file starts with " +
       HexOf(found.substr(0, std::min<std::size_t>(4, found.size()))) +
       ", but a model starts with 53 51 4c 69 (\"SQLi\")");
}

/// The last connection would write a log of WAL mode into the file when it is closed, also where
/// the database is that of another program.
void Database::KeepLog() const {
  const char* const log = sqlite3_filename_wal(sqlite3_db_filename(Connection(), "main"));
  struct stat status = {};
  if (stat(log, &status) != 0 || status.st_size == 0) return;
  sqlite3_db_config(Connection(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

void Database::ReleaseLog() {
  sqlite3_db_config(Connection(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);
}

bool Database::IsEmpty() {
  return Integer("PRAGMA page_count") == 0;
}

void Database::Run(const char* sql) {
  Check(sqlite3_exec(Connection(), sql, nullptr, nullptr, nullptr));
}

std::int64_t Database::Integer(std::string_view sql) {
  Statement statement(*this, sql);
  return statement.Step() ? statement.Integer(0) : 0;
}

bool Database::IsInTransaction() const {
  return sqlite3_get_autocommit(Connection()) == 0;
}

void Database::Begin(const char* sql) {
  if (m_begun == 0) RollBack();
  Run(sql);
  ++m_begun;
}

void Database::Commit() {
  const int code = sqlite3_exec(Connection(), "COMMIT", nullptr, nullptr, nullptr);
  // The journal is gone, and with it the way back: the changes are in the file. File systems that
  // cannot flush a folder always answer so.
  if (code == SQLITE_IOERR_DIR_FSYNC) return RollBack();
  Check(code);
}

void Database::End() noexcept {
  --m_begun;
  RollBack();
}

void Database::RollBack() noexcept {
  if (!IsInTransaction()) return;
  sqlite3_step(m_rollBack.get());
  sqlite3_reset(m_rollBack.get());
}

/// The error of the system, 0 where it is not known. A commit leaves it with the file alone.
int Database::SystemError() const {
  int error = sqlite3_system_errno(Connection());
  if (error == 0 && m_isOpen) {
    sqlite3_file_control(Connection(), "main", SQLITE_FCNTL_LAST_ERRNO, &error);
  }
  return error;
}

std::string Database::ReasonOf(int code) const {
  const int error = SystemError();
  const std::string system = error != 0 ? std::strerror(error) : sqlite3_errmsg(Connection());
  switch (code & 0xFF) {
  case SQLITE_BUSY:
  case SQLITE_LOCKED:
    return "is locked: another program is writing to it";
  case SQLITE_READONLY:
    return code == SQLITE_READONLY_ROLLBACK || code == SQLITE_READONLY_CANTLOCK
               ? "cannot be read: its writer was interrupted, and only a program that may "
                 "write the file can restore it"
               : "cannot be written: the file or its folder is read-only";
  case SQLITE_FULL:
    return "cannot be written: the disk is full";
  case SQLITE_CANTOPEN:
    if (!m_isOpen) return "cannot open: " + system;
    // A journal that cannot be made is then looked for, and the first error is forgotten.
    return "cannot be written: its journal beside it cannot be opened" +
           (error == ENOENT ? "" : ": " + system);
  case SQLITE_IOERR:
    return (code == SQLITE_IOERR_READ || code == SQLITE_IOERR_SHORT_READ ? "cannot be read: "
                                                                         : "cannot be written: ") +
           system;
  case SQLITE_NOTADB:
    return "is damaged: its header is not the header of a database";
  case SQLITE_CORRUPT:
    return std::string("is damaged: ") + sqlite3_errmsg(Connection());
  default:
    return std::string("cannot be used: ") + sqlite3_errmsg(Connection());
  }
}

void Database::Check(int code) const {
  const int primary = code & 0xFF;
  if (primary == SQLITE_OK || primary == SQLITE_ROW || primary == SQLITE_DONE) return;
  if (primary == SQLITE_NOMEM) throw std::bad_alloc();
  Fail(ReasonOf(code));
}

void Database::Fail(const std::string& why) const {
  throw gsl_RecordError(m_path + ": " + InOneLine(why));
}

} // namespace gsl_model
