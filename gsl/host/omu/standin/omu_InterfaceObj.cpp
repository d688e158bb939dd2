#include "omu_InterfaceObj.h"

#include "atr_String.h"
#include "nex_CommandException.h"
#include "omu_PrimTuple.h"

#include <algorithm>
#include <cctype>
#include <functional>
#include <string>

namespace {

constexpr const char* kSourceUnit = "omu_InterfaceObj";

[[noreturn]] void Refuse(const char* format, const cow_String& first, const cow_String& second,
                         int line) {
  atr_String message = atr_translate(format);
  atr_SubstituteFormat(message, 1, first.CStr());
  atr_SubstituteFormat(message, 2, second.CStr());
  nex_Exception::Throw(nex_CommandException(message.CStr()), kSourceUnit, line);
}

[[noreturn]] void RefuseArguments(const cow_String& type, const omu_MethodEntry& method,
                                  std::size_t given, int line) {
  atr_String message;
  if (method.mostArguments == 0) {
    message = atr_translate("%s.%s takes no arguments (%d given)");
    atr_SubstituteFormat(message, 3, static_cast<int>(given));
  } else {
    message = atr_translate("%s.%s takes %d to %d arguments (%d given)");
    atr_SubstituteFormat(message, 3, method.fewestArguments);
    atr_SubstituteFormat(message, 4, method.mostArguments);
    atr_SubstituteFormat(message, 5, static_cast<int>(given));
  }
  atr_SubstituteFormat(message, 1, type.CStr());
  atr_SubstituteFormat(message, 2, method.name);
  nex_Exception::Throw(nex_CommandException(message.CStr()), kSourceUnit, line);
}

[[noreturn]] void RefuseOperation(const omu_InterfaceObj& object, const char* operation, int line) {
  Refuse("'%s' objects do not support %s", object.TypeString(), operation, line);
}

int Order(const cow_String& a, const cow_String& b) {
  return a == b ? 0 : (a < b ? -1 : 1);
}

void AppendNames(std::string& text, const char* label, const std::vector<cow_String>& names) {
  if (names.empty()) return;
  text += label;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) text += ", ";
    text += names[i].CStr();
  }
}

} // namespace

omu_InterfaceObjVisitor::~omu_InterfaceObjVisitor() = default;

omu_InterfaceObj::omu_InterfaceObj(const omu_Shortcut& s)
    : m_shortcut(s), m_description(nullptr), m_stale(false) {}

omu_InterfaceObj::omu_InterfaceObj(const omu_InterfaceObj&) = default;

omu_InterfaceObj& omu_InterfaceObj::operator=(const omu_InterfaceObj&) = default;

omu_InterfaceObj::~omu_InterfaceObj() = default;

cow_String omu_InterfaceObj::TypeString() const {
  return m_description != nullptr ? m_description->Name() : "object";
}

cow_String omu_InterfaceObj::AsString() const {
  std::string text = std::string("<") + TypeString().CStr() + " object";
  const cow_String path = CommandPath();
  if (!path.IsEmpty()) text = text + " at " + path.CStr();
  return (text + ">").c_str();
}

cow_String omu_InterfaceObj::AsRepr() const {
  const cow_String path = CommandPath();
  return path.IsEmpty() ? AsString() : path;
}

bool omu_InterfaceObj::operator==(const omu_InterfaceObj& other) const {
  if (this == &other) return true;
  return m_shortcut.SharesWith(other.m_shortcut) && TypeString() == other.TypeString();
}

void omu_InterfaceObj::Accept(omu_InterfaceObjVisitor& visitor) const {
  visitor.Visit(*this);
}

unsigned int omu_InterfaceObj::DynTypeId() const {
  return 0;
}

void omu_InterfaceObj::DBWrite(const cls_WriteVisitor&) const {}

bool omu_InterfaceObj::IsMethod(const cow_String& name) const {
  return m_description != nullptr && m_description->FindMethod(name) != nullptr;
}

omu_Primitive* omu_InterfaceObj::CallMethod(const cow_String& name,
                                            const omu_PrimTuple& arguments) {
  RefuseWhenStale();
  const omu_MethodEntry* const entry =
      m_description != nullptr ? m_description->FindMethod(name) : nullptr;
  if (entry == nullptr) Refuse("'%s' object has no method '%s'", TypeString(), name, __LINE__);
  const auto given = static_cast<long long>(arguments.Count());
  if (given < entry->fewestArguments || given > entry->mostArguments) {
    RefuseArguments(TypeString(), *entry, arguments.Count(), __LINE__);
  }
  return (this->*entry->method)(arguments);
}

omu_Primitive* omu_InterfaceObj::GetMember(const cow_String& name) const {
  RefuseWhenStale();
  return (this->*MemberEntry(name).get)();
}

void omu_InterfaceObj::SetMember(const cow_String& name, const omu_Primitive& value) {
  RefuseWhenStale();
  const omu_MemberEntry& entry = MemberEntry(name);
  if (entry.set == nullptr) {
    Refuse("member '%s' of '%s' objects cannot be changed", name, TypeString(), __LINE__);
  }
  (this->*entry.set)(value);
}

