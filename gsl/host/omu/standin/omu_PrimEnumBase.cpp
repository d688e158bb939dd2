#include "omu_PrimEnumBase.h"

#include "cls_ReadVisitor.h"
#include "cls_WriteVisitor.h"

#include <string>

namespace {

constexpr unsigned int kTypeId = 0x00450001u;
constexpr cls_FieldHandle kName(-1, "_string");

} // namespace

omu_PrimEnumBase::omu_PrimEnumBase() : m_currentValue(0) {}

omu_PrimEnumBase::omu_PrimEnumBase(const cls_ReadVisitor& visitor)
    : m_currentValue(0), m_currentName(visitor.ReadString(kName, cow_String()).CStr()) {}

omu_PrimEnumBase::~omu_PrimEnumBase() = default;

void omu_PrimEnumBase::DBWrite(const cls_WriteVisitor& visitor) const {
  if (visitor.StartWrite(kTypeId, cls_Uid()) == 0) return;
  visitor.WriteString(kName, AsString());
}

cow_String omu_PrimEnumBase::AsString(int) const {
  return cow_String(m_currentName.CStr(), m_currentName.Length());
}

cow_String omu_PrimEnumBase::PermissibleValuesAsString() const {
  std::string list;
  for (const auto& [permissible, number] : PermissibleValues()) {
    static_cast<void>(number);
    if (!list.empty()) list += ", ";
    list.append(permissible.CStr(), permissible.Length());
  }
  return cow_String(list.data(), list.size());
}

bool omu_PrimEnumBase::operator==(const omu_Primitive& other) const {
  const auto* const that = dynamic_cast<const omu_PrimEnumBase*>(&other);
  return that != nullptr && that->m_currentValue == m_currentValue &&
         that->m_currentName == m_currentName;
}

void omu_PrimEnumBase::Set(std::int32_t newValue, const char* newName) {
  m_currentName = atr_String(newName);
  m_currentValue = newValue;
}
