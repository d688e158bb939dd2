#include "cls_WriteVisitor.h"

#include "cls_ListWriter.h"
#include "cls_MetadataRegistrar.h"
#include "cls_RecordException.h"
#include "gsl_RecordWriter.h"
#include "omi_Singleton.h"

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

cls_Save::cls_Save(gsl_RecordWriter& target) : m_writer(target) {}

cls_Save::~cls_Save() = default;

void cls_Save::FindClassName(unsigned int typeId) {
  const cls_ClassMetadata* const known =
      omi_Singleton<cls_MetadataRegistrar>::Instance().ClassRegistrar().FindClass(typeId);
  if (known != nullptr) m_writer.NameClass(typeId, known->Name());
  m_namedClasses[PlaceOfRecent(typeId)] = typeId;
}

void cls_Save::TakeBack(std::uint32_t root) noexcept {
  m_namedClasses = {};
  m_writer.TakeBack(root);
  for (auto written = m_objects.begin(); written != m_objects.end();)
    written = written->second.record >= root ? m_objects.erase(written) : std::next(written);
}

void cls_Save::EndOpenRoot() {
  if (m_openRoot == kNoRecord) return;
  const std::uint32_t root = std::exchange(m_openRoot, kNoRecord);
  try {
    m_writer.Finish();
  } catch (...) {
    TakeBack(root);
    throw;
  }
}

cls_WriteVisitor::cls_WriteVisitor(cls_Save& owner, std::uint32_t parent,
                                   const cls_FieldHandle& field, unsigned int level)
    : m_save(owner), m_parentRecord(parent), m_place(field), m_depth(level), m_object(nullptr),
      m_holder(nullptr), m_copyHolder(nullptr), m_record(kNoRecord), m_declined(false),
      m_hasElements(false), m_collection(cls_NoCollection),
      m_exceptionsBefore(parent == kNoRecord ? std::uncaught_exceptions() : 0) {}

cls_WriteVisitor::cls_WriteVisitor(cls_Save& owner)
    : cls_WriteVisitor(owner, kNoRecord, cls_FieldHandle(-1, nullptr), 0u) {}

cls_WriteVisitor::cls_WriteVisitor(cls_Save& owner, const cow_String& name)
    : cls_WriteVisitor(owner) {
  if (name.IsEmpty()) Refuse("The name of a root must not be empty", __LINE__);
  m_rootName = name;
}

cls_WriteVisitor::cls_WriteVisitor(const cls_WriteVisitor& parent, const cls_FieldHandle& field)
    : cls_WriteVisitor(parent.m_save, parent.Started(), field, parent.m_depth + 1) {}

cls_WriteVisitor::cls_WriteVisitor(const cls_WriteVisitor& parent, const cls_FieldHandle& field,
                                   const void* sharedObject, const void* sharedHolder,
                                   CopyHolder copy)
    : cls_WriteVisitor(parent, field) {
  m_object = sharedObject;
  m_holder = sharedHolder;
  m_copyHolder = copy;
}

cls_WriteVisitor::cls_WriteVisitor(const cls_WriteRequestListObj& request)
    : cls_WriteVisitor(request.m_writer.m_list, cls_FieldHandle(-1, nullptr)) {}

cls_WriteVisitor::~cls_WriteVisitor() {
  const bool isRoot = m_parentRecord == kNoRecord;
  const bool isStarted = m_record != kNoRecord;
  if (!isRoot || !isStarted) return;
  if (std::uncaught_exceptions() > m_exceptionsBefore) {
    m_save.TakeBack(m_record);
    return;
  }
  try {
    m_save.m_writer.Finish();
  } catch (...) {
    m_save.m_openRoot = m_record;
  }
}

int cls_WriteVisitor::StartWrite(unsigned int typeId, const cls_Uid& uid) const {
  if (m_parentRecord == kNoRecord) {
    StartRoot(typeId, uid);
    return 1;
  }
  if (m_record != kNoRecord || m_declined) {
    Refuse("A place of a record takes one record only", __LINE__, uid);
  }
  if (m_depth > kMostNesting) Refuse("Records are nested too deep to write", __LINE__, uid);
  if (m_object != nullptr) return StartShared(typeId, uid);
  StartChild(typeId, uid, false);
  return 1;
}

