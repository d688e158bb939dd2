#include "gsl_RecordStore.h"

#include "gsl_RecordError.h"

#include <algorithm>

namespace {

constexpr std::size_t kMostItems = 0xFFFFFFFFu;

/// A number of items, as a store keeps it.
std::uint32_t Counted(std::size_t count) {
  if (count >= kMostItems) {
    throw gsl_RecordError("The record store is full: it holds at most 4294967294 of each item");
  }
  return static_cast<std::uint32_t>(count);
}

/// Makes sure that one more item needs no memory. Returns the number of that item.
template <class T>
std::uint32_t RoomForOne(std::vector<T>& items) {
  const std::uint32_t next = Counted(items.size());
  if (items.size() == items.capacity()) items.reserve(items.size() + items.size() / 2 + 8);
  return next;
}

template <class T>
std::size_t Held(const std::vector<T>& items) {
  return items.capacity() * sizeof(T);
}

} // namespace

gsl_RecordStore::gsl_RecordStore() = default;

gsl_RecordStore::~gsl_RecordStore() = default;

// NOLINTBEGIN(performance-noexcept-move-constructor): a deque may allocate when it is moved.
gsl_RecordStore::gsl_RecordStore(gsl_RecordStore&&) = default;

gsl_RecordStore& gsl_RecordStore::operator=(gsl_RecordStore&&) = default;
// NOLINTEND(performance-noexcept-move-constructor)

gsl_RecordReader::Position gsl_RecordStore::FirstField(gsl_RecordIndex record) const {
  const Index first = m_records[record].firstField;
  return first != kNone ? first : kEnd;
}

gsl_RecordReader::Position gsl_RecordStore::ReadField(Position position,
                                                      gsl_RecordField& field) const {
  const Field& stored = m_fields[static_cast<std::size_t>(position)];
  field.name = stored.name != kNone ? std::string_view(m_names[stored.name]) : std::string_view();
  field.index = stored.index;
  field.kind = stored.kind;
  field.text = {};
  switch (stored.kind) {
  case gsl_RecordKind::Integer:
    field.integer = stored.integer;
    break;
  case gsl_RecordKind::Double:
    field.real = stored.real;
    break;
  case gsl_RecordKind::Boolean:
    field.boolean = stored.boolean;
    break;
  case gsl_RecordKind::String:
    field.text = {m_characters.data() + m_texts[stored.link].offset, m_texts[stored.link].length};
    break;
  case gsl_RecordKind::Record:
  case gsl_RecordKind::Object:
  case gsl_RecordKind::Reference:
  case gsl_RecordKind::Null:
    field.link = stored.link;
    break;
  }
  return stored.next != kNone ? stored.next : kEnd;
}

gsl_RecordStore::UnsignedArray gsl_RecordStore::Unsigneds(gsl_RecordIndex record) const {
  const Record& r = m_records[record];
  if (r.collection != gsl_RecordCollection::Unsigneds || r.array == kNone) return {nullptr, 0};
  const Array& array = m_arrays[r.array];
  return {m_unsigneds.data() + array.offset, array.rows};
}

gsl_RecordStore::DoubleArray gsl_RecordStore::Doubles(gsl_RecordIndex record) const {
  const Record& r = m_records[record];
  if (r.collection != gsl_RecordCollection::Doubles || r.array == kNone) return {nullptr, 0, 0};
  const Array& array = m_arrays[r.array];
  return {m_doubles.data() + array.offset, array.rows, array.columns};
}

void gsl_RecordStore::ReadUnsigneds(gsl_RecordIndex record,
                                    std::vector<std::uint32_t>& values) const {
  const UnsignedArray array = Unsigneds(record);
  values.assign(array.values, array.values + array.count);
}

void gsl_RecordStore::ReadDoubles(gsl_RecordIndex record, std::vector<double>& values,
                                  std::size_t& rows, std::size_t& columns) const {
  const DoubleArray array = Doubles(record);
  values.assign(array.values, array.values + array.rows * array.columns);
  rows = array.rows;
  columns = array.columns;
}

