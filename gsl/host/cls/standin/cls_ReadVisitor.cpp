#include "cls_ReadVisitor.h"

#include "cls_ListReader.h"
#include "cls_MetadataRegistrar.h"
#include "cls_RecordException.h"

#include <cstdio>
#include <cstring>
#include <string>

using Index = cls_RecordStore::Index;
using Kind = cls_RecordStore::Kind;

namespace {

constexpr const char* kSourceUnit = "gsl/host/cls/cls_ReadVisitor";
constexpr Index kNone = cls_RecordStore::kNone;

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

/// The name that the class is registered under, or its number.
std::string ClassName(unsigned int typeId) {
  const cls_ClassMetadata* const known =
      omi_Singleton<cls_MetadataRegistrar>::Instance().ClassRegistrar().FindClass(typeId);
  if (known != nullptr) return known->Name();
  char number[16];
  std::snprintf(number, sizeof number, "0x%08X", typeId);
  return number;
}

bool HoldsRecord(Kind kind) {
  return kind == Kind::Record || kind == Kind::Object;
}

} // namespace

cls_Load::cls_Load(const cls_RecordStore& source) : store(source) {}

cls_Load::~cls_Load() = default;

cls_ReadVisitor::cls_ReadVisitor(cls_Load& owner, Index index, unsigned int level,
                                 const Place& where)
    : load(owner), record(index), depth(level), foundAt(where),
      expected(index != kNone ? owner.store.First(index) : nullptr) {
  if (depth > kMostNesting) Refuse("Records are nested too deep to read", __LINE__, GetUid());
}

cls_ReadVisitor::cls_ReadVisitor(cls_Load& owner, std::size_t root)
    : cls_ReadVisitor(owner, root < owner.store.RootCount() ? owner.store.Root(root) : kNone, 0u,
                      Place{kNone, "", root, kNoEntry}) {
  if (record == kNone) Refuse("The store has no such root", __LINE__);
}

cls_ReadVisitor::cls_ReadVisitor(const cls_ReadVisitor& parent, const cls_FieldHandle& field)
    : cls_ReadVisitor(parent, parent.Find(field)) {}

cls_ReadVisitor::cls_ReadVisitor(const cls_ReadVisitor& parent, const Field* field)
    : cls_ReadVisitor(parent.load, parent.OwnRecord(field), parent.depth + 1,
                      parent.PlaceOf(field)) {}

cls_ReadVisitor::Place cls_ReadVisitor::PlaceOf(const Field* field) const {
  return {record, field != nullptr ? load.store.Name(*field) : "", 0, kNoEntry};
}

std::string cls_ReadVisitor::DescribePlace() const {
  std::string where = "root " + std::to_string(foundAt.root);
  if (foundAt.holder != kNone) {
    where = std::string("field \"") + foundAt.field + "\" of " +
            ClassName(load.store.TypeId(foundAt.holder));
  }
  if (foundAt.entry != kNoEntry) return "Entry " + std::to_string(foundAt.entry) + " of " + where;
  where[0] = where[0] == 'r' ? 'R' : 'F';
  return where;
}

unsigned int cls_ReadVisitor::TypeId() const {
  return IsAbsent() ? 0 : load.store.TypeId(record);
}

cls_Uid cls_ReadVisitor::GetUid() const {
  return IsAbsent() ? cls_Uid() : load.store.Uid(record);
}

const cls_ReadVisitor::Field* cls_ReadVisitor::Find(const cls_FieldHandle& field) const {
  if (IsAbsent()) return nullptr;
  const cls_RecordStore& store = load.store;
  const auto isMeant = [&](const Field* f) {
    return std::strcmp(store.Name(*f), field.Name()) == 0;
  };
  const Field* found = expected;
  if (found == nullptr || !isMeant(found)) {
    found = store.First(record);
    while (found != nullptr && !isMeant(found))
      found = store.Next(*found);
  }
  if (found != nullptr) expected = store.Next(*found);
  return found;
}

const cls_ReadVisitor::Field* cls_ReadVisitor::Find(const cls_FieldHandle& field, Kind kind) const {
  const Field* const found = Find(field);
  if (found != nullptr && found->kind != kind) RefuseKind(*found, NameOf(kind));
  return found;
}

