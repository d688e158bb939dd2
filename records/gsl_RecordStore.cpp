#include "gsl_RecordStore.h"

#include "RecordData.h"
#include "gsl_RecordError.h"

#include <algorithm>

using gsl_records::Counted;
using gsl_records::GetVarint;
using gsl_records::kMostVarintBytes;
using gsl_records::kNone;
using gsl_records::PutVarint;
using gsl_records::ShapeField;
using Kind = gsl_RecordKind;

namespace {

// A position is the place of a field's value and, in the low bits, the number of the field.
constexpr unsigned int kFieldBits = 24;
constexpr std::uint64_t kEntry = (std::uint64_t{1} << kFieldBits) - 1;

gsl_RecordReader::Position PositionOf(std::uint64_t offset, std::uint64_t field) {
  return (offset << kFieldBits) | field;
}

/// The position of a field, or of the first entry, or the end.
gsl_RecordReader::Position PositionAt(std::uint64_t offset, std::size_t field,
                                      const ShapeField& found, const unsigned char* at) {
  if (found.kind == ShapeField::End) return gsl_RecordReader::kEnd;
  if (found.kind != ShapeField::Entries) return PositionOf(offset, field);
  return *at != gsl_records::kEndOfEntries ? PositionOf(offset, kEntry) : gsl_RecordReader::kEnd;
}

} // namespace

gsl_RecordStore::gsl_RecordStore() : m_data(std::make_unique<Data>()) {}

gsl_RecordStore::~gsl_RecordStore() = default;

gsl_RecordStore::gsl_RecordStore(gsl_RecordStore&&) noexcept = default;

gsl_RecordStore& gsl_RecordStore::operator=(gsl_RecordStore&&) noexcept = default;

std::size_t gsl_RecordStore::RootCount() const {
  m_data->EndAll();
  return m_data->roots.Size();
}

gsl_RecordIndex gsl_RecordStore::Root(std::size_t i) const {
  m_data->EndAll();
  return m_data->roots.Record(i);
}

std::size_t gsl_RecordStore::RootsOfOneClass(std::size_t first) const {
  m_data->EndAll();
  const gsl_records::RecordRoots& roots = m_data->roots;
  const std::uint32_t typeId = m_data->ShapeOf(roots.Record(first)).typeId;
  std::size_t end = first + 1;
  while (end < roots.Size() && m_data->ShapeOf(roots.Record(end)).typeId == typeId)
    ++end;
  return end - first;
}

std::string_view gsl_RecordStore::RootName(std::size_t i) const {
  const std::string* const name = m_data->roots.Name(i);
  return name != nullptr ? std::string_view(*name) : std::string_view();
}

std::size_t gsl_RecordStore::FindRoot(std::string_view name) const {
  const auto found = m_data->rootNames.find(std::string(name));
  return found != m_data->rootNames.end() ? found->second : RootCount();
}

std::string_view gsl_RecordStore::ClassName(std::uint32_t typeId) const {
  const auto found = m_data->classOfType.find(typeId);
  if (found == m_data->classOfType.end()) return {};
  return m_data->classes[found->second].name;
}

std::size_t gsl_RecordStore::RecordCount() const {
  m_data->EndAll();
  return m_data->RecordCount();
}

std::uint32_t gsl_RecordStore::TypeId(gsl_RecordIndex record) const {
  return m_data->ShapeOf(record).typeId;
}

gsl_RecordIdentity gsl_RecordStore::Identity(gsl_RecordIndex record) const {
  gsl_RecordIdentity identity;
  m_data->ReadIdentity(record, identity);
  return identity;
}

gsl_RecordCollection gsl_RecordStore::Collection(gsl_RecordIndex record) const {
  return m_data->ShapeOf(record).collection;
}

gsl_RecordReader::Position gsl_RecordStore::FirstField(gsl_RecordIndex record) const {
  return ReadHeader(record).firstField;
}

gsl_RecordReader::Header gsl_RecordStore::ReadHeader(gsl_RecordIndex record) const {
  const Data& data = *m_data;
  const gsl_records::Shape& shape = data.ShapeOf(record);
  Header header;
  header.typeId = shape.typeId;
  header.collection = shape.collection;
  const unsigned char* const at = data.ReadIdentity(record, header.identity);
  const auto offset = static_cast<std::uint64_t>(at - data.bytes.Begin());
  const ShapeField& first = data.shapes.Fields()[shape.firstField];
  header.firstField = PositionAt(offset, shape.firstField, first, at);
  return header;
}

