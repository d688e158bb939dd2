#include "cls_ReadVisitor.h"

#include "cls_ListReader.h"
#include "cls_MetadataRegistrar.h"
#include "cls_RecordException.h"
#include "gsl_RecordReader.h"
#include "gsl_RecordStore.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

using Kind = gsl_RecordKind;

namespace {

constexpr const char* kSourceUnit = "gsl/host/cls/cls_ReadVisitor";

// Each kind of collection is stored under the host's number.
static_assert(static_cast<int>(gsl_RecordCollection::None) == cls_NoCollection);
static_assert(static_cast<int>(gsl_RecordCollection::Objects) == cls_ObjectList);
static_assert(static_cast<int>(gsl_RecordCollection::Unsigneds) == cls_UnsignedList);
static_assert(static_cast<int>(gsl_RecordCollection::Doubles) == cls_DoubleMatrix);

// Each kind of value is stored under its number.
static_assert(static_cast<unsigned int>(Kind::Integer) == cls_StoredFields::Integer);
static_assert(static_cast<unsigned int>(Kind::Double) == cls_StoredFields::Double);
static_assert(static_cast<unsigned int>(Kind::Boolean) == cls_StoredFields::Boolean);
static_assert(static_cast<unsigned int>(Kind::String) == cls_StoredFields::Text);
static_assert(static_cast<unsigned int>(Kind::Record) == cls_StoredFields::Record);

constexpr std::size_t kMostKept = 64;

[[noreturn]] void Refuse(const std::string& why, int line, const cls_Uid& uid = cls_Uid()) {
  nex_Exception::Throw(cls_RecordException(cow_String(why.data(), why.size()), uid), kSourceUnit,
                       line);
}

const char* NameOf(Kind kind) {
  switch (kind) {
  case Kind::Integer:
    return "an integer";
  case Kind::Double:
    return "a double";
  case Kind::Boolean:
    return "a boolean";
  case Kind::String:
    return "a string";
  case Kind::Record:
  case Kind::Object:
    return "a record";
  case Kind::Reference:
    return "a reference";
  case Kind::Null:
    return "a null object";
  }
  return "nothing known";
}

/// Returns the name that the class is registered under, or its number.
std::string ClassName(unsigned int typeId) {
  const cls_ClassMetadata* const known =
      omi_Singleton<cls_MetadataRegistrar>::Instance().ClassRegistrar().FindClass(typeId);
  if (known != nullptr) return known->Name();
  char number[16];
  std::snprintf(number, sizeof number, "0x%08X", typeId);
  return number;
}

cls_Uid UidOf(const gsl_RecordIdentity& identity) {
  return cls_Uid(identity.prefix, identity.serial);
}

std::size_t RootNamed(const gsl_RecordReader& reader, const cow_String& name) {
  const std::size_t root = reader.FindRoot({name.CStr(), name.Length()});
  if (root < reader.RootCount()) return root;
  Refuse("There is no root named \"" + std::string(name.CStr()) + "\"", __LINE__);
}

/// The byte after the last entry of a list.
constexpr unsigned char kEndOfEntries = 0xFF;

bool HoldsRecord(Kind kind) {
  return kind == Kind::Record || kind == Kind::Object;
}

/// Names are short, so that a call of a library would cost more than the comparison.
bool IsNamed(std::string_view name, const char* wanted) {
  for (const char c : name) {
    if (*wanted != c || c == '\0') return false;
    ++wanted;
  }
  return *wanted == '\0';
}

} // namespace

cls_Load::cls_Load(const gsl_RecordReader& source) : m_reader(source) {}

cls_Load::~cls_Load() = default;

std::size_t cls_Load::RootCount() const {
  return m_reader.RootCount();
}

cow_String cls_Load::TextOf(std::string_view text) {
  constexpr std::size_t kLeastDistance = 32;
  if (text.empty() || text.size() > kMostKept) return cow_String(text.data(), text.size());
  const std::size_t place = reinterpret_cast<std::uintptr_t>(text.data()) / kLeastDistance;
  cow_String& recent = m_texts[place % kRecentTexts];
  const bool isKnown =
      recent.Length() == text.size() && std::memcmp(recent.CStr(), text.data(), text.size()) == 0;
  if (!isKnown) recent = cow_String(text.data(), text.size());
  return recent;
}