Index cls_ReadVisitor::OwnRecord(const Field* field) const {
  if (field == nullptr || field->kind == Kind::Null) return kNone;
  if (!HoldsRecord(field->kind)) RefuseKind(*field, NameOf(Kind::Record));
  return field->link;
}

Index cls_ReadVisitor::ObjectRecord(const Field* field) const {
  const bool refers = field != nullptr && field->kind == Kind::Reference;
  return refers ? field->link : OwnRecord(field);
}

void cls_ReadVisitor::RefuseKind(const Field& field, const char* wanted) const {
  Refuse(std::string("Field \"") + load.store.Name(field) + "\" holds " + NameOf(field.kind) +
             ", not " + wanted,
         __LINE__, GetUid());
}

int cls_ReadVisitor::ReadInteger(const cls_FieldHandle& field, int defaultValue) const {
  const Field* const found = Find(field, Kind::Integer);
  return found != nullptr ? found->integer : defaultValue;
}

double cls_ReadVisitor::ReadDouble(const cls_FieldHandle& field, double defaultValue) const {
  const Field* const found = Find(field, Kind::Double);
  return found != nullptr ? found->real : defaultValue;
}

bool cls_ReadVisitor::ReadBoolean(const cls_FieldHandle& field, bool defaultValue) const {
  const Field* const found = Find(field, Kind::Boolean);
  return found != nullptr ? found->boolean : defaultValue;
}

cow_String cls_ReadVisitor::ReadString(const cls_FieldHandle& field,
                                       const cow_String& defaultValue) const {
  const Field* const found = Find(field, Kind::String);
  return found != nullptr ? load.store.String(*found) : defaultValue;
}

void cls_ReadVisitor::CheckTypeId(unsigned int typeId) const {
  if (IsAbsent() || TypeId() == typeId) return;
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

std::any* cls_ReadVisitor::KnownObject(Index object) const {
  const auto [place, isNew] = load.objects.try_emplace(object);
  if (isNew) return nullptr;
  if (!place->second.has_value()) {
    Refuse("An object contains itself", __LINE__, load.store.Uid(object));
  }
  return &place->second;
}

void cls_ReadVisitor::Remember(Index object, std::any holder) const {
  load.objects[object] = std::move(holder);
}

void cls_ReadVisitor::Forget(Index object) const noexcept {
  load.objects.erase(object);
}

void cls_ReadVisitor::RefuseHolder(Index object) const {
  Refuse("An object is read into holders of different classes", __LINE__, load.store.Uid(object));
}

void cls_ReadVisitor::CheckCollectionType(int type) const {
  if (IsAbsent() || load.store.Collection(record) == type) return;
  Refuse("A record is not a collection of the type asked for", __LINE__, GetUid());
}

cls_RecordStore::UnsignedArray cls_ReadVisitor::ReadUnsigneds() const {
  CheckCollectionType(cls_UnsignedList);
  if (IsAbsent()) return {nullptr, 0};
  return load.store.Unsigneds(record);
}

cls_RecordStore::DoubleArray cls_ReadVisitor::ReadDoubles() const {
  CheckCollectionType(cls_DoubleMatrix);
  if (IsAbsent()) return {nullptr, 0, 0};
  return load.store.Doubles(record);
}

cls_ListReader* cls_ReadVisitor::GetListReader() const {
  CheckCollectionType(cls_ObjectList);
  return new cls_ListReader(*this);
}

cls_ListReader::cls_ListReader(const cls_ReadVisitor& owner)
    : list(owner), next(owner.IsAbsent() ? nullptr : owner.load.store.First(owner.record)),
      taken(0) {}

cls_ReadVisitor cls_ListReader::Next() {
  if (next == nullptr) Refuse("A list has no further entry", __LINE__, list.GetUid());
  const cls_RecordStore::Field* const field = next;
  next = list.load.store.Next(*field);
  cls_ReadVisitor::Place place = list.foundAt;
  place.entry = taken++;
  return cls_ReadVisitor(list.load, list.OwnRecord(field), list.depth + 1, place);
}

void cls_ListReader::RefuseNull() const {
  Refuse("A list of values has an entry without a value", __LINE__, list.GetUid());
}
