#ifndef MODEL_RECORD_LOADER_H
#define MODEL_RECORD_LOADER_H

#include "Database.h"
#include "RecordTable.h"
#include "RootList.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace gsl_model {

/// Reads records of a database into memory, in the order in which they were written. What does not
/// fit together is refused with the name of its root. Requires a transaction.
class RecordLoader {
public:
  explicit RecordLoader(Database& database);

  /// Reads a root and everything that it reaches.
  void Load(const RootList::Entry& root);
  /// Returns the name of the class of a root, of which nothing else is read.
  std::string_view ClassName(const RootList::Entry& root);
  /// Returns what was read, after a comparison of the checksum of each root. Called once.
  std::unique_ptr<const gsl_RecordReader> Finish();

private:
  struct Link {
    Number field;
    std::int64_t record;
  };
  /// Rows of a statement that is sorted by records. It goes on to the next row as long as records
  /// are asked for in their order.
  struct Rows {
    Rows(Database& database, const char* sql) : statement(database, sql) {}

    /// Makes the first row of that record, or of a later one, the current row.
    void Seek(std::int64_t record);
    [[nodiscard]] bool IsAt(std::int64_t record) const {
      return hasRow && statement.Integer(0) == record;
    }
    void Next() { hasRow = statement.Step(); }

    Statement statement;
    bool hasRow = false, isStarted = false;
    /// There is no row from this record up to the current row.
    std::int64_t from = 0;
  };

  Number LoadRecord(std::int64_t id, bool isShared);
  Elements ElementsOfRow(std::int64_t id, gsl_RecordCollection collection);
  void LoadFields(std::int64_t id, Number record);
  RecordTable::Field FieldOfRow(std::int64_t id);
  void LoadClass(std::uint32_t typeId);
  Number NameOfRow(std::int64_t name);
  void Follow(const Link& link);
  [[noreturn]] void Refuse(const std::string& why) const;
  [[noreturn]] void RefuseRecord(std::int64_t id, const std::string& why) const;

  Database& m_database;
  std::unique_ptr<RecordTable> m_loaded;
  RecordTable& m_table;
  Rows m_recordRows, m_fieldRows;
  Statement m_classRow, m_nameRow;
  /// By record: its key in the database.
  std::vector<std::int64_t> m_ids;
  std::unordered_map<std::int64_t, Number> m_numbers, m_names;
  std::unordered_set<std::uint32_t> m_classes;
  std::vector<Link> m_waiting;
  std::vector<std::uint64_t> m_checksums;
  std::string m_root;
};

} // namespace gsl_model

#endif
