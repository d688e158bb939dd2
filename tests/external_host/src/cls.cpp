#include "cls_ListReader.h"
#include "cls_ListWriter.h"
#include "cls_MetadataRegistrar.h"
#include "cls_ReadVisitor.h"
#include "cls_RecordException.h"
#include "cls_WriteVisitor.h"
#include "cls_xp1DArrayListUint.h"
#include "cls_xp2DArrayDouble.h"

#include <atomic>
#include <random>
#include <string>
#include <utility>

namespace {

constexpr int kSerialBits = 40;

std::uint64_t NumberOfProcess() {
  static const std::uint64_t number = std::random_device()() | 1u;
  return number << kSerialBits;
}

[[noreturn]] void Refuse(const std::string& why, const cls_Uid& uid) {
  nex_Exception::Throw(cls_RecordException(cow_String(why.c_str()), uid), "external/cls", 1);
}

cls_ClassRegistrar& Classes() {
  return omi_Singleton<cls_MetadataRegistrar>::Instance().ClassRegistrar();
}

} // namespace

// Identities.

cls_Uid::cls_Uid() noexcept : m_number(0) {}

cls_Uid::cls_Uid(const cls_Uid& other) noexcept = default;

cls_Uid& cls_Uid::operator=(const cls_Uid& other) noexcept = default;

cls_Uid::~cls_Uid() = default;

cls_Uid cls_Uid::AllocateUid() noexcept {
  static std::atomic<std::uint64_t> serial{0};
  cls_Uid uid;
  uid.m_number = NumberOfProcess() | ++serial;
  return uid;
}

bool operator==(const cls_Uid& a, const cls_Uid& b) noexcept {
  return a.m_number == b.m_number;
}

// The registrar.

cls_ClassMetadata::cls_ClassMetadata(const xh_Class* theClass) : m_class(theClass) {}

void cls_ClassMetadata::xh_Forget(const xh_Class* theClass) {
  m_class.reset(theClass);
  m_attributes.clear();
  m_destroy = nullptr;
}

cls_ClassMetadata::~cls_ClassMetadata() = default;

cls_ClassMetadata& cls_ClassMetadata::AddDtor(void (*destroy)(void*)) {
  m_destroy = destroy;
  return *this;
}

cls_ClassMetadata& cls_ClassMetadata::AddAttribute(const char* name, cls_AttributeType type,
                                                   unsigned int argument,
                                                   cls_CollectionType collection) {
  m_attributes.push_back({name, type, argument, collection});
  return *this;
}

cls_ClassRegistrar::cls_ClassRegistrar() = default;

cls_ClassRegistrar::~cls_ClassRegistrar() = default;

cls_ClassMetadata& cls_ClassRegistrar::AddClassMD(const xh_Class* described) {
  cls_ClassMetadata* const known = xh_Find(described->typeId);
  if (known != nullptr) {
    known->xh_Forget(described);
  } else {
    m_classes.emplace_back(described);
  }
  cls_ClassMetadata& metadata = known != nullptr ? *known : m_classes.back();
  metadata.xh_SetFlags(m_flags);
  return metadata;
}

cls_ClassMetadata* cls_ClassRegistrar::xh_Find(unsigned int typeId) const {
  for (cls_ClassMetadata& known : m_classes) {
    if (known.xh_Described().typeId == typeId) return &known;
  }
  return nullptr;
}

bool cls_ClassRegistrar::InheritanceCheck(unsigned int dynType, unsigned int queried) const {
  while (dynType != queried) {
    const cls_ClassMetadata* const known = xh_Find(dynType);
    if (known == nullptr || known->xh_Base() == 0) return false;
    dynType = known->xh_Base();
  }
  return true;
}

void cls_MetadataRegistrar::initClassMetadata(InitializeMetadata function, int flags) {
  m_registrar.xh_SetFlags(flags);
  function(m_registrar);
}

// The store.

xh_Store::xh_Store() = default;

xh_Store::~xh_Store() = default;

void xh_Store::Save(Write write, const void* argument) {
  std::shared_ptr<xh_Record> root;
  {
    const cls_WriteVisitor visitor(m_saving, root);
    write(visitor, argument);
  }
  m_roots.push_back(root);
}

void xh_Store::Load(std::size_t root, Read read, void* argument) {
  const cls_ReadVisitor visitor(m_loading, m_roots[root]);
  read(visitor, argument);
}

// Writing.

cls_WriteVisitor::cls_WriteVisitor(xh_Saving& saving, std::shared_ptr<xh_Record>& root)
    : m_saving(&saving), m_root(&root), m_list(nullptr) {}

cls_WriteVisitor::cls_WriteVisitor(const cls_WriteVisitor& parent, const cls_FieldHandle& field)
    : m_saving(parent.m_saving), m_holder(parent.m_record), m_root(nullptr), m_name(field.Name()),
      m_list(nullptr) {
  parent.xh_Started();
}

