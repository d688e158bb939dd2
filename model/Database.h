#ifndef MODEL_DATABASE_H
#define MODEL_DATABASE_H

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace gsl_model {

class Database;

/// A prepared statement. Parameters count from 1 and columns from 0.
class Statement {
public:
  Statement(Database& database, std::string_view sql);
  ~Statement();
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  Statement& Bind(int parameter, std::int64_t value);
  /// Binds text where the bytes are UTF-8 without a zero byte, otherwise a blob. The bytes must
  /// live until the next step.
  Statement& BindText(int parameter, std::string_view text);
  Statement& BindBytes(int parameter, const void* bytes, std::size_t count);
  Statement& BindNull(int parameter);

  /// Returns whether there is a row.
  [[nodiscard]] bool Step();
  /// Runs the statement to its end and makes it ready to run again.
  void Run();
  void Reset();

  [[nodiscard]] bool IsNull(int column) const;
  [[nodiscard]] bool IsInteger(int column) const;
  std::int64_t Integer(int column) const;
  /// The bytes of a text or a blob, which are valid until the next step.
  std::string_view Bytes(int column) const;

private:
  void Check(int code);

  Database& m_database;
  sqlite3_stmt* m_statement = nullptr;
};

/// A connection to a database file. Every error is a gsl_RecordError that begins with the path, or
/// std::bad_alloc.
class Database {
public:
  enum class Access { Read, Write, Create };

  /// Opens the file, which must be a database, or creates it.
  Database(const std::string& path, Access access, std::chrono::milliseconds patience);
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  const std::string& Path() const { return m_path; }
  /// Lets the last connection that is closed write a log of WAL mode into the file. Until then
  /// what another program left in a log stays there.
  void ReleaseLog();
  /// Returns whether the file has no page, after what an interrupted writer left is restored.
  bool IsEmpty();
  void Run(const char* sql);
  std::int64_t Integer(std::string_view sql);
  sqlite3* Connection() const { return m_connection.get(); }
  bool IsInTransaction() const;
  /// Begins a transaction by a statement. Ends a transaction first that could not be ended.
  void Begin(const char* sql);
  /// Makes the changes of the transaction lasting. Where it throws, they are not in the file.
  /// Where only the folder cannot be flushed, it returns: they are in the file, but a loss of power
  /// may undo them or damage the file.
  void Commit();
  /// Ends what Begin began, without its changes unless they are committed. Throws nothing.
  void End() noexcept;
  /// Returns whether a transaction is between Begin and End.
  [[nodiscard]] bool IsWithinBegin() const { return m_begun > 0; }
  /// Ends a transaction without its changes. Throws nothing.
  void RollBack() noexcept;

  /// Throws for a result code of SQLite that is an error.
  void Check(int code) const;
  [[noreturn]] void Fail(const std::string& why) const;
  [[noreturn]] void FailDamaged(const std::string& why) const { Fail("is damaged: " + why); }

private:
  struct Close {
    void operator()(sqlite3* connection) const;
    void operator()(sqlite3_stmt* statement) const;
  };

  void CheckPath(Access access) const;
  void CheckBeforeCreation(const char* journal) const;
  void CheckHeader(Access access) const;
  void KeepLog() const;
  int SystemError() const;
  std::string ReasonOf(int code) const;

  std::string m_path;
  std::unique_ptr<sqlite3, Close> m_connection;
  /// Is made beforehand, so that ending a transaction needs no memory.
  std::unique_ptr<sqlite3_stmt, Close> m_rollBack;
  int m_begun = 0;
  bool m_isOpen = false;
};

} // namespace gsl_model

#endif