gsl_RecordIndex gsl_RecordStore::AddRoot(std::uint32_t typeId, const gsl_RecordIdentity& identity) {
  RoomForOne(m_roots);
  const gsl_RecordIndex record = RoomForOne(m_records);
  const RootMark mark = {record, Counted(m_fields.size()), Counted(m_texts.size()),
                         Counted(m_arrays.size())};
  m_records.push_back({typeId, gsl_RecordCollection::None, identity, kNone, kNone, kNone});
  m_roots.push_back(mark);
  return record;
}

gsl_RecordIndex gsl_RecordStore::AddRecord(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                                           bool isShared, std::uint32_t typeId,
                                           const gsl_RecordIdentity& identity) {
  const gsl_RecordIndex record = RoomForOne(m_records);
  Field field = {};
  field.kind = isShared ? gsl_RecordKind::Object : gsl_RecordKind::Record;
  field.link = record;
  AddField(owner, place, field);
  m_records.push_back({typeId, gsl_RecordCollection::None, identity, kNone, kNone, kNone});
  return record;
}

void gsl_RecordStore::AddInteger(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                                 std::int32_t value) {
  Field field = {};
  field.kind = gsl_RecordKind::Integer;
  field.integer = value;
  AddField(owner, place, field);
}

void gsl_RecordStore::AddDouble(gsl_RecordIndex owner, const gsl_RecordPlace& place, double value) {
  Field field = {};
  field.kind = gsl_RecordKind::Double;
  field.real = value;
  AddField(owner, place, field);
}

void gsl_RecordStore::AddBoolean(gsl_RecordIndex owner, const gsl_RecordPlace& place, bool value) {
  Field field = {};
  field.kind = gsl_RecordKind::Boolean;
  field.boolean = value;
  AddField(owner, place, field);
}

void gsl_RecordStore::AddString(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                                std::string_view value) {
  Field field = {};
  field.kind = gsl_RecordKind::String;
  field.link = RoomForOne(m_texts);
  const std::size_t offset = m_characters.size();
  m_characters.append(value);
  try {
    AddField(owner, place, field);
  } catch (...) {
    m_characters.resize(offset);
    throw;
  }
  m_texts.push_back({offset, value.size()});
}

void gsl_RecordStore::AddReference(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                                   gsl_RecordIndex target) {
  Field field = {};
  field.kind = gsl_RecordKind::Reference;
  field.link = target;
  AddField(owner, place, field);
}

void gsl_RecordStore::AddNull(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                              std::uint32_t typeId) {
  Field field = {};
  field.kind = gsl_RecordKind::Null;
  field.link = typeId;
  AddField(owner, place, field);
}

void gsl_RecordStore::SetCollection(gsl_RecordIndex record, gsl_RecordCollection collection) {
  m_records[record].collection = collection;
}

void gsl_RecordStore::SetUnsigneds(gsl_RecordIndex record, const std::uint32_t* values,
                                   std::size_t count) {
  const Array array = {m_unsigneds.size(), Counted(count), 1};
  RoomForOne(m_arrays);
  m_unsigneds.insert(m_unsigneds.end(), values, values + count);
  AddArray(record, gsl_RecordCollection::Unsigneds, array);
}

void gsl_RecordStore::SetDoubles(gsl_RecordIndex record, const double* values, std::size_t rows,
                                 std::size_t columns) {
  const Array array = {m_doubles.size(), Counted(rows), Counted(columns)};
  RoomForOne(m_arrays);
  m_doubles.insert(m_doubles.end(), values, values + rows * columns);
  AddArray(record, gsl_RecordCollection::Doubles, array);
}

void gsl_RecordStore::AddArray(gsl_RecordIndex record, gsl_RecordCollection collection,
                               const Array& array) {
  m_records[record].collection = collection;
  m_records[record].array = static_cast<Index>(m_arrays.size());
  m_arrays.push_back(array);
  m_outOfOrder = m_outOfOrder || (!m_roots.empty() && record < m_roots.back().record);
}

