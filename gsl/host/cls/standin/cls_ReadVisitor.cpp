#include "cls_ReadVisitor.h"

#include "cls_ListReader.h"
#include "cls_MetadataRegistrar.h"
#include "cls_RecordException.h"
#include "gsl_RecordReader.h"

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
  constexpr std::size_t kMostKept = 64;
  constexpr std::size_t kLeastDistance = 32;
  if (text.empty() || text.size() > kMostKept) return cow_String(text.data(), text.size());
  const std::size_t place = reinterpret_cast<std::uintptr_t>(text.data()) / kLeastDistance;
  cow_String& recent = m_texts[place % kRecentTexts];
  const bool isKnown =
      recent.Length() == text.size() && std::memcmp(recent.CStr(), text.data(), text.size()) == 0;
  if (!isKnown) recent = cow_String(text.data(), text.size());
  return recent;
}

cls_ReadVisitor::cls_ReadVisitor(cls_Load& owner, std::uint32_t index, unsigned int level,
                                 const Place& where)
    : m_load(owner), m_record(index), m_depth(level), m_typeId(0), m_collection(cls_NoCollection),
      m_foundAt(where), m_firstField(gsl_RecordReader::kEnd), m_expected(gsl_RecordReader::kEnd) {
  if (index != kNoRecord) {
    const gsl_RecordReader::Header header = owner.m_reader.ReadHeader(index);
    m_typeId = header.typeId;
    m_collection = static_cast<int>(header.collection);
    m_uid = UidOf(header.identity);
    m_firstField = m_expected = header.firstField;
  }
  if (m_depth > kMostNesting) Refuse("Records are nested too deep to read", __LINE__, GetUid());
}

cls_ReadVisitor::cls_ReadVisitor(cls_Load& owner, std::size_t root)
    : cls_ReadVisitor(owner,
                      root < owner.m_reader.RootCount() ? owner.m_reader.Root(root) : kNoRecord, 0u,
                      Place{kNoRecord, "", root, kNoEntry}) {
  if (m_record == kNoRecord) {
    Refuse("There is no root " + std::to_string(root) + "; the load has " +
               std::to_string(owner.m_reader.RootCount()),
           __LINE__);
  }
}

cls_ReadVisitor::cls_ReadVisitor(cls_Load& owner, const cow_String& name)
    : cls_ReadVisitor(owner, RootNamed(owner.m_reader, name)) {}

cls_ReadVisitor::cls_ReadVisitor(const cls_ReadVisitor& parent, const cls_FieldHandle& field)
    : cls_ReadVisitor(parent.Child(field)) {}

cls_ReadVisitor cls_ReadVisitor::Child(const cls_FieldHandle& handle) const {
  gsl_RecordField field;
  return cls_ReadVisitor(*this, Find(handle, field) ? &field : nullptr);
}

cls_ReadVisitor::cls_ReadVisitor(const cls_ReadVisitor& parent, const gsl_RecordField* field)
    : cls_ReadVisitor(parent.m_load, parent.OwnRecord(field), parent.m_depth + 1,
                      parent.PlaceOf(field)) {}

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

int cls_ReadVisitor::ReadInteger(const cls_FieldHandle& field, int defaultValue) const {
  gsl_RecordField found;
  return FindPlain(field, static_cast<int>(Kind::Integer), found) ? found.integer : defaultValue;
}

double cls_ReadVisitor::ReadDouble(const cls_FieldHandle& field, double defaultValue) const {
  gsl_RecordField found;
  return FindPlain(field, static_cast<int>(Kind::Double), found) ? found.real : defaultValue;
}

bool cls_ReadVisitor::ReadBoolean(const cls_FieldHandle& field, bool defaultValue) const {
  gsl_RecordField found;
  return FindPlain(field, static_cast<int>(Kind::Boolean), found) ? found.boolean : defaultValue;
}

cow_String cls_ReadVisitor::ReadString(const cls_FieldHandle& field,
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
  if (!IsAbsent()) m_load.m_reader.ReadUnsigneds(m_record, elements);
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
    : m_list(owner), m_next(owner.m_firstField), m_taken(0) {}

bool cls_ListReader::HasNext() const {
  return m_next != gsl_RecordReader::kEnd;
}

cls_ReadVisitor cls_ListReader::Next() {
  if (!HasNext()) Refuse("A list has no further entry", __LINE__, m_list.GetUid());
  gsl_RecordField entry;
  m_next = m_list.m_load.m_reader.ReadField(m_next, entry);
  cls_ReadVisitor::Place place = m_list.m_foundAt;
  place.entry = m_taken++;
  return cls_ReadVisitor(m_list.m_load, m_list.OwnRecord(&entry), m_list.m_depth + 1, place);
}

void cls_ListReader::RefuseNull() const {
  Refuse("A list of values has an entry without a value", __LINE__, m_list.GetUid());
}