void cls_WriteVisitor::StartRoot(unsigned int typeId, const cls_Uid& uid) const {
  m_save.EndOpenRoot();
  // An exception that destroys this visitor takes back the root that could not end.
  if (m_record != kNoRecord) m_save.m_writer.Finish();
  // Until the next root is started, this visitor has nothing to take back.
  m_record = kNoRecord;
  m_record = m_save.m_writer.AddRoot(typeId, IdentityOf(uid));
  m_save.NameClass(typeId);
  if (!m_rootName.IsEmpty()) {
    try {
      m_save.m_writer.NameRoot({m_rootName.CStr(), m_rootName.Length()});
    } catch (...) {
      m_save.TakeBack(m_record);
      m_record = kNoRecord;
      throw;
    }
  }
  m_hasElements = false;
  m_collection = cls_NoCollection;
}

void cls_WriteVisitor::StartChild(unsigned int typeId, const cls_Uid& uid, bool isShared) const {
  m_record = m_save.m_writer.AddRecord(m_parentRecord, PlaceOf(m_place), isShared, typeId,
                                       IdentityOf(uid));
  m_save.NameClass(typeId);
}

int cls_WriteVisitor::StartShared(unsigned int typeId, const cls_Uid& uid) const {
  // Two objects may carry one uid and differ in contents, when one is a copy that was changed. The
  // address distinguishes them: no other object has it while the save keeps the holder.
  const cls_Save::Key key{m_object, typeId, uid};
  const auto written = m_save.m_objects.find(key);
  if (written != m_save.m_objects.end()) {
    m_save.m_writer.AddReference(m_parentRecord, PlaceOf(m_place), written->second.record);
    m_declined = true;
    return 0;
  }
  std::shared_ptr<const void> keptAlive = m_copyHolder(m_holder);
  StartChild(typeId, uid, true);
  m_save.m_objects.emplace(key, cls_Save::Written{m_record, std::move(keptAlive)});
  return 1;
}

std::uint32_t cls_WriteVisitor::Started() const {
  if (m_record == kNoRecord) Refuse("A record is written before it was started", __LINE__);
  return m_record;
}

void cls_WriteVisitor::WriteInteger(const cls_FieldHandle& field, int value) const {
  m_save.m_writer.AddInteger(Started(), PlaceOf(field), value);
}

void cls_WriteVisitor::WriteDouble(const cls_FieldHandle& field, double value) const {
  m_save.m_writer.AddDouble(Started(), PlaceOf(field), value);
}

void cls_WriteVisitor::WriteBoolean(const cls_FieldHandle& field, bool value) const {
  m_save.m_writer.AddBoolean(Started(), PlaceOf(field), value);
}

void cls_WriteVisitor::WriteString(const cls_FieldHandle& field, const cow_String& value) const {
  m_save.m_writer.AddString(Started(), PlaceOf(field), {value.CStr(), value.Length()});
}

void cls_WriteVisitor::WriteNullObject(const cls_FieldHandle& field, unsigned int typeId) const {
  m_save.m_writer.AddNull(Started(), PlaceOf(field), typeId);
}

void cls_WriteVisitor::CheckCollectionType(int type) const {
  if (type != cls_ObjectList && type != cls_UnsignedList && type != cls_DoubleMatrix) {
    Refuse("A record cannot be a collection of this type", __LINE__);
  }
  const std::uint32_t started = Started();
  if (m_collection == type) return;
  if (m_collection != cls_NoCollection) {
    Refuse("A record is a collection of one type only", __LINE__);
  }
  m_save.m_writer.SetCollection(started, static_cast<gsl_RecordCollection>(type));
  m_collection = type;
}

void cls_WriteVisitor::StartElements(int type) const {
  CheckCollectionType(type);
  if (m_hasElements) Refuse("The elements of a collection are written once", __LINE__);
  m_hasElements = true;
}

void cls_WriteVisitor::WriteUnsigneds(const unsigned int* values, std::size_t count) const {
  StartElements(cls_UnsignedList);
  m_save.m_writer.SetUnsigneds(m_record, values, count);
}

void cls_WriteVisitor::WriteDoubles(const double* values, std::size_t rows,
                                    std::size_t columns) const {
  StartElements(cls_DoubleMatrix);
  m_save.m_writer.SetDoubles(m_record, values, rows, columns);
}

cls_ListWriter* cls_WriteVisitor::GetListWriter() const {
  CheckCollectionType(cls_ObjectList);
  return new cls_ListWriter(*this);
}

cls_ListWriter::cls_ListWriter(const cls_WriteVisitor& owner) : m_list(owner) {}

void cls_ListWriter::WriteNull(unsigned int typeId) {
  m_list.m_save.m_writer.AddNull(m_list.Started(), gsl_RecordPlace(), typeId);
}

bool cls_ListWriter::Finish() {
  return true;
}
