#include "cls_WriteVisitor.h"

#include "cls_ListWriter.h"
#include "cls_RecordException.h"
#include "gsl_RecordWriter.h"

#include <exception>
#include <iterator>
#include <utility>

namespace {

constexpr const char* kSourceUnit = "gsl/host/cls/cls_WriteVisitor";

[[noreturn]] void Refuse(const char* why, int line, const cls_Uid& uid = cls_Uid()) {
  nex_Exception::Throw(cls_RecordException(why, uid), kSourceUnit, line);
}

gsl_RecordIdentity IdentityOf(const cls_Uid& uid) {
  return {uid.Prefix(), uid.Serial()};
}

gsl_RecordPlace PlaceOf(const cls_FieldHandle& field) {
  return {field.Name(), field.Index()};
}

} // namespace

cls_Save::cls_Save(gsl_RecordWriter& target) : writer(target) {}

cls_Save::~cls_Save() = default;

cls_WriteVisitor::cls_WriteVisitor(cls_Save& owner, std::uint32_t parent,
                                   const cls_FieldHandle& field, unsigned int level)
    : save(owner), parentRecord(parent), place(field), depth(level), object(nullptr),
      holder(nullptr), copyHolder(nullptr), record(kNoRecord), declined(false), hasElements(false),
      collection(cls_NoCollection), exceptionsBefore(std::uncaught_exceptions()) {}

cls_WriteVisitor::cls_WriteVisitor(cls_Save& owner)
    : cls_WriteVisitor(owner, kNoRecord, cls_FieldHandle(-1, nullptr), 0u) {}

cls_WriteVisitor::cls_WriteVisitor(const cls_WriteVisitor& parent, const cls_FieldHandle& field)
    : cls_WriteVisitor(parent.save, parent.Started(), field, parent.depth + 1) {}

cls_WriteVisitor::cls_WriteVisitor(const cls_WriteVisitor& parent, const cls_FieldHandle& field,
                                   const void* sharedObject, const void* sharedHolder,
                                   CopyHolder copy)
    : cls_WriteVisitor(parent, field) {
  object = sharedObject;
  holder = sharedHolder;
  copyHolder = copy;
}

cls_WriteVisitor::cls_WriteVisitor(const cls_WriteRequestListObj& request)
    : cls_WriteVisitor(request.writer.list, cls_FieldHandle(-1, nullptr)) {}

cls_WriteVisitor::~cls_WriteVisitor() {
  const bool isRoot = parentRecord == kNoRecord;
  const bool isStarted = record != kNoRecord;
  if (isRoot && isStarted && std::uncaught_exceptions() > exceptionsBefore) TakeBack();
}

void cls_WriteVisitor::TakeBack() {
  save.writer.TakeBack(record);
  for (auto written = save.objects.begin(); written != save.objects.end();) {
    const bool isTakenBack = written->second.record >= record;
    written = isTakenBack ? save.objects.erase(written) : std::next(written);
  }
}

int cls_WriteVisitor::StartWrite(unsigned int typeId, const cls_Uid& uid) const {
  if (parentRecord == kNoRecord) {
    StartRoot(typeId, uid);
    return 1;
  }
  if (record != kNoRecord || declined) {
    Refuse("A place of a record takes one record only", __LINE__, uid);
  }
  if (depth > kMostNesting) Refuse("Records are nested too deep to write", __LINE__, uid);
  if (object != nullptr) return StartShared(typeId, uid);
  StartChild(typeId, uid, false);
  return 1;
}

void cls_WriteVisitor::StartRoot(unsigned int typeId, const cls_Uid& uid) const {
  // Until the next root is there, nothing of the last one is this visitor's to take back.
  record = kNoRecord;
  record = save.writer.AddRoot(typeId, IdentityOf(uid));
  hasElements = false;
  collection = cls_NoCollection;
}

void cls_WriteVisitor::StartChild(unsigned int typeId, const cls_Uid& uid, bool isShared) const {
  record = save.writer.AddRecord(parentRecord, PlaceOf(place), isShared, typeId, IdentityOf(uid));
}

int cls_WriteVisitor::StartShared(unsigned int typeId, const cls_Uid& uid) const {
  // Two objects may carry one uid and differ in contents, when one is a copy that was changed. The
  // address tells them apart; it stays the object's own while the save keeps its holder.
  const cls_Save::Key key{object, typeId, uid};
  const auto written = save.objects.find(key);
  if (written != save.objects.end()) {
    save.writer.AddReference(parentRecord, PlaceOf(place), written->second.record);
    declined = true;
    return 0;
  }
  std::shared_ptr<const void> keptAlive = copyHolder(holder);
  StartChild(typeId, uid, true);
  save.objects.emplace(key, cls_Save::Written{record, std::move(keptAlive)});
  return 1;
}

std::uint32_t cls_WriteVisitor::Started() const {
  if (record == kNoRecord) Refuse("A record is written before it was started", __LINE__);
  return record;
}

void cls_WriteVisitor::WriteInteger(const cls_FieldHandle& field, int value) const {
  save.writer.AddInteger(Started(), PlaceOf(field), value);
}

void cls_WriteVisitor::WriteDouble(const cls_FieldHandle& field, double value) const {
  save.writer.AddDouble(Started(), PlaceOf(field), value);
}

void cls_WriteVisitor::WriteBoolean(const cls_FieldHandle& field, bool value) const {
  save.writer.AddBoolean(Started(), PlaceOf(field), value);
}

void cls_WriteVisitor::WriteString(const cls_FieldHandle& field, const cow_String& value) const {
  save.writer.AddString(Started(), PlaceOf(field), {value.CStr(), value.Length()});
}

void cls_WriteVisitor::WriteNullObject(const cls_FieldHandle& field, unsigned int typeId) const {
  save.writer.AddNull(Started(), PlaceOf(field), typeId);
}

void cls_WriteVisitor::CheckCollectionType(int type) const {
  if (type != cls_ObjectList && type != cls_UnsignedList && type != cls_DoubleMatrix) {
    Refuse("A record cannot be a collection of this type", __LINE__);
  }
  const std::uint32_t started = Started();
  if (collection == type) return;
  if (collection != cls_NoCollection) {
    Refuse("A record is a collection of one type only", __LINE__);
  }
  save.writer.SetCollection(started, static_cast<gsl_RecordCollection>(type));
  collection = type;
}

void cls_WriteVisitor::StartElements(int type) const {
  CheckCollectionType(type);
  if (hasElements) Refuse("The elements of a collection are written once", __LINE__);
  hasElements = true;
}

void cls_WriteVisitor::WriteUnsigneds(const unsigned int* values, std::size_t count) const {
  StartElements(cls_UnsignedList);
  save.writer.SetUnsigneds(record, values, count);
}

void cls_WriteVisitor::WriteDoubles(const double* values, std::size_t rows,
                                    std::size_t columns) const {
  StartElements(cls_DoubleMatrix);
  save.writer.SetDoubles(record, values, rows, columns);
}

cls_ListWriter* cls_WriteVisitor::GetListWriter() const {
  CheckCollectionType(cls_ObjectList);
  return new cls_ListWriter(*this);
}

cls_ListWriter::cls_ListWriter(const cls_WriteVisitor& owner) : list(owner) {}

void cls_ListWriter::WriteNull(unsigned int typeId) {
  list.save.writer.AddNull(list.Started(), gsl_RecordPlace(), typeId);
}

bool cls_ListWriter::Finish() {
  return true;
}