gsl_RecordReader::Position gsl_RecordStore::ReadField(Position position,
                                                      gsl_RecordField& field) const {
  const Data& data = *m_data;
  const unsigned char* at = data.bytes.Begin() + (position >> kFieldBits);
  const auto number = static_cast<std::size_t>(position & kEntry);
  if (number == kEntry) {
    field.name = {};
    field.index = -1;
    field.kind = static_cast<Kind>(*at);
    at = data.ReadValue(at + 1, field);
    const auto next = static_cast<std::uint64_t>(at - data.bytes.Begin());
    return *at != gsl_records::kEndOfEntries ? PositionOf(next, kEntry) : kEnd;
  }
  const ShapeField& shape = data.shapes.Fields()[number];
  field.name = shape.name;
  field.index = shape.index;
  field.kind = static_cast<Kind>(shape.kind);
  at = data.ReadValue(at, field);
  const auto next = static_cast<std::uint64_t>(at - data.bytes.Begin());
  return PositionAt(next, number + 1, data.shapes.Fields()[number + 1], at);
}

void gsl_RecordStore::ReadUnsigneds(gsl_RecordIndex record,
                                    std::vector<std::uint32_t>& values) const {
  values.clear();
  if (Collection(record) != gsl_RecordCollection::Unsigneds) return;
  std::uint64_t count = 0;
  const unsigned char* at = GetVarint(m_data->ElementsOf(record), count);
  values.resize(static_cast<std::size_t>(count));
  for (std::uint32_t& value : values) {
    std::uint64_t element = 0;
    at = GetVarint(at, element);
    value = static_cast<std::uint32_t>(element);
  }
}

void gsl_RecordStore::ReadDoubles(gsl_RecordIndex record, std::vector<double>& values,
                                  std::size_t& rows, std::size_t& columns) const {
  values.clear();
  rows = columns = 0;
  if (Collection(record) != gsl_RecordCollection::Doubles) return;
  std::uint64_t number = 0;
  const unsigned char* at = GetVarint(m_data->ElementsOf(record), number);
  rows = static_cast<std::size_t>(number);
  at = GetVarint(at, number);
  columns = static_cast<std::size_t>(number);
  values.resize(rows * columns);
  for (double& value : values) {
    value = gsl_records::GetDouble(at);
    at += sizeof value;
  }
}

gsl_RecordStore::Stored gsl_RecordStore::Where() const {
  m_data->EndAll();
  const Data& data = *m_data;
  const std::uint32_t* const offsets = data.offsets.AllShort();
  if (offsets == nullptr) return {};
  return {data.bytes.Begin(),       offsets,           data.roots.Records(),
          data.prefixes.Prefixes(), data.roots.Size(), data.shapes.Shapes().size(),
          data.bytes.Size()};
}

std::uint32_t gsl_RecordStore::ReadShape(std::size_t shape, gsl_RecordCollection& collection,
                                         std::vector<gsl_RecordField>& fields) const {
  const gsl_records::Shape& found = m_data->shapes.Shapes()[shape];
  collection = found.collection;
  fields.clear();
  const ShapeField* field = &m_data->shapes.Fields()[found.firstField];
  for (; field->kind < ShapeField::Entries; ++field) {
    fields.emplace_back();
    fields.back().name = field->name;
    fields.back().index = field->index;
    fields.back().kind = static_cast<Kind>(field->kind);
  }
  return found.typeId;
}

std::string_view gsl_RecordStore::Text(std::uint32_t number) const {
  return m_data->texts[number];
}

gsl_RecordIndex gsl_RecordStore::AddRoot(std::uint32_t typeId, const gsl_RecordIdentity& identity) {
  Data& data = *m_data;
  data.EndAll();
  const gsl_RecordIndex key = data.NextKey();
  Counted(data.roots.Size());
  data.StartRoot(key);
  try {
    data.Push(key, typeId, identity).place = Data::Frame::Place::Root;
  } catch (...) {
    data.roots.Truncate(data.roots.Size() - 1);
    throw;
  }
  return key;
}

void gsl_RecordStore::NameRoot(std::string_view name) {
  Data& data = *m_data;
  if (name.empty()) throw gsl_RecordError("The name of a root must not be empty");
  if (data.roots.Size() == 0) throw gsl_RecordError("There is no root to name");
  data.roots.MakeRoomForLastName();
  const auto [place, isNew] = data.rootNames.emplace(std::string(name), data.roots.Size() - 1);
  if (!isNew) throw gsl_RecordError("Two roots cannot have one name, \"" + place->first + "\"");
  // Nothing throws from here.
  const std::string* const before = data.roots.Name(data.roots.Size() - 1);
  if (before != nullptr) data.rootNames.erase(data.rootNames.find(*before));
  data.roots.SetLastName(&place->first);
}

void gsl_RecordStore::NameClass(std::uint32_t typeId, std::string_view name) {
  Data& data = *m_data;
  const auto known = data.classOfType.find(typeId);
  if (known != data.classOfType.end()) {
    data.classes[known->second].name = name;
    return;
  }
  data.classes.push_back({typeId, std::string(name)});
  try {
    data.classOfType.emplace(typeId, data.classes.size() - 1);
  } catch (...) {
    data.classes.pop_back();
    throw;
  }
}