void omu_InterfaceObj::DeleteMember(const cow_String& name) {
  RefuseWhenStale();
  const omu_MemberEntry& entry = MemberEntry(name);
  if (entry.remove == nullptr) {
    Refuse("member '%s' of '%s' objects cannot be deleted", name, TypeString(), __LINE__);
  }
  (this->*entry.remove)();
}

std::vector<cow_String> omu_InterfaceObj::MemberList() const {
  return m_description != nullptr ? m_description->MemberNames() : std::vector<cow_String>();
}

std::vector<cow_String> omu_InterfaceObj::MemberListForQry() const {
  std::vector<cow_String> names = MemberList();
  const std::vector<cow_String> excluded = MemberExcludeListForQry();
  const auto isExcluded = [&excluded](const cow_String& name) {
    return std::find(excluded.begin(), excluded.end(), name) != excluded.end();
  };
  names.erase(std::remove_if(names.begin(), names.end(), isExcluded), names.end());
  return names;
}

std::vector<cow_String> omu_InterfaceObj::MemberExcludeListForQry() const {
  return {};
}

std::vector<cow_String> omu_InterfaceObj::MethodList() const {
  return m_description != nullptr ? m_description->MethodNames() : std::vector<cow_String>();
}

cow_String omu_InterfaceObj::FullRepr() const {
  std::string text = AsString().CStr();
  AppendNames(text, "\n  members: ", MemberList());
  AppendNames(text, "\n  methods: ", MethodList());
  return text.c_str();
}

cow_String omu_InterfaceObj::JournalVariable() const {
  std::string name = TypeString().CStr();
  if (!name.empty()) {
    name[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(name[0])));
  }
  return name.c_str();
}

const omu_Shortcut& omu_InterfaceObj::BaseShortcut() const {
  return m_shortcut;
}

const omu_Shortcut* omu_InterfaceObj::BaseShortcutGetABC() const {
  return m_shortcut.IsEmpty() ? nullptr : &m_shortcut;
}

cow_String omu_InterfaceObj::CommandPath() const {
  return m_shortcut.Path();
}

omu_InterfaceObj* omu_InterfaceObj::Coerce(const omu_InterfaceObj& other) const {
  return other.TypeString() == TypeString() ? other.Copy() : nullptr;
}

omu_InterfaceObj* omu_InterfaceObj::Cast(const cow_String& typeName) const {
  if (typeName != TypeString()) {
    Refuse("'%s' object cannot become a '%s'", TypeString(), typeName, __LINE__);
  }
  return Copy();
}

omu_InterfaceObj* omu_InterfaceObj::Absolute() const {
  RefuseOperation(*this, "abs()", __LINE__);
}

omu_InterfaceObj* omu_InterfaceObj::AddOperation(const omu_InterfaceObj&) const {
  RefuseOperation(*this, "+", __LINE__);
}

omu_InterfaceObj* omu_InterfaceObj::SubOperation(const omu_InterfaceObj&) const {
  RefuseOperation(*this, "-", __LINE__);
}

omu_InterfaceObj* omu_InterfaceObj::MulOperation(const omu_InterfaceObj&) const {
  RefuseOperation(*this, "*", __LINE__);
}

omu_InterfaceObj* omu_InterfaceObj::DivOperation(const omu_InterfaceObj&) const {
  RefuseOperation(*this, "/", __LINE__);
}

omu_InterfaceObj* omu_InterfaceObj::UnaryNegative() const {
  RefuseOperation(*this, "unary -", __LINE__);
}

bool omu_InterfaceObj::NonZero() const {
  return true;
}

const omu_InterfaceObj* omu_InterfaceObj::ConstGetWrapper() const {
  return this;
}

bool omu_InterfaceObj::IsStale() const {
  return m_stale || m_shortcut.IsExpired();
}

void omu_InterfaceObj::SetStale() {
  m_stale = true;
}

int omu_InterfaceObj::Compare(const omu_InterfaceObj& other) const {
  if (*this == other) return 0;
  if (const int byType = Order(TypeString(), other.TypeString())) return byType;
  if (const int byPath = ComparePath(other)) return byPath;
  return std::less<const omu_InterfaceObj*>()(this, &other) ? -1 : 1;
}

int omu_InterfaceObj::ComparePath(const omu_InterfaceObj& other) const {
  return Order(CommandPath(), other.CommandPath());
}

void omu_InterfaceObj::DescribeType(const char* typeName, const omu_MethodEntry* methods,
                                    const omu_MemberEntry* members,
                                    const omu_DeprecatedEntry* deprecatedMethods,
                                    const omu_DeprecatedEntry* deprecatedMembers) {
  m_description = &omu_TypeDescription::Enter(
      {typeName, methods, members, deprecatedMethods, deprecatedMembers});
}

void omu_InterfaceObj::RefuseWhenStale() const {
  if (IsStale()) Refuse("%s is stale: what it stood for is gone", AsString(), {}, __LINE__);
}

const omu_MemberEntry& omu_InterfaceObj::MemberEntry(const cow_String& name) const {
  const omu_MemberEntry* const entry =
      m_description != nullptr ? m_description->FindMember(name) : nullptr;
  if (entry == nullptr) Refuse("'%s' object has no member '%s'", TypeString(), name, __LINE__);
  return *entry;
}
