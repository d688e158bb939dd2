#ifndef MODEL_RECORD_SAVER_H
#define MODEL_RECORD_SAVER_H

#include "Database.h"
#include "RecordTable.h"
#include "RootList.h"
#include "TableChecksum.h"

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace gsl_model {

/// Writes the roots of a transaction to a database, and removes what no root reaches any more.
/// Requires that the transaction of the database has begun, and leaves it open.
class RecordSaver {
public:
  RecordSaver(Database& database, const RecordTable& table, RootList& roots);

  /// `removed` are names of roots that the database has.
  void Save(const std::set<std::string>& removed);

private:
  void SaveRoot(std::size_t root);
  void SaveRecord(Number record);
  void SaveFields(Number record);
  void BindValue(const RecordTable::Field& field);
  void SaveClass(std::uint32_t typeId);
  std::int64_t IdOfName(Number name);
  void RemoveRoot(std::int64_t id);
  void RemoveUnreached();

  Database& m_database;
  const RecordTable& m_table;
  RootList& m_roots;
  ReachedRecords m_reached;
  Statement m_addRecord, m_addField, m_addClass, m_findName, m_addName, m_putRoot;
  std::int64_t m_nextRecord, m_nextRoot;
  /// By record: its key in the database, 0 for none.
  std::vector<std::int64_t> m_ids;
  /// By name: its key in the database, 0 for not known.
  std::vector<std::int64_t> m_names;
  std::unordered_set<std::uint32_t> m_classes;
  /// The records of roots that were removed or replaced.
  std::vector<std::int64_t> m_unrooted;
  std::string m_bytes;
};

} // namespace gsl_model

#endif