gsl_RecordIndex gsl_RecordStore::AddRecord(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                                           bool isShared, std::uint32_t typeId,
                                           const gsl_RecordIdentity& identity) {
  using Place = Data::Frame::Place;
  Data& data = *m_data;
  Data::Frame& holder = data.Open(owner);
  const gsl_RecordIndex key = data.NextKey();
  unsigned char* const at = data.AddField(holder, place, isShared ? Kind::Object : Kind::Record);
  Place linkTo = place.name != nullptr ? Place::Value : Place::Entry;
  gsl_records::Number object = kNone;
  if (isShared) {
    object = Counted(data.objects.size());
    data.objects.push_back({key, kNone});
    Data::EndField(holder, place, PutVarint(at, 2 * std::uint64_t{object}));
    holder.ownsObjects = true;
    linkTo = Place::Object;
  } else {
    // The number of the record follows when the record ends.
    Data::EndField(holder, place, at);
  }
  Data::Frame& frame = data.Push(key, typeId, identity);
  frame.place = linkTo;
  frame.object = object;
  return key;
}

void gsl_RecordStore::AddInteger(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                                 std::int32_t value) {
  Data::Frame& frame = m_data->Open(owner);
  unsigned char* const at = m_data->AddField(frame, place, Kind::Integer);
  Data::EndField(frame, place, PutVarint(at, gsl_records::ZigzagOf(value)));
}

void gsl_RecordStore::AddDouble(gsl_RecordIndex owner, const gsl_RecordPlace& place, double value) {
  Data::Frame& frame = m_data->Open(owner);
  unsigned char* const at = m_data->AddField(frame, place, Kind::Double);
  Data::EndField(frame, place, gsl_records::PutDouble(at, value));
}

void gsl_RecordStore::AddBoolean(gsl_RecordIndex owner, const gsl_RecordPlace& place, bool value) {
  Data::Frame& frame = m_data->Open(owner);
  unsigned char* const at = m_data->AddField(frame, place, Kind::Boolean);
  *at = value ? 1 : 0;
  Data::EndField(frame, place, at + 1);
}

void gsl_RecordStore::AddString(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                                std::string_view value) {
  Data::Frame& frame = m_data->Open(owner);
  unsigned char* const at = m_data->AddField(frame, place, Kind::String);
  Data::EndField(frame, place, PutVarint(at, m_data->texts.NumberOf(value)));
}

void gsl_RecordStore::AddReference(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                                   gsl_RecordIndex target) {
  const std::uint64_t object = m_data->NumberOfObject(target);
  Data::Frame& frame = m_data->Open(owner);
  unsigned char* const at = m_data->AddField(frame, place, Kind::Object);
  Data::EndField(frame, place, PutVarint(at, 2 * object + 1));
}

void gsl_RecordStore::AddNull(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                              std::uint32_t typeId) {
  Data::Frame& frame = m_data->Open(owner);
  unsigned char* const at = m_data->AddField(frame, place, Kind::Null);
  Data::EndField(frame, place, PutVarint(at, typeId));
}

void gsl_RecordStore::SetCollection(gsl_RecordIndex record, gsl_RecordCollection collection) {
  m_data->SetCollection(m_data->Open(record), collection);
}

void gsl_RecordStore::SetUnsigneds(gsl_RecordIndex record, const std::uint32_t* values,
                                   std::size_t count) {
  Data::Frame& frame = m_data->Open(record);
  Counted(count);
  m_data->SetCollection(frame, gsl_RecordCollection::Unsigneds);
  constexpr std::size_t kMostBytesEach = 5;
  unsigned char* at = frame.elements.Room(kMostVarintBytes + kMostBytesEach * count);
  at = PutVarint(at, count);
  for (std::size_t i = 0; i < count; ++i)
    at = PutVarint(at, values[i]);
  frame.elements.SetEnd(at);
}

void gsl_RecordStore::SetDoubles(gsl_RecordIndex record, const double* values, std::size_t rows,
                                 std::size_t columns) {
  Data::Frame& frame = m_data->Open(record);
  Counted(rows);
  Counted(columns);
  m_data->SetCollection(frame, gsl_RecordCollection::Doubles);
  const std::size_t count = rows * columns;
  unsigned char* at = frame.elements.Room(2 * kMostVarintBytes + count * sizeof(double));
  at = PutVarint(PutVarint(at, rows), columns);
  for (std::size_t i = 0; i < count; ++i)
    at = gsl_records::PutDouble(at, values[i]);
  frame.elements.SetEnd(at);
}

void gsl_RecordStore::Finish() {
  m_data->EndAll();
}

void gsl_RecordStore::TakeBack(gsl_RecordIndex root) {
  Data& data = *m_data;
  const std::size_t first = data.roots.FirstFrom(root);
  if (first != data.roots.Size()) data.TakeBackRoots(first);
}

void gsl_RecordStore::Clear() {
  m_data = std::make_unique<Data>();
}

std::size_t gsl_RecordStore::MemoryUse() const {
  return m_data->MemoryUse();
}