cls_WriteVisitor::cls_WriteVisitor(const cls_WriteRequestListObj& request)
    : cls_WriteVisitor(request.m_list->m_visitor, cls_FieldHandle(-1, "")) {}

cls_WriteVisitor::~cls_WriteVisitor() {
  delete m_list;
}

xh_Record& cls_WriteVisitor::xh_Started() const {
  if (m_record == nullptr) Refuse("a record is not started", cls_Uid());
  return *m_record;
}

int cls_WriteVisitor::StartWrite(unsigned int typeId, const cls_Uid& uid) const {
  if (m_record != nullptr) Refuse("a record is started twice", uid);
  const auto known = m_saving->written.find(m_shared.get());
  const bool isKnown = m_shared != nullptr && known != m_saving->written.end();
  m_record = isKnown ? known->second : std::make_shared<xh_Record>();
  if (m_root != nullptr) {
    *m_root = m_record;
  } else {
    xh_Field field;
    field.name = m_name;
    field.record = m_record;
    m_holder->fields.push_back(field);
  }
  if (isKnown) return 0;
  m_record->typeId = typeId;
  m_record->uid = uid;
  if (m_shared != nullptr) {
    m_saving->written[m_shared.get()] = m_record;
    m_saving->kept.push_back(m_shared);
  }
  return 77;
}

xh_Field& cls_WriteVisitor::Append(const cls_FieldHandle& handle, xh_Field::Kind kind) const {
  std::vector<xh_Field>& fields = xh_Started().fields;
  fields.emplace_back();
  fields.back().name = handle.Name();
  fields.back().kind = kind;
  return fields.back();
}

void cls_WriteVisitor::WriteInteger(const cls_FieldHandle& field, int value) const {
  Append(field, xh_Field::kInteger).integer = value;
}

void cls_WriteVisitor::WriteDouble(const cls_FieldHandle& field, double value) const {
  Append(field, xh_Field::kDouble).number = value;
}

void cls_WriteVisitor::WriteBoolean(const cls_FieldHandle& field, bool value) const {
  Append(field, xh_Field::kBoolean).integer = value ? 1 : 0;
}

void cls_WriteVisitor::WriteString(const cls_FieldHandle& field, const cow_String& value) const {
  Append(field, xh_Field::kText).text = value;
}

void cls_WriteVisitor::WriteNullObject(const cls_FieldHandle& field, unsigned int) const {
  Append(field, xh_Field::kRecord);
}

void cls_WriteVisitor::CheckCollectionType(int type) const {
  xh_Started().collection = type;
}

cls_ListWriter* cls_WriteVisitor::GetListWriter() const {
  if (xh_Started().collection != cls_ObjectList) Refuse("a record is not a list", m_record->uid);
  if (m_list == nullptr) m_list = new cls_ListWriter(*this);
  return m_list;
}

cls_ListWriter::cls_ListWriter(const cls_WriteVisitor& list) : m_visitor(list) {}

cls_ListWriter::~cls_ListWriter() {
  m_visitor.m_list = nullptr;
}

void cls_ListWriter::WriteNull(unsigned int typeId) {
  m_visitor.WriteNullObject(cls_FieldHandle(-1, ""), typeId);
}

bool cls_ListWriter::Finish() {
  return false;
}

// Reading.

cls_ReadVisitor::cls_ReadVisitor(xh_Loading& loading, std::shared_ptr<xh_Record> record)
    : m_loading(&loading), m_record(std::move(record)) {}

cls_ReadVisitor::cls_ReadVisitor(const cls_ReadVisitor& parent, const cls_FieldHandle& field)
    : m_loading(parent.m_loading) {
  const xh_Field* const found = parent.Find(field, xh_Field::kRecord);
  if (found != nullptr) m_record = found->record;
}

cls_ReadVisitor::~cls_ReadVisitor() = default;

const xh_Field* cls_ReadVisitor::Find(const cls_FieldHandle& handle, xh_Field::Kind kind) const {
  if (m_record == nullptr) return nullptr;
  for (const xh_Field& field : m_record->fields) {
    if (field.name != handle.Name()) continue;
    if (field.kind != kind) Refuse("a field is of another kind", m_record->uid);
    return &field;
  }
  return nullptr;
}

cls_Uid cls_ReadVisitor::GetUid() const {
  return m_record != nullptr ? m_record->uid : cls_Uid();
}

int cls_ReadVisitor::ReadInteger(const cls_FieldHandle& field, int defaultValue) const {
  const xh_Field* const found = Find(field, xh_Field::kInteger);
  return found != nullptr ? found->integer : defaultValue;
}

double cls_ReadVisitor::ReadDouble(const cls_FieldHandle& field, double defaultValue) const {
  const xh_Field* const found = Find(field, xh_Field::kDouble);
  return found != nullptr ? found->number : defaultValue;
}

bool cls_ReadVisitor::ReadBoolean(const cls_FieldHandle& field, bool defaultValue) const {
  const xh_Field* const found = Find(field, xh_Field::kBoolean);
  return found != nullptr ? found->integer != 0 : defaultValue;
}

