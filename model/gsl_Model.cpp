#include "gsl_Model.h"

#include "Database.h"
#include "RecordLoader.h"
#include "RecordSaver.h"
#include "RecordTable.h"
#include "RootList.h"
#include "Schema.h"

#include <set>
#include <unistd.h>

namespace gsl_model {

namespace {

Database::Access AccessOf(Access access) {
  switch (access) {
  case Access::Read:
    return Database::Access::Read;
  case Access::Write:
    return Database::Access::Write;
  case Access::Create:
    break;
  }
  return Database::Access::Create;
}

/// Ends a transaction without its changes, unless it is committed.
class Changes {
public:
  Changes(Database& database, const char* begin)
      : m_database(database), m_isMine(!database.IsWithinBegin() || !database.IsInTransaction()) {
    if (m_isMine) database.Begin(begin);
  }
  ~Changes() {
    if (m_isMine) m_database.End();
  }
  Changes(const Changes&) = delete;
  Changes& operator=(const Changes&) = delete;

private:
  Database& m_database;
  const bool m_isMine;
};

} // namespace

struct Model::Data {
  Data(const std::string& path, Access mode, std::chrono::milliseconds patience)
      : database(path, AccessOf(mode), patience), access(mode) {}

  const RootList::Entry& Root(std::string_view name) {
    const auto* const found = roots.Find(name);
    if (found == nullptr) database.Fail("has no root named \"" + std::string(name) + "\"");
    return found->second;
  }

  Database database;
  Access access;
  RootList roots;
};

struct Transaction::Data {
  explicit Data(const RootList& stored) : roots(stored), save(table) {}

  const RootList& roots;
  RecordTable table;
  cls_Save save;
  std::set<std::string> removed;
};

Transaction::Transaction(std::unique_ptr<Data> data) : m_data(std::move(data)) {}

Transaction::~Transaction() = default;

cls_Save& Transaction::SaveOf() {
  return m_data->save;
}

gsl_RecordWriter& Transaction::Writer() {
  return m_data->table;
}

bool Transaction::Remove(std::string_view name) {
  const bool isPending = m_data->table.RemoveRoot(name);
  const bool isStored =
      m_data->roots.Find(name) != nullptr && m_data->removed.insert(std::string(name)).second;
  return isPending || isStored;
}

Transaction::Replacing::Replacing(Transaction& transaction, std::string_view name)
    : m_transaction(transaction), m_rootsBefore(transaction.m_data->table.RootCount()) {
  if (name.empty()) throw gsl_RecordError("The name of a root must not be empty");
  transaction.m_data->table.AllowReplacing(true);
}

Transaction::Replacing::~Replacing() {
  m_transaction.m_data->table.AllowReplacing(false);
}

void Transaction::Replacing::CheckWritten() const {
  if (m_transaction.m_data->table.RootCount() != m_rootsBefore) return;
  throw gsl_RecordError("The object has written no record");
}

Model::Model(const std::string& path, Access access, std::chrono::milliseconds patience)
    : m_data(std::make_unique<Data>(path, access, patience)) {
  Database& database = m_data->database;
  try {
    database.Run("PRAGMA synchronous = EXTRA");
    if (database.IsEmpty()) {
      // A writer that was interrupted while it created the file leaves an empty one.
      if (access != Access::Create) database.Fail("is not a model: the file is empty");
      CreateTables(database);
    }
    CheckTables(database, access != Access::Read);
    // The mode is stored in the file, so only that of a model is changed.
    database.Run(access == Access::Read ? "PRAGMA query_only = ON"
                                        : "PRAGMA journal_mode = DELETE");
  } catch (...) {
    database.RollBack();
    throw;
  }
  const Changes reading(database, "BEGIN");
  m_data->roots.Refresh(database);
}

Model::~Model() = default;

Model::Model(Model&&) noexcept = default;

Model& Model::operator=(Model&&) noexcept = default;

void Model::Write(const std::function<void(Transaction&)>& work) {
  Data& data = *m_data;
  Database& database = data.database;
  if (data.access == Access::Read) database.Fail("cannot be written: it was opened for reading");
  if (database.IsWithinBegin()) {
    database.Fail("cannot be written within another transaction of the same model");
  }
  const Changes changes(database, "BEGIN IMMEDIATE");
  data.roots.Refresh(database);
  Transaction transaction(std::make_unique<Transaction::Data>(data.roots));
  work(transaction);
  if (!database.IsInTransaction()) {
    data.roots.Forget();
    database.Fail("cannot be written: an error within the transaction has ended it");
  }
  Transaction::Data& written = *transaction.m_data;
  written.table.Finish();
  try {
    RecordSaver(database, written.table, data.roots).Save(written.removed);
    database.Commit();
  } catch (...) {
    data.roots.Forget();
    throw;
  }
}

bool Model::Has(std::string_view name) const {
  const Changes reading(m_data->database, "BEGIN");
  m_data->roots.Refresh(m_data->database);
  return m_data->roots.Find(name) != nullptr;
}

std::vector<RootEntry> Model::Roots() const {
  Database& database = m_data->database;
  const Changes reading(database, "BEGIN");
  m_data->roots.Refresh(database);
  RecordLoader classes(database);
  std::vector<RootEntry> entries;
  for (const auto& [id, root] : m_data->roots.Entries()) {
    entries.push_back(
        {root.name, std::string(classes.ClassName(root)), root.typeId, root.identity, root.bytes});
  }
  return entries;
}

std::unique_ptr<const gsl_RecordReader> Model::Read(std::string_view name) const {
  Database& database = m_data->database;
  const Changes reading(database, "BEGIN");
  m_data->roots.Refresh(database);
  RecordLoader loader(database);
  loader.Load(m_data->Root(name));
  return loader.Finish();
}

std::unique_ptr<const gsl_RecordReader> Model::ReadAll() const {
  Database& database = m_data->database;
  const Changes reading(database, "BEGIN");
  m_data->roots.Refresh(database);
  RecordLoader loader(database);
  for (const auto& [id, root] : m_data->roots.Entries())
    loader.Load(root);
  return loader.Finish();
}

} // namespace gsl_model
