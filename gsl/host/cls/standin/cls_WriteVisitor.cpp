#include "cls_WriteVisitor.h"

#include "cls_ListWriter.h"
#include "cls_RecordException.h"

#include <exception>
#include <iterator>
#include <utility>

using Index = cls_RecordStore::Index;
using Kind = cls_RecordStore::Kind;

namespace {

constexpr const char* kSourceUnit = "gsl/host/cls/cls_WriteVisitor";

[[noreturn]] void Refuse(const char* why, int line, const cls_Uid& uid = cls_Uid()) {
  nex_Exception::Throw(cls_RecordException(why, uid), kSourceUnit, line);
}

} // namespace

cls_Save::cls_Save(cls_RecordStore& target) : store(target) {}

cls_Save::~cls_Save() = default;

cls_WriteVisitor::cls_WriteVisitor(cls_Save& owner)
    : save(owner), parentRecord(cls_RecordStore::kNone), placeName(cls_RecordStore::kNone),
      placeIndex(-1), depth(0), object(nullptr), holder(nullptr), copyHolder(nullptr),
      record(cls_RecordStore::kNone), declined(false), before(owner.store.Position()),
      exceptionsBefore(std::uncaught_exceptions()) {}

cls_WriteVisitor::cls_WriteVisitor(const cls_WriteVisitor& parent, const cls_FieldHandle& field)
    : cls_WriteVisitor(parent, field, nullptr, nullptr, nullptr) {}

cls_WriteVisitor::cls_WriteVisitor(const cls_WriteVisitor& parent, const cls_FieldHandle& field,
                                   const void* sharedObject, const void* sharedHolder,
                                   CopyHolder copy)
    : save(parent.save), parentRecord(parent.Started()),
      placeName(save.store.InternName(field.Name())), placeIndex(field.Index()),
      depth(parent.depth + 1), object(sharedObject), holder(sharedHolder), copyHolder(copy),
      record(cls_RecordStore::kNone), declined(false), before(), exceptionsBefore(0) {}

cls_WriteVisitor::cls_WriteVisitor(const cls_WriteRequestListObj& request)
    : save(request.writer.list.save), parentRecord(request.writer.list.Started()),
      placeName(cls_RecordStore::kNone), placeIndex(-1), depth(request.writer.list.depth + 1),
      object(nullptr), holder(nullptr), copyHolder(nullptr), record(cls_RecordStore::kNone),
      declined(false), before(), exceptionsBefore(0) {}

cls_WriteVisitor::~cls_WriteVisitor() {
  const bool isRoot = parentRecord == cls_RecordStore::kNone;
  if (isRoot && std::uncaught_exceptions() > exceptionsBefore) TakeBack();
}

void cls_WriteVisitor::TakeBack() {
  save.store.TakeBack(before);
  for (auto written = save.objects.begin(); written != save.objects.end();) {
    const bool taken = written->second.record >= before.records;
    written = taken ? save.objects.erase(written) : std::next(written);
  }
}

int cls_WriteVisitor::StartWrite(unsigned int typeId, const cls_Uid& uid) const {
  cls_RecordStore& store = save.store;
  if (parentRecord == cls_RecordStore::kNone) {
    before = store.Position();
    record = store.AddRecord(typeId, uid);
    store.roots.push_back(record);
    return 1;
  }
  if (record != cls_RecordStore::kNone || declined) {
    Refuse("A place of a record takes one record only", __LINE__, uid);
  }
  if (depth > kMostNesting) Refuse("Records are nested too deep to write", __LINE__, uid);
  if (object != nullptr) return StartShared(typeId, uid);
  record = AddChild(typeId, uid, Kind::Record);
  return 1;
}