cow_String cls_ReadVisitor::ReadString(const cls_FieldHandle& field,
                                       const cow_String& defaultValue) const {
  const xh_Field* const found = Find(field, xh_Field::kText);
  return found != nullptr ? found->text : defaultValue;
}

void cls_ReadVisitor::CheckTypeId(unsigned int typeId) const {
  if (m_record == nullptr || Classes().InheritanceCheck(m_record->typeId, typeId)) return;
  Refuse("a record is of another class", m_record->uid);
}

std::shared_ptr<void> cls_ReadVisitor::xh_Known() const {
  const auto found = m_loading->read.find(m_record.get());
  return found != m_loading->read.end() ? found->second : nullptr;
}

void* cls_ReadVisitor::xh_MakeDerived(unsigned int typeId) const {
  CheckTypeId(typeId);
  return Classes().xh_Find(m_record->typeId)->xh_Described().make(*this);
}

cls_ListReader* cls_ReadVisitor::GetListReader() const {
  if (m_record != nullptr && m_record->collection != cls_ObjectList) {
    Refuse("a record is not a list", m_record->uid);
  }
  return new cls_ListReader(*this);
}

cls_ListReader::cls_ListReader(const cls_ReadVisitor& list)
    : m_loading(*list.m_loading), m_list(list.m_record), m_next(0) {}

cls_ListReader::~cls_ListReader() = default;

bool cls_ListReader::HasNext() const {
  return m_list != nullptr && m_next < m_list->fields.size();
}

std::shared_ptr<xh_Record> cls_ListReader::Take() {
  if (!HasNext()) Refuse("a list has ended", cls_Uid());
  return m_list->fields[m_next++].record;
}

void cls_ListReader::RefuseNull(const cls_ReadVisitor& entry) {
  if (entry.xh_Get() == nullptr) Refuse("a list of values has a null", cls_Uid());
}

// Arrays.

cls_xp1DArrayListUint::cls_xp1DArrayListUint() : m_uid(cls_Uid::AllocateUid()) {}

cls_xp1DArrayListUint::cls_xp1DArrayListUint(const cls_ReadVisitor& visitor)
    : m_uid(visitor.GetUid()) {
  const xh_Record* const record = visitor.xh_Get();
  if (record == nullptr) return;
  if (record->collection != cls_UnsignedList) Refuse("a record is not a list", record->uid);
  m_numbers.assign(record->unsigneds.begin(), record->unsigneds.end());
}

cls_xp1DArrayListUint::~cls_xp1DArrayListUint() = default;

cls_xp1DArrayListUint::cls_xp1DArrayListUint(const cls_xp1DArrayListUint&) = default;

cls_xp1DArrayListUint& cls_xp1DArrayListUint::operator=(const cls_xp1DArrayListUint&) = default;

void cls_xp1DArrayListUint::DBWrite(const cls_WriteVisitor& visitor) const {
  if (visitor.StartWrite(TypeId(), m_uid) == 0) return;
  visitor.CheckCollectionType(cls_UnsignedList);
  visitor.xh_Started().unsigneds.assign(m_numbers.begin(), m_numbers.end());
}

cls_xp2DArrayDouble::cls_xp2DArrayDouble(std::size_t rows, std::size_t columns, const cls_Uid& uid)
    : m_lines(rows, std::vector<double>(columns, 0.0)), m_columns(columns), m_uid(uid) {}

cls_xp2DArrayDouble::cls_xp2DArrayDouble(const cls_ReadVisitor& visitor)
    : m_columns(0), m_uid(visitor.GetUid()) {
  const xh_Record* const record = visitor.xh_Get();
  if (record == nullptr) return;
  if (record->collection != cls_DoubleMatrix) Refuse("a record is not a matrix", record->uid);
  m_columns = record->columns;
  for (std::size_t r = 0; r < record->rows; ++r) {
    const auto begin = record->doubles.begin() + static_cast<std::ptrdiff_t>(r * m_columns);
    m_lines.emplace_back(begin, begin + static_cast<std::ptrdiff_t>(m_columns));
  }
}

cls_xp2DArrayDouble::~cls_xp2DArrayDouble() = default;

cls_xp2DArrayDouble::cls_xp2DArrayDouble(const cls_xp2DArrayDouble&) = default;

cls_xp2DArrayDouble& cls_xp2DArrayDouble::operator=(const cls_xp2DArrayDouble&) = default;

void cls_xp2DArrayDouble::DBWrite(const cls_WriteVisitor& visitor) const {
  if (visitor.StartWrite(TypeId(), m_uid) == 0) return;
  visitor.CheckCollectionType(cls_DoubleMatrix);
  xh_Record& record = visitor.xh_Started();
  record.rows = Rows();
  record.columns = m_columns;
  for (const std::vector<double>& line : m_lines)
    record.doubles.insert(record.doubles.end(), line.begin(), line.end());
}