gsl_RecordStore::Index gsl_RecordStore::InternName(const char* name) {
  const auto found = m_nameOf.find(name);
  if (found != m_nameOf.end()) return found->second;
  // An entry of a list has none, so that an empty name would read as an entry.
  if (*name == '\0') throw gsl_RecordError("A field of a record must have a name");
  const Index index = Counted(m_names.size());
  m_names.emplace_back(name);
  try {
    m_nameOf.emplace(m_names.back(), index);
  } catch (...) {
    m_names.pop_back();
    throw;
  }
  return index;
}

void gsl_RecordStore::AddField(gsl_RecordIndex owner, const gsl_RecordPlace& place, Field field) {
  const Index at = RoomForOne(m_fields);
  field.name = place.name != nullptr ? InternName(place.name) : kNone;
  field.index = place.index;
  field.next = kNone;
  m_fields.push_back(field);
  Record& record = m_records[owner];
  if (record.firstField == kNone) {
    record.firstField = at;
  } else {
    m_fields[record.lastField].next = at;
  }
  record.lastField = at;
  m_outOfOrder = m_outOfOrder || (!m_roots.empty() && owner < m_roots.back().record);
}

void gsl_RecordStore::TakeBack(gsl_RecordIndex root) {
  const auto first = std::lower_bound(
      m_roots.begin(), m_roots.end(), root,
      [](const RootMark& mark, gsl_RecordIndex record) { return mark.record < record; });
  if (first == m_roots.end()) return;
  const RootMark mark = *first;
  DropArrays(mark.arrays, mark.record);
  if (mark.texts < m_texts.size()) m_characters.resize(m_texts[mark.texts].offset);
  m_roots.erase(first, m_roots.end());
  m_records.erase(m_records.begin() + mark.record, m_records.end());
  m_fields.erase(m_fields.begin() + mark.fields, m_fields.end());
  m_texts.erase(m_texts.begin() + mark.texts, m_texts.end());
  if (m_outOfOrder) RelinkEarlierRecords(mark.record);
}

/// Takes back the arrays from number `first` on, whichever record they belong to.
void gsl_RecordStore::DropArrays(Index first, gsl_RecordIndex root) {
  if (first == m_arrays.size()) return;
  for (std::size_t i = m_outOfOrder ? 0 : root; i < m_records.size(); ++i) {
    Record& record = m_records[i];
    if (record.array == kNone || record.array < first) continue;
    const std::size_t offset = m_arrays[record.array].offset;
    if (record.collection == gsl_RecordCollection::Unsigneds) {
      m_unsigneds.resize(std::min(m_unsigneds.size(), offset));
    } else {
      m_doubles.resize(std::min(m_doubles.size(), offset));
    }
    record.array = kNone;
  }
  m_arrays.erase(m_arrays.begin() + first, m_arrays.end());
}

/// Cuts the fields that were taken back off the records that remain.
void gsl_RecordStore::RelinkEarlierRecords(gsl_RecordIndex root) {
  const auto isGone = [&](Index field) { return field == kNone || field >= m_fields.size(); };
  for (gsl_RecordIndex i = 0; i < root; ++i) {
    Record& record = m_records[i];
    if (record.lastField == kNone || !isGone(record.lastField)) continue;
    if (isGone(record.firstField)) {
      record.firstField = record.lastField = kNone;
      continue;
    }
    Index last = record.firstField;
    while (!isGone(m_fields[last].next))
      last = m_fields[last].next;
    m_fields[last].next = kNone;
    record.lastField = last;
  }
}

void gsl_RecordStore::Clear() {
  if (!m_roots.empty()) TakeBack(m_roots.front().record);
  m_outOfOrder = false;
}

std::size_t gsl_RecordStore::MemoryUse() const {
  std::size_t bytes = Held(m_roots) + Held(m_records) + Held(m_fields) + Held(m_texts) +
                      Held(m_arrays) + Held(m_unsigneds) + Held(m_doubles) +
                      m_characters.capacity();
  for (const std::string& name : m_names)
    bytes += name.capacity() + sizeof(std::string);
  return bytes;
}
