#include "RecordLoader.h"

#include "RowBytes.h"
#include "TableChecksum.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

namespace gsl_model {

namespace {

using Kind = gsl_RecordKind;

template <class T>
bool Fits(std::int64_t value) {
  return value >= std::numeric_limits<T>::min() && value <= std::numeric_limits<T>::max();
}

std::string NameInMessage(const std::string& name) {
  return name.empty() ? std::string("a root without a name") : "the root \"" + name + "\"";
}

} // namespace

RecordLoader::RecordLoader(Database& database)
    : m_database(database), m_loaded(std::make_unique<RecordTable>()), m_table(*m_loaded),
      m_recordRows(database, "SELECT id, class, prefix, serial, collection, rows, columns, "
                             "elements FROM records WHERE id >= ?1 ORDER BY id"),
      m_fieldRows(database, "SELECT record, name, kind, value, link FROM fields "
                            "WHERE record >= ?1 ORDER BY record, position"),
      m_classRow(database, "SELECT name, checksum FROM classes WHERE id = ?1"),
      m_nameRow(database, "SELECT name, number FROM names WHERE id = ?1") {}

void RecordLoader::Refuse(const std::string& why) const {
  m_database.Fail(NameInMessage(m_root) + " is damaged: " + why);
}

void RecordLoader::RefuseRecord(std::int64_t id, const std::string& why) const {
  Refuse("record " + std::to_string(id) + ' ' + why);
}

void RecordLoader::Rows::Seek(std::int64_t record) {
  const bool isAhead = isStarted && record >= from && (!hasRow || statement.Integer(0) >= record);
  if (!isAhead) {
    statement.Reset();
    statement.Bind(1, record);
    isStarted = true;
    Next();
  }
  from = record;
}

void RecordLoader::Load(const RootList::Entry& root) {
  m_root = root.name;
  if (m_numbers.count(root.record) != 0) RefuseRecord(root.record, "also belongs to another root");
  m_table.AppendRoot(LoadRecord(root.record, false), root.name);
  m_checksums.push_back(root.checksum);
  while (!m_waiting.empty()) {
    const Link link = m_waiting.back();
    m_waiting.pop_back();
    Follow(link);
  }
}

std::unique_ptr<const gsl_RecordReader> RecordLoader::Finish() {
  ReachedRecords records(m_table);
  for (std::size_t i = 0; i < m_checksums.size(); ++i) {
    if (ChecksumOf(m_table, records.From(m_table.Root(i)), m_ids).Sum() == m_checksums[i]) continue;
    m_root = m_table.RootName(i);
    Refuse("the checksum of its records does not match");
  }
  return std::move(m_loaded);
}

std::string_view RecordLoader::ClassName(const RootList::Entry& root) {
  m_root = root.name;
  LoadClass(root.typeId);
  return m_table.ClassName(root.typeId);
}

/// Reads what a field holds, or refers to an object that was read before.
void RecordLoader::Follow(const Link& link) {
  const bool isObject = m_table.AllFields()[link.field].kind == Kind::Object;
  const auto known = m_numbers.find(link.record);
  if (known == m_numbers.end()) {
    const Number record = LoadRecord(link.record, isObject);
    return m_table.Relink(link.field, isObject ? Kind::Object : Kind::Record, record);
  }
  if (!isObject || !m_table.Records()[known->second].isShared) {
    RefuseRecord(link.record, "belongs to two places, but is not a shared object");
  }
  m_table.Relink(link.field, Kind::Reference, known->second);
}

Number RecordLoader::LoadRecord(std::int64_t id, bool isShared) {
  m_recordRows.Seek(id);
  if (!m_recordRows.IsAt(id)) RefuseRecord(id, "is missing");
  const Statement& row = m_recordRows.statement;
  if (!Fits<std::uint32_t>(row.Integer(1))) RefuseRecord(id, "has an unknown class");
  RecordTable::Record record = {};
  record.typeId = static_cast<std::uint32_t>(row.Integer(1));
  record.identity = {static_cast<std::uint64_t>(row.Integer(2)),
                     static_cast<std::uint64_t>(row.Integer(3))};
  record.firstField = record.lastField = record.elements = kNone;
  record.isShared = isShared;
  const std::int64_t collection = row.Integer(4);
  for (const gsl_RecordCollection known :
       {gsl_RecordCollection::Objects, gsl_RecordCollection::Unsigneds,
        gsl_RecordCollection::Doubles}) {
    if (collection == static_cast<std::int64_t>(known)) record.collection = known;
  }
  if (collection != static_cast<std::int64_t>(record.collection)) {
    RefuseRecord(id, "has an unknown collection type");
  }
  if (HasElements(record.collection)) {
    record.elements = m_table.AppendElements(ElementsOfRow(id, record.collection));
  }
  m_recordRows.Next();
  LoadClass(record.typeId);
  const Number number = m_table.AppendRecord(record);
  m_numbers.emplace(id, number);
  m_ids.push_back(id);
  LoadFields(id, number);
  return number;
}

Elements RecordLoader::ElementsOfRow(std::int64_t id, gsl_RecordCollection collection) {
  const Statement& row = m_recordRows.statement;
  const std::string_view bytes = row.Bytes(7);
  Elements elements;
  if (collection == gsl_RecordCollection::Unsigneds) {
    if (bytes.size() % kUnsignedBytes != 0) RefuseRecord(id, "has a part of an element");
    for (std::size_t at = 0; at < bytes.size(); at += kUnsignedBytes)
      elements.unsigneds.push_back(GetUnsigned(bytes.data() + at));
    return elements;
  }
  const std::int64_t rows = row.Integer(5);
  const std::int64_t columns = row.Integer(6);
  const std::size_t count = bytes.size() / kDoubleBytes;
  if (!Fits<std::uint32_t>(rows) || !Fits<std::uint32_t>(columns) ||
      bytes.size() != count * kDoubleBytes ||
      static_cast<std::uint64_t>(rows) * static_cast<std::uint64_t>(columns) != count) {
    RefuseRecord(id, "has another number of elements than its rows and columns");
  }
  elements.rows = static_cast<std::size_t>(rows);
  elements.columns = static_cast<std::size_t>(columns);
  for (std::size_t at = 0; at < bytes.size(); at += kDoubleBytes)
    elements.doubles.push_back(GetDouble(bytes.data() + at));
  return elements;
}

void RecordLoader::LoadFields(std::int64_t id, Number record) {
  const auto begin = static_cast<std::ptrdiff_t>(m_waiting.size());
  m_fieldRows.Seek(id);
  for (; m_fieldRows.IsAt(id); m_fieldRows.Next()) {
    const RecordTable::Field field = FieldOfRow(id);
    if (field.kind == Kind::Record || field.kind == Kind::Object) {
      m_waiting.push_back(
          {static_cast<Number>(m_table.AllFields().size()), m_fieldRows.statement.Integer(4)});
    }
    m_table.AppendField(record, field);
  }
  // The first one is followed first.
  std::reverse(m_waiting.begin() + begin, m_waiting.end());
}

RecordTable::Field RecordLoader::FieldOfRow(std::int64_t id) {
  const Statement& row = m_fieldRows.statement;
  RecordTable::Field field = {};
  field.next = kNone;
  field.name = row.IsNull(1) ? kNone : NameOfRow(row.Integer(1));
  const std::int64_t kind = row.Integer(2);
  field.kind = static_cast<Kind>(kind);
  const std::int64_t value = row.Integer(3);
  bool isValue = row.IsInteger(3);
  switch (kind) {
  case static_cast<std::int64_t>(Kind::Integer):
    isValue = isValue && Fits<std::int32_t>(value);
    field.integer = static_cast<std::int32_t>(value);
    break;
  case static_cast<std::int64_t>(Kind::Double):
    isValue = !isValue && row.Bytes(3).size() == kDoubleBytes;
    if (isValue) field.real = GetDouble(row.Bytes(3).data());
    break;
  case static_cast<std::int64_t>(Kind::Boolean):
    isValue = isValue && (value == 0 || value == 1);
    field.boolean = value != 0;
    break;
  case static_cast<std::int64_t>(Kind::String):
    isValue = !isValue && !row.IsNull(3);
    if (isValue) field.text = m_table.AppendText(row.Bytes(3));
    break;
  case static_cast<std::int64_t>(Kind::Null):
    isValue = isValue && Fits<std::uint32_t>(value);
    field.link = static_cast<std::uint32_t>(value);
    break;
  case static_cast<std::int64_t>(Kind::Record):
  case static_cast<std::int64_t>(Kind::Object):
    isValue = row.IsInteger(4);
    field.link = kNone;
    break;
  default:
    isValue = false;
    break;
  }
  if (!isValue) RefuseRecord(id, "has a field whose value is not of its kind");
  return field;
}

void RecordLoader::LoadClass(std::uint32_t typeId) {
  if (!m_classes.insert(typeId).second) return;
  m_classRow.Bind(1, typeId);
  if (!m_classRow.Step()) Refuse("its class " + std::to_string(typeId) + " is missing");
  const std::string_view name = m_classRow.Bytes(0);
  if (ChecksumOfClass(typeId, name) != static_cast<std::uint64_t>(m_classRow.Integer(1))) {
    Refuse("the checksum of its class " + std::to_string(typeId) + " does not match");
  }
  if (!name.empty()) m_table.NameClass(typeId, name);
  m_classRow.Reset();
}

Number RecordLoader::NameOfRow(std::int64_t name) {
  const auto known = m_names.find(name);
  if (known != m_names.end()) return known->second;
  m_nameRow.Bind(1, name);
  if (!m_nameRow.Step()) Refuse("the name " + std::to_string(name) + " of a field is missing");
  const std::int64_t index = m_nameRow.Integer(1);
  if (!Fits<std::int32_t>(index)) Refuse("the number of a field is too large");
  const Number number = m_table.NumberOfName(m_nameRow.Bytes(0), static_cast<std::int32_t>(index));
  m_nameRow.Reset();
  m_names.emplace(name, number);
  return number;
}

} // namespace gsl_model
