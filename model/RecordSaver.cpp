#include "RecordSaver.h"

#include "RowBytes.h"

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

namespace gsl_model {

namespace {

using Kind = gsl_RecordKind;

std::int64_t Stored(std::uint64_t word) {
  return static_cast<std::int64_t>(word);
}

/// The number after the greatest one; numbers count from 1.
std::int64_t NextNumber(Database& database, std::string_view greatest) {
  const std::int64_t number = std::max<std::int64_t>(0, database.Integer(greatest));
  // Half of the numbers are enough for one transaction.
  if (number > std::numeric_limits<std::int64_t>::max() / 2) {
    database.FailDamaged("the number of a record is " + std::to_string(number));
  }
  return number + 1;
}

} // namespace

RecordSaver::RecordSaver(Database& database, const RecordTable& table, RootList& roots)
    : m_database(database), m_table(table), m_roots(roots), m_reached(table),
      m_addRecord(database, "INSERT INTO records VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8)"),
      m_addField(database, "INSERT INTO fields VALUES (?1, ?2, ?3, ?4, ?5, ?6)"),
      m_addClass(database, "INSERT INTO classes VALUES (?1, ?2, ?3) ON CONFLICT (id) DO UPDATE SET "
                           "name = excluded.name, checksum = excluded.checksum "
                           "WHERE length(excluded.name) <> 0 AND name <> excluded.name"),
      m_findName(database, "SELECT id FROM names WHERE name = ?1 AND number = ?2"),
      m_addName(database, "INSERT INTO names(name, number) VALUES (?1, ?2) RETURNING id"),
      // A replacement of another row, by an index that somebody added, would be an error.
      m_putRoot(database,
                "INSERT INTO roots VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8) ON CONFLICT (id) DO "
                "UPDATE SET name = ?2, record = ?3, class = ?4, prefix = ?5, serial = ?6, "
                "bytes = ?7, checksum = ?8"),
      m_nextRecord(NextNumber(database, "SELECT max(id) FROM records")),
      m_nextRoot(NextNumber(database, "SELECT max(id) FROM roots")),
      m_ids(table.Records().size(), 0), m_names(table.Names().size(), 0) {}

void RecordSaver::Save(const std::set<std::string>& removed) {
  for (std::size_t i = 0; i < m_table.RootCount(); ++i) {
    if (m_table.Counts(i)) SaveRoot(i);
  }
  for (const std::string& name : removed) {
    const std::size_t root = m_table.FindRoot(name);
    if (root < m_table.RootCount() && m_table.Counts(root)) continue;
    if (const auto* const stored = m_roots.Find(name)) RemoveRoot(stored->first);
  }
  RemoveUnreached();
  Statement sum(m_database, "UPDATE model SET roots_sum = ?1");
  sum.Bind(1, Stored(m_roots.Sum())).Run();
}

void RecordSaver::SaveRoot(std::size_t root) {
  const Number record = m_table.Root(root);
  const std::vector<Number>& reached = m_reached.From(record);
  std::vector<Number> added;
  for (const Number number : reached) {
    if (m_ids[number] != 0) continue;
    m_ids[number] = m_nextRecord++;
    added.push_back(number);
  }
  for (const Number number : added)
    SaveRecord(number);
  const Checksum sum = ChecksumOf(m_table, reached, m_ids);
  RootList::Entry entry{std::string(m_table.RootName(root)),
                        m_ids[record],
                        m_table.TypeId(record),
                        m_table.Identity(record),
                        8 * sum.Count(),
                        sum.Sum()};
  const auto* const replaced = m_roots.Find(entry.name);
  std::int64_t id = m_nextRoot;
  if (replaced != nullptr) {
    id = replaced->first;
    m_unrooted.push_back(replaced->second.record);
  } else {
    ++m_nextRoot;
  }
  m_putRoot.Bind(1, id).Bind(3, entry.record).Bind(4, entry.typeId);
  if (entry.name.empty()) {
    m_putRoot.BindNull(2);
  } else {
    m_putRoot.BindText(2, entry.name);
  }
  m_putRoot.Bind(5, Stored(entry.identity.prefix)).Bind(6, Stored(entry.identity.serial));
  m_putRoot.Bind(7, Stored(entry.bytes)).Bind(8, Stored(entry.checksum)).Run();
  m_roots.Put(id, std::move(entry));
}

void RecordSaver::SaveRecord(Number number) {
  const RecordTable::Record& record = m_table.Records()[number];
  SaveClass(record.typeId);
  m_addRecord.Bind(1, m_ids[number]).Bind(2, record.typeId);
  m_addRecord.Bind(3, Stored(record.identity.prefix)).Bind(4, Stored(record.identity.serial));
  m_addRecord.Bind(5, static_cast<std::int64_t>(record.collection));
  m_bytes.clear();
  m_addRecord.BindNull(6).BindNull(7).BindNull(8);
  if (HasElements(record.collection)) {
    const Elements& elements = m_table.ElementsOf(record);
    for (const std::uint32_t value : elements.unsigneds)
      PutBytes(value, kUnsignedBytes, m_bytes);
    for (const double value : elements.doubles)
      PutDouble(value, m_bytes);
    m_addRecord.BindBytes(8, m_bytes.data(), m_bytes.size());
    if (record.collection == gsl_RecordCollection::Doubles) {
      m_addRecord.Bind(6, Stored(elements.rows)).Bind(7, Stored(elements.columns));
    }
  }
  m_addRecord.Run();
  SaveFields(number);
}

void RecordSaver::SaveFields(Number record) {
  std::int64_t position = 0;
  const std::vector<RecordTable::Field>& fields = m_table.AllFields();
  for (Number i = m_table.Records()[record].firstField; i != kNone; i = fields[i].next) {
    const RecordTable::Field& field = fields[i];
    m_addField.Bind(1, m_ids[record]).Bind(2, position++);
    if (field.name == kNone) {
      m_addField.BindNull(3);
    } else {
      m_addField.Bind(3, IdOfName(field.name));
    }
    m_addField.BindNull(5).BindNull(6);
    BindValue(field);
    m_addField.Run();
  }
}

/// Binds the kind, and the value or the link. A field that holds an object and a field that refers
/// to it are stored alike, so that neither of them depends on the other.
void RecordSaver::BindValue(const RecordTable::Field& field) {
  const Kind kind = field.kind == Kind::Reference ? Kind::Object : field.kind;
  m_addField.Bind(4, static_cast<std::int64_t>(kind));
  switch (kind) {
  case Kind::Integer:
    m_addField.Bind(5, field.integer);
    break;
  case Kind::Double:
    m_bytes.clear();
    PutDouble(field.real, m_bytes);
    m_addField.BindBytes(5, m_bytes.data(), m_bytes.size());
    break;
  case Kind::Boolean:
    m_addField.Bind(5, field.boolean ? 1 : 0);
    break;
  case Kind::String:
    m_addField.BindText(5, m_table.Text(field.text));
    break;
  case Kind::Null:
    m_addField.Bind(5, field.link);
    break;
  default:
    m_addField.Bind(6, m_ids[field.link]);
    break;
  }
}

void RecordSaver::SaveClass(std::uint32_t typeId) {
  if (!m_classes.insert(typeId).second) return;
  const std::string_view name = m_table.ClassName(typeId);
  m_addClass.Bind(1, typeId).BindText(2, name);
  m_addClass.Bind(3, Stored(ChecksumOfClass(typeId, name))).Run();
}

std::int64_t RecordSaver::IdOfName(Number name) {
  std::int64_t& id = m_names[name];
  if (id != 0) return id;
  const FieldName& found = m_table.Names()[name];
  for (Statement* const statement : {&m_findName, &m_addName}) {
    if (id != 0) break;
    statement->BindText(1, found.name).Bind(2, found.number);
    if (statement->Step()) id = statement->Integer(0);
    statement->Reset();
  }
  return id;
}

void RecordSaver::RemoveRoot(std::int64_t id) {
  Statement remove(m_database, "DELETE FROM roots WHERE id = ?1");
  remove.Bind(1, id).Run();
  m_unrooted.push_back(m_roots.Entries().at(id).record);
  m_roots.Erase(id);
}

/// Of the records that the removed roots reached, those go that nothing else reaches.
void RecordSaver::RemoveUnreached() {
  if (m_unrooted.empty()) return;
  m_database.Run("CREATE TEMP TABLE IF NOT EXISTS gone(id INTEGER PRIMARY KEY);"
                 "CREATE TEMP TABLE IF NOT EXISTS kept(id INTEGER PRIMARY KEY);"
                 "DELETE FROM gone; DELETE FROM kept;");
  Statement reach(m_database, "INSERT OR IGNORE INTO gone WITH RECURSIVE reached(id) AS "
                              "(VALUES (?1) UNION SELECT link FROM reached JOIN fields ON "
                              "fields.record = reached.id WHERE link IS NOT NULL) "
                              "SELECT id FROM reached");
  for (const std::int64_t record : m_unrooted)
    reach.Bind(1, record).Run();
  m_database.Run("INSERT INTO kept WITH RECURSIVE reached(id) AS "
                 "(SELECT id FROM gone WHERE EXISTS (SELECT 1 FROM fields WHERE link = gone.id AND "
                 "record NOT IN gone) UNION SELECT link FROM reached JOIN fields ON "
                 "fields.record = reached.id WHERE link IS NOT NULL) SELECT id FROM reached;"
                 "DELETE FROM gone WHERE id IN kept;"
                 "DELETE FROM fields WHERE record IN gone;"
                 "DELETE FROM records WHERE id IN gone;");
}

} // namespace gsl_model
