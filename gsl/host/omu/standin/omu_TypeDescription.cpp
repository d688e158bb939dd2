#include "omu_TypeDescription.h"

#include "atr_String.h"
#include "nex_AssertException.h"

#include <cstring>
#include <map>
#include <mutex>
#include <shared_mutex>
#include <string_view>

namespace {

constexpr const char* kSourceUnit = "omu_TypeDescription";

struct Types {
  std::shared_mutex mutex;
  std::map<std::string_view, omu_TypeDescription> byName;
};

Types& TheTypes() {
  // The table is never destroyed, because objects of static storage may still describe themselves
  // while the process ends.
  static Types* const kTypes = new Types;
  return *kTypes;
}

std::string_view ViewOf(const cow_String& text) {
  return {text.CStr(), text.Length()};
}

template <class Entry>
const Entry* FindEntry(const Entry* table, std::string_view name) {
  if (table == nullptr) return nullptr;
  for (; table->name != nullptr; ++table) {
    if (name == table->name) return table;
  }
  return nullptr;
}

template <class Entry>
std::vector<cow_String> NamesOf(const Entry* table, const omu_DeprecatedEntry* hidden) {
  std::vector<cow_String> names;
  if (table == nullptr) return names;
  for (; table->name != nullptr; ++table) {
    if (FindEntry(hidden, table->name) == nullptr) names.emplace_back(table->name);
  }
  return names;
}

} // namespace

omu_TypeDescription::omu_TypeDescription(const char* typeName, const omu_MethodEntry* methodTable,
                                         const omu_MemberEntry* memberTable,
                                         const omu_DeprecatedEntry* deprecatedMethodTable,
                                         const omu_DeprecatedEntry* deprecatedMemberTable)
    : m_name(typeName), m_methods(methodTable), m_members(memberTable),
      m_deprecatedMethods(deprecatedMethodTable), m_deprecatedMembers(deprecatedMemberTable) {}

const omu_TypeDescription* omu_TypeDescription::Find(const cow_String& typeName) {
  Types& types = TheTypes();
  const std::shared_lock<std::shared_mutex> lock(types.mutex);
  const auto found = types.byName.find(ViewOf(typeName));
  return found == types.byName.end() ? nullptr : &found->second;
}

const omu_TypeDescription& omu_TypeDescription::Enter(const omu_TypeDescription& description) {
  Types& types = TheTypes();
  const omu_TypeDescription* known = nullptr;
  {
    const std::shared_lock<std::shared_mutex> lock(types.mutex);
    const auto found = types.byName.find(description.m_name);
    if (found != types.byName.end()) known = &found->second;
  }
  if (known == nullptr) {
    const std::unique_lock<std::shared_mutex> lock(types.mutex);
    known = &types.byName.emplace(description.m_name, description).first->second;
  }
  if (!known->SameTables(description)) {
    atr_String message = atr_translate("type '%s' is described twice, with different tables");
    atr_SubstituteFormat(message, 1, description.m_name);
    nex_Exception::Throw(nex_AssertException(message.CStr()), kSourceUnit, __LINE__);
  }
  return *known;
}

std::vector<cow_String> omu_TypeDescription::MethodNames() const {
  return NamesOf(m_methods, m_deprecatedMethods);
}

std::vector<cow_String> omu_TypeDescription::MemberNames() const {
  return NamesOf(m_members, m_deprecatedMembers);
}

const omu_MethodEntry* omu_TypeDescription::FindMethod(const cow_String& methodName) const {
  return FindEntry(m_methods, ViewOf(methodName));
}

const omu_MemberEntry* omu_TypeDescription::FindMember(const cow_String& memberName) const {
  return FindEntry(m_members, ViewOf(memberName));
}

bool omu_TypeDescription::SameTables(const omu_TypeDescription& other) const {
  return m_methods == other.m_methods && m_members == other.m_members &&
         m_deprecatedMethods == other.m_deprecatedMethods &&
         m_deprecatedMembers == other.m_deprecatedMembers;
}