cow_String cls_Load::ReadStoredText(std::uint32_t number) {
  const std::string_view text = m_store->Text(number);
  if (text.size() > kMostKept) return cow_String(text.data(), text.size());
  NumberedText& recent = m_storedTexts[number % kRecentTexts];
  recent.number = NumberedText().number;
  recent.text = cow_String(text.data(), text.size());
  recent.names = nullptr;
  recent.number = number;
  return recent.text;
}

void cls_Load::FindStorage() {
  if (std::exchange(m_hasLooked, true)) return;
  m_store = dynamic_cast<const gsl_RecordStore*>(&m_reader);
  if (m_store == nullptr) return;
  const gsl_RecordStore::Stored stored = m_store->Where();
  std::vector<std::size_t> firstOfShape;
  std::vector<gsl_RecordField> fields;
  for (std::size_t i = 0; i < stored.shapeCount; ++i) {
    gsl_RecordCollection collection{};
    const std::uint32_t typeId = m_store->ReadShape(i, collection, fields);
    m_shapes.push_back({typeId, static_cast<int>(collection), nullptr, nullptr});
    firstOfShape.push_back(m_fields.size());
    for (const gsl_RecordField& field : fields) {
      m_fields.push_back(
          {field.name.data(), field.name.size(), static_cast<unsigned int>(field.kind)});
    }
    m_fields.push_back({"", 0, cls_StoredFields::None});
  }
  for (std::size_t i = 0; i < m_shapes.size(); ++i)
    m_shapes[i].fields = &m_fields[firstOfShape[i]];
  m_storage = {stored.bytes, stored.offsets, stored.roots, stored.prefixes, stored.rootCount};
  m_storage.endOfWords = cls_StoredFields::EndOfWords(stored.bytes, stored.byteCount);
}

void cls_ReadVisitor::Start(std::uint32_t record) {
  if (record != kNoRecord && m_load.m_storage.bytes != nullptr) {
    StartStored(record);
  } else if (record != kNoRecord) {
    const gsl_RecordReader::Header header = m_load.m_reader.ReadHeader(record);
    m_record = record;
    m_typeId = header.typeId;
    m_collection = static_cast<int>(header.collection);
    m_uid = UidOf(header.identity);
    m_firstField = m_expected = header.firstField;
  }
  if (m_depth > kMostNesting) Refuse("Records are nested too deep to read", __LINE__, GetUid());
}

cls_ReadVisitor::cls_ReadVisitor(cls_Load& owner, std::uint32_t index, unsigned int level,
                                 const Place& where)
    : m_load(owner), m_depth(level), m_foundAt(where) {
  Start(index);
}

void cls_ReadVisitor::StartRoot(std::size_t root) {
  m_load.FindStorage();
  const gsl_RecordReader& reader = m_load.m_reader;
  if (root >= reader.RootCount()) {
    Refuse("There is no root " + std::to_string(root) + "; the load has " +
               std::to_string(reader.RootCount()),
           __LINE__);
  }
  Start(reader.Root(root));
}

cls_ReadVisitor::cls_ReadVisitor(cls_Load& owner, const cow_String& name)
    : cls_ReadVisitor(owner, RootNamed(owner.m_reader, name)) {}

void cls_ReadVisitor::StartField(const cls_ReadVisitor& parent, const cls_FieldHandle& handle) {
  gsl_RecordField field;
  const gsl_RecordField* const found = parent.Find(handle, field) ? &field : nullptr;
  const std::uint32_t record = parent.OwnRecord(found);
  m_foundAt = parent.PlaceOf(found);
  Start(record);
}

cow_String cls_ReadVisitor::ReadStoredText(std::uint32_t number) const {
  return m_load.ReadStoredText(number);
}

void cls_ReadVisitor::LeaveStorage() const {
  if (!m_stored.IsThere()) return;
  const gsl_RecordReader& reader = m_load.m_reader;
  m_firstField = m_expected = reader.FirstField(m_record);
  gsl_RecordField field;
  for (std::size_t taken = m_stored.Taken(); taken != 0; --taken)
    m_expected = reader.ReadField(m_expected, field);
  m_stored = cls_StoredFields();
}

cls_ReadVisitor::Place cls_ReadVisitor::PlaceOf(const gsl_RecordField* field) const {
  return {m_record, field != nullptr ? field->name : std::string_view(), 0, kNoEntry};
}

