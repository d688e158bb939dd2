#include "RecordTable.h"

#include "gsl_RecordError.h"

#include <algorithm>
#include <limits>

namespace gsl_model {

namespace {

using Kind = gsl_RecordKind;

Number Counted(std::size_t count) {
  if (count >= kNone) {
    throw gsl_RecordError("The transaction is full: it holds at most 4294967294 of each item");
  }
  return static_cast<Number>(count);
}

RecordTable::Field FieldOf(Kind kind) {
  RecordTable::Field field = {};
  field.next = kNone;
  field.name = kNone;
  field.kind = kind;
  return field;
}

/// The number as it is in the key of a name.
std::string KeyOf(std::string_view name, std::int32_t number) {
  return std::to_string(number) + ' ' + std::string(name);
}

} // namespace

RecordTable::RecordTable() = default;

RecordTable::~RecordTable() = default;

std::size_t RecordTable::RootCount() const {
  return m_roots.size();
}

gsl_RecordIndex RecordTable::Root(std::size_t i) const {
  return m_roots[i].record;
}

std::string_view RecordTable::RootName(std::size_t i) const {
  const std::string* const name = m_roots[i].name;
  return name != nullptr ? std::string_view(*name) : std::string_view();
}

std::size_t RecordTable::FindRoot(std::string_view name) const {
  const auto found = m_rootNames.find(std::string(name));
  return found != m_rootNames.end() ? found->second : m_roots.size();
}

std::string_view RecordTable::ClassName(std::uint32_t typeId) const {
  const auto found = m_classOfType.find(typeId);
  return found != m_classOfType.end() ? std::string_view(m_classes[found->second].name)
                                      : std::string_view();
}

std::uint32_t RecordTable::TypeId(gsl_RecordIndex record) const {
  return m_records[record].typeId;
}

gsl_RecordIdentity RecordTable::Identity(gsl_RecordIndex record) const {
  return m_records[record].identity;
}

gsl_RecordCollection RecordTable::Collection(gsl_RecordIndex record) const {
  return m_records[record].collection;
}

gsl_RecordReader::Position RecordTable::FirstField(gsl_RecordIndex record) const {
  const Number first = m_records[record].firstField;
  return first != kNone ? first : kEnd;
}

gsl_RecordReader::Position RecordTable::ReadField(Position position, gsl_RecordField& field) const {
  const Field& stored = m_fields[static_cast<std::size_t>(position)];
  field.name = {};
  field.index = -1;
  if (stored.name != kNone) {
    field.name = m_names[stored.name].name;
    field.index = m_names[stored.name].number;
  }
  field.kind = stored.kind;
  switch (stored.kind) {
  case Kind::Integer:
    field.integer = stored.integer;
    break;
  case Kind::Double:
    field.real = stored.real;
    break;
  case Kind::Boolean:
    field.boolean = stored.boolean;
    break;
  case Kind::String:
    field.text = m_texts[stored.text];
    break;
  case Kind::Object:
  case Kind::Reference:
    field.object = stored.link;
    field.link = stored.link;
    break;
  default:
    field.link = stored.link;
    break;
  }
  return stored.next != kNone ? stored.next : kEnd;
}

const Elements& RecordTable::ElementsOf(const Record& record) const {
  static const Elements kNoElements;
  return record.elements != kNone ? m_elements[record.elements] : kNoElements;
}

void RecordTable::ReadUnsigneds(gsl_RecordIndex record, std::vector<std::uint32_t>& values) const {
  values.clear();
  const Record& from = m_records[record];
  if (from.collection == gsl_RecordCollection::Unsigneds) values = ElementsOf(from).unsigneds;
}

void RecordTable::ReadDoubles(gsl_RecordIndex record, std::vector<double>& values,
                              std::size_t& rows, std::size_t& columns) const {
  values.clear();
  rows = columns = 0;
  const Record& from = m_records[record];
  if (from.collection != gsl_RecordCollection::Doubles) return;
  const Elements& elements = ElementsOf(from);
  values = elements.doubles;
  rows = elements.rows;
  columns = elements.columns;
}

gsl_RecordIndex RecordTable::AddRoot(std::uint32_t typeId, const gsl_RecordIdentity& identity) {
  m_open.clear();
  m_open.reserve(1);
  const Number record = Counted(m_records.size());
  m_roots.push_back({nullptr, record, kNone, false, m_fields.size(), m_texts.size(),
                     m_elements.size(), m_classes.size()});
  try {
    AppendRecord({typeId, gsl_RecordCollection::None, identity, kNone, kNone, kNone, false});
  } catch (...) {
    m_roots.pop_back();
    throw;
  }
  m_open.push_back(record);
  return record;
}

void RecordTable::NameRoot(std::string_view name) {
  if (name.empty()) throw gsl_RecordError("The name of a root must not be empty");
  if (m_roots.empty()) throw gsl_RecordError("There is no root to name");
  const auto last = static_cast<Number>(m_roots.size() - 1);
  const auto [place, isNew] = m_rootNames.emplace(std::string(name), last);
  if (!isNew && !m_isReplacing) {
    throw gsl_RecordError("Two roots cannot have one name, \"" + place->first + "\"");
  }
  // Nothing throws from here.
  StoredRoot& root = m_roots.back();
  if (root.name == &place->first) return;
  ReleaseName(root);
  root.name = &place->first;
  root.replaced = isNew ? kNone : place->second;
  place->second = last;
}

/// Gives the name back to the root that had it before. Throws nothing.
void RecordTable::ReleaseName(const StoredRoot& root) {
  if (root.name == nullptr) return;
  const auto named = m_rootNames.find(*root.name);
  if (root.replaced != kNone) {
    named->second = root.replaced;
  } else {
    m_rootNames.erase(named);
  }
}

void RecordTable::NameClass(std::uint32_t typeId, std::string_view name) {
  const auto known = m_classOfType.find(typeId);
  if (known != m_classOfType.end()) {
    m_classes[known->second].name = name;
    return;
  }
  m_classes.push_back({typeId, std::string(name)});
  try {
    m_classOfType.emplace(typeId, m_classes.size() - 1);
  } catch (...) {
    m_classes.pop_back();
    throw;
  }
}

void RecordTable::Reopen(gsl_RecordIndex record) {
  if (!m_open.empty() && m_open.back() == record) return;
  const auto found = std::find(m_open.rbegin(), m_open.rend(), record);
  if (found == m_open.rend()) {
    throw gsl_RecordError("A record that has ended takes no further fields");
  }
  m_open.erase(found.base(), m_open.end());
}

Number RecordTable::NameOf(gsl_RecordIndex owner, const gsl_RecordPlace& place) {
  if (place.name == nullptr) {
    if (m_records[owner].collection == gsl_RecordCollection::Objects) return kNone;
    throw gsl_RecordError("A field of a record must have a name, unless the record is a list");
  }
  if (*place.name == '\0') throw gsl_RecordError("A field of a record must have a name");
  if (m_lastName != kNone) {
    const Number likely = m_nameAfter[m_lastName];
    if (likely != kNone && m_names[likely].number == place.index &&
        m_names[likely].name == place.name) {
      return m_lastName = likely;
    }
  }
  const Number name = NumberOfName(place.name, place.index);
  if (m_lastName != kNone) m_nameAfter[m_lastName] = name;
  return m_lastName = name;
}

Number RecordTable::NumberOfName(std::string_view name, std::int32_t number) {
  std::string key = KeyOf(name, number);
  const auto known = m_nameNumbers.find(key);
  if (known != m_nameNumbers.end()) return known->second;
  const Number next = Counted(m_names.size());
  m_nameAfter.push_back(kNone);
  try {
    m_names.push_back({std::string(name), number});
    try {
      m_nameNumbers.emplace(std::move(key), next);
    } catch (...) {
      m_names.pop_back();
      throw;
    }
  } catch (...) {
    m_nameAfter.pop_back();
    throw;
  }
  return next;
}

/// Adds a field to a record. The value of the field is complete.
void RecordTable::Push(gsl_RecordIndex record, const gsl_RecordPlace& place, const Field& field) {
  Reopen(record);
  Field named = field;
  named.name = NameOf(record, place);
  AppendField(record, named);
}

gsl_RecordIndex RecordTable::AddRecord(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                                       bool isShared, std::uint32_t typeId,
                                       const gsl_RecordIdentity& identity) {
  const Number record = Counted(m_records.size());
  Field field = FieldOf(isShared ? Kind::Object : Kind::Record);
  field.link = record;
  Push(owner, place, field);
  AppendRecord({typeId, gsl_RecordCollection::None, identity, kNone, kNone, kNone, isShared});
  m_open.push_back(record);
  return record;
}

void RecordTable::AddInteger(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                             std::int32_t value) {
  Field field = FieldOf(Kind::Integer);
  field.integer = value;
  Push(owner, place, field);
}

void RecordTable::AddDouble(gsl_RecordIndex owner, const gsl_RecordPlace& place, double value) {
  Field field = FieldOf(Kind::Double);
  field.real = value;
  Push(owner, place, field);
}

void RecordTable::AddBoolean(gsl_RecordIndex owner, const gsl_RecordPlace& place, bool value) {
  Field field = FieldOf(Kind::Boolean);
  field.boolean = value;
  Push(owner, place, field);
}

void RecordTable::AddString(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                            std::string_view value) {
  Field field = FieldOf(Kind::String);
  field.text = AppendText(value);
  Push(owner, place, field);
}

void RecordTable::AddReference(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                               gsl_RecordIndex target) {
  if (target >= m_records.size() || !m_records[target].isShared) {
    throw gsl_RecordError("A field must refer to a shared object");
  }
  Field field = FieldOf(Kind::Reference);
  field.link = target;
  Push(owner, place, field);
}

void RecordTable::AddNull(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                          std::uint32_t typeId) {
  Field field = FieldOf(Kind::Null);
  field.link = typeId;
  Push(owner, place, field);
}

void RecordTable::SetCollection(gsl_RecordIndex record, gsl_RecordCollection collection) {
  Reopen(record);
  m_records[record].collection = collection;
}

void RecordTable::SetUnsigneds(gsl_RecordIndex record, const std::uint32_t* values,
                               std::size_t count) {
  Counted(count);
  SetCollection(record, gsl_RecordCollection::Unsigneds);
  m_records[record].elements = AppendElements({{values, values + count}, {}, 0, 0});
}

void RecordTable::SetDoubles(gsl_RecordIndex record, const double* values, std::size_t rows,
                             std::size_t columns) {
  Counted(rows);
  Counted(columns);
  SetCollection(record, gsl_RecordCollection::Doubles);
  m_records[record].elements =
      AppendElements({{}, {values, values + rows * columns}, rows, columns});
}

void RecordTable::Finish() {
  m_open.clear();
}

void RecordTable::TakeBack(gsl_RecordIndex root) {
  m_open.clear();
  while (!m_roots.empty() && m_roots.back().record >= root) {
    const StoredRoot& last = m_roots.back();
    ReleaseName(last);
    m_records.resize(last.record);
    m_fields.resize(last.fieldsBefore);
    m_texts.resize(last.textsBefore);
    m_elements.resize(last.elementsBefore);
    while (m_classes.size() > last.classesBefore) {
      m_classOfType.erase(m_classes.back().typeId);
      m_classes.pop_back();
    }
    m_roots.pop_back();
  }
}

bool RecordTable::RemoveRoot(std::string_view name) {
  const auto found = m_rootNames.find(std::string(name));
  if (found == m_rootNames.end() || m_roots[found->second].isRemoved) return false;
  for (Number root = found->second; root != kNone; root = m_roots[root].replaced)
    m_roots[root].isRemoved = true;
  return true;
}

bool RecordTable::Counts(std::size_t root) const {
  const StoredRoot& found = m_roots[root];
  if (found.isRemoved) return false;
  return found.name == nullptr || m_rootNames.find(*found.name)->second == root;
}

Number RecordTable::AppendRecord(const Record& record) {
  const Number number = Counted(m_records.size());
  m_records.push_back(record);
  return number;
}

void RecordTable::AppendField(Number record, const Field& field) {
  const Number number = Counted(m_fields.size());
  m_fields.push_back(field);
  Record& holder = m_records[record];
  if (holder.firstField == kNone) {
    holder.firstField = number;
  } else {
    m_fields[holder.lastField].next = number;
  }
  holder.lastField = number;
}

void RecordTable::Relink(Number field, gsl_RecordKind kind, Number record) {
  m_fields[field].kind = kind;
  m_fields[field].link = record;
}

Number RecordTable::AppendText(std::string_view text) {
  const Number number = Counted(m_texts.size());
  m_texts.emplace_back(text);
  return number;
}

Number RecordTable::AppendElements(Elements elements) {
  const Number number = Counted(m_elements.size());
  m_elements.push_back(std::move(elements));
  return number;
}

void RecordTable::AppendRoot(Number record, std::string_view name) {
  m_roots.push_back({nullptr, record, kNone, false, 0, 0, 0, 0});
  if (!name.empty()) NameRoot(name);
}

} // namespace gsl_model