int cls_WriteVisitor::StartShared(unsigned int typeId, const cls_Uid& uid) const {
  // The address tells objects apart that carry the same uid but, since a copy was changed, not the
  // same contents. It stays the object's own while the save keeps its holder.
  const cls_Save::Key key{object, typeId, uid};
  const auto written = save.objects.find(key);
  if (written != save.objects.end()) {
    AddPlace(Kind::Reference).link = written->second.record;
    declined = true;
    return 0;
  }
  std::shared_ptr<const void> keptAlive = copyHolder(holder);
  record = AddChild(typeId, uid, Kind::Object);
  save.objects.emplace(key, cls_Save::Written{record, std::move(keptAlive)});
  return 1;
}

Index cls_WriteVisitor::AddChild(unsigned int typeId, const cls_Uid& uid, Kind kind) const {
  const Index child = save.store.AddRecord(typeId, uid);
  AddPlace(kind).link = child;
  return child;
}

cls_RecordStore::Field& cls_WriteVisitor::AddPlace(Kind kind) const {
  return save.store.AddField(parentRecord, placeName, placeIndex, kind);
}

Index cls_WriteVisitor::Started() const {
  if (record == cls_RecordStore::kNone) {
    Refuse("A record is written before it was started", __LINE__);
  }
  return record;
}

cls_RecordStore::Field& cls_WriteVisitor::AddField(const cls_FieldHandle& field, Kind kind) const {
  const Index owner = Started();
  return save.store.AddField(owner, save.store.InternName(field.Name()), field.Index(), kind);
}

void cls_WriteVisitor::WriteInteger(const cls_FieldHandle& field, int value) const {
  AddField(field, Kind::Integer).integer = value;
}

void cls_WriteVisitor::WriteDouble(const cls_FieldHandle& field, double value) const {
  AddField(field, Kind::Double).real = value;
}

void cls_WriteVisitor::WriteBoolean(const cls_FieldHandle& field, bool value) const {
  AddField(field, Kind::Boolean).boolean = value;
}

void cls_WriteVisitor::WriteString(const cls_FieldHandle& field, const cow_String& value) const {
  save.store.AddString(AddField(field, Kind::String), value);
}

void cls_WriteVisitor::WriteNullObject(const cls_FieldHandle& field, unsigned int typeId) const {
  AddField(field, Kind::Null).link = typeId;
}

void cls_WriteVisitor::CheckCollectionType(int type) const {
  if (type != cls_ObjectList && type != cls_UnsignedList && type != cls_DoubleMatrix) {
    Refuse("A record cannot be a collection of this type", __LINE__);
  }
  cls_RecordStore::Record& started = save.store.records[Started()];
  if (started.collection != cls_NoCollection && started.collection != type) {
    Refuse("A record is a collection of one type only", __LINE__, started.uid);
  }
  started.collection = static_cast<cls_CollectionType>(type);
}

void cls_WriteVisitor::WriteUnsigneds(const unsigned int* values, std::size_t count) const {
  CheckCollectionType(cls_UnsignedList);
  if (save.store.records[record].array != cls_RecordStore::kNone) {
    Refuse("The elements of a collection are written once", __LINE__);
  }
  save.store.SetUnsigneds(record, values, count);
}

void cls_WriteVisitor::WriteDoubles(const double* values, std::size_t rows,
                                    std::size_t columns) const {
  CheckCollectionType(cls_DoubleMatrix);
  if (save.store.records[record].array != cls_RecordStore::kNone) {
    Refuse("The elements of a collection are written once", __LINE__);
  }
  save.store.SetDoubles(record, values, rows, columns);
}

cls_ListWriter* cls_WriteVisitor::GetListWriter() const {
  CheckCollectionType(cls_ObjectList);
  return new cls_ListWriter(*this);
}

cls_ListWriter::cls_ListWriter(const cls_WriteVisitor& owner) : list(owner) {}

void cls_ListWriter::WriteNull(unsigned int typeId) {
  const Index owner = list.Started();
  list.save.store.AddField(owner, cls_RecordStore::kNone, -1, Kind::Null).link = typeId;
}

bool cls_ListWriter::Finish() {
  return true;
}