std::string cls_ReadVisitor::DescribePlace() const {
  std::string where = "root " + std::to_string(m_foundAt.root);
  if (m_foundAt.holder != kNoRecord) {
    where = "field \"" + std::string(m_foundAt.field) + "\" of " +
            ClassName(m_load.m_reader.TypeId(m_foundAt.holder));
  }
  if (m_foundAt.entry != kNoEntry)
    return "Entry " + std::to_string(m_foundAt.entry) + " of " + where;
  where[0] = where[0] == 'r' ? 'R' : 'F';
  return where;
}

bool cls_ReadVisitor::Find(const cls_FieldHandle& handle, gsl_RecordField& field) const {
  LeaveStorage();
  const char* const wanted = handle.Name();
  if (m_expected != gsl_RecordReader::kEnd) {
    const std::uint64_t next = m_load.m_reader.ReadField(m_expected, field);
    if (IsNamed(field.name, wanted)) {
      m_expected = next;
      return true;
    }
  }
  std::uint64_t position = m_firstField;
  while (position != gsl_RecordReader::kEnd) {
    position = m_load.m_reader.ReadField(position, field);
    if (IsNamed(field.name, wanted)) {
      m_expected = position;
      return true;
    }
  }
  return false;
}

bool cls_ReadVisitor::FindPlain(const cls_FieldHandle& handle, int kind,
                                gsl_RecordField& field) const {
  if (!Find(handle, field)) return false;
  if (static_cast<int>(field.kind) != kind) RefuseKind(field, kind);
  return true;
}

std::uint32_t cls_ReadVisitor::OwnRecord(const gsl_RecordField* field) const {
  if (field == nullptr || field->kind == Kind::Null) return kNoRecord;
  if (!HoldsRecord(field->kind)) RefuseKind(*field, static_cast<int>(Kind::Record));
  return field->link;
}

std::uint32_t cls_ReadVisitor::FindObject(const cls_FieldHandle& handle, Place& place,
                                          std::uint64_t& object) const {
  gsl_RecordField field;
  if (!Find(handle, field)) return kNoRecord;
  place = PlaceOf(&field);
  object = field.kind == Kind::Record ? kUnshared : field.object;
  return field.kind == Kind::Reference ? field.link : OwnRecord(&field);
}

void cls_ReadVisitor::RefuseKind(const gsl_RecordField& field, int wanted) const {
  Refuse("Field \"" + std::string(field.name) + "\" holds " + NameOf(field.kind) + ", not " +
             NameOf(static_cast<Kind>(wanted)),
         __LINE__, GetUid());
}

int cls_ReadVisitor::FindInteger(const cls_FieldHandle& field, int defaultValue) const {
  gsl_RecordField found;
  return FindPlain(field, static_cast<int>(Kind::Integer), found) ? found.integer : defaultValue;
}

double cls_ReadVisitor::FindDouble(const cls_FieldHandle& field, double defaultValue) const {
  gsl_RecordField found;
  return FindPlain(field, static_cast<int>(Kind::Double), found) ? found.real : defaultValue;
}

bool cls_ReadVisitor::FindBoolean(const cls_FieldHandle& field, bool defaultValue) const {
  gsl_RecordField found;
  return FindPlain(field, static_cast<int>(Kind::Boolean), found) ? found.boolean : defaultValue;
}

cow_String cls_ReadVisitor::FindString(const cls_FieldHandle& field,
                                       const cow_String& defaultValue) const {
  gsl_RecordField found;
  if (!FindPlain(field, static_cast<int>(Kind::String), found)) return defaultValue;
  return m_load.TextOf(found.text);
}

void cls_ReadVisitor::CheckDerived(unsigned int typeId) const {
  const cls_ClassRegistrar& classes =
      omi_Singleton<cls_MetadataRegistrar>::Instance().ClassRegistrar();
  if (!classes.InheritanceCheck(TypeId(), typeId)) {
    Refuse(DescribePlace() + " holds a record of class " + ClassName(TypeId()) + ", not " +
               ClassName(typeId),
           __LINE__, GetUid());
  }
}

void* cls_ReadVisitor::CreateDerived(unsigned int typeId) const {
  CheckTypeId(typeId);
  const cls_ClassRegistrar& classes =
      omi_Singleton<cls_MetadataRegistrar>::Instance().ClassRegistrar();
  return classes.Create(*this, typeId);
}

const std::any* cls_ReadVisitor::KnownObject(std::uint64_t object, std::uint32_t record) const {
  if (object == kUnshared) return nullptr;
  const auto [place, isNew] = m_load.m_objects.try_emplace(object);
  if (isNew) return nullptr;
  if (!place->second.has_value()) {
    Refuse("An object contains itself", __LINE__, UidOf(m_load.m_reader.Identity(record)));
  }
  return &place->second;
}

void cls_ReadVisitor::Remember(std::uint64_t object, std::any holder) const {
  if (object != kUnshared) m_load.m_objects[object] = std::move(holder);
}

void cls_ReadVisitor::Forget(std::uint64_t object) const noexcept {
  m_load.m_objects.erase(object);
}

void cls_ReadVisitor::RefuseHolder(std::uint32_t record) const {
  Refuse("An object is read into holders of different classes", __LINE__,
         UidOf(m_load.m_reader.Identity(record)));
}

void cls_ReadVisitor::CheckCollectionType(int type) const {
  if (IsAbsent() || m_collection == type) return;
  Refuse("A record is not a collection of the type asked for", __LINE__, GetUid());
}

void cls_ReadVisitor::ReadUnsigneds(std::vector<unsigned int>& elements) const {
  CheckCollectionType(cls_UnsignedList);
  elements.clear();
  if (IsAbsent()) return;
  if (!m_stored.HasElementsOnly()) return m_load.m_reader.ReadUnsigneds(m_record, elements);
  std::uint64_t number = 0;
  const unsigned char* at = cls_StoredFields::NumberAt(m_stored.At(), number);
  elements.resize(static_cast<std::size_t>(number));
  for (unsigned int& element : elements) {
    at = cls_StoredFields::NumberAt(at, number);
    element = static_cast<unsigned int>(number);
  }
}

void cls_ReadVisitor::ReadDoubles(std::vector<double>& entries, std::size_t& rows,
                                  std::size_t& columns) const {
  CheckCollectionType(cls_DoubleMatrix);
  entries.clear();
  rows = columns = 0;
  if (!IsAbsent()) m_load.m_reader.ReadDoubles(m_record, entries, rows, columns);
}

cls_ListReader* cls_ReadVisitor::GetListReader() const {
  CheckCollectionType(cls_ObjectList);
  return new cls_ListReader(*this);
}

cls_ListReader::cls_ListReader(const cls_ReadVisitor& owner)
    : m_list(owner), m_stored(owner.m_stored.HasElementsOnly() ? owner.m_stored.At() : nullptr),
      m_next(gsl_RecordReader::kEnd), m_taken(0) {
  if (m_stored != nullptr) return;
  owner.LeaveStorage();
  m_next = owner.m_firstField;
}

bool cls_ListReader::HasNext() const {
  return m_stored != nullptr ? *m_stored != kEndOfEntries : m_next != gsl_RecordReader::kEnd;
}

void cls_ListReader::LeaveStorage() {
  const gsl_RecordReader& reader = m_list.m_load.m_reader;
  m_stored = nullptr;
  m_next = reader.FirstField(m_list.m_record);
  gsl_RecordField entry;
  for (std::size_t taken = m_taken; taken != 0; --taken)
    m_next = reader.ReadField(m_next, entry);
}

cls_ReadVisitor cls_ListReader::Next() {
  if (!HasNext()) Refuse("A list has no further entry", __LINE__, m_list.GetUid());
  cls_ReadVisitor::Place place = m_list.m_foundAt;
  if (m_stored != nullptr && *m_stored == cls_StoredFields::Record) {
    std::uint64_t record = 0;
    m_stored = cls_StoredFields::NumberAt(m_stored + 1, record);
    place.entry = m_taken++;
    return cls_ReadVisitor(m_list.m_load, static_cast<std::uint32_t>(record), m_list.m_depth + 1,
                           place);
  }
  if (m_stored != nullptr) LeaveStorage();
  gsl_RecordField entry;
  m_next = m_list.m_load.m_reader.ReadField(m_next, entry);
  place.entry = m_taken++;
  return cls_ReadVisitor(m_list.m_load, m_list.OwnRecord(&entry), m_list.m_depth + 1, place);
}

void cls_ListReader::RefuseNull() const {
  Refuse("A list of values has an entry without a value", __LINE__, m_list.GetUid());
}
