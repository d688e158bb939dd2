#include "cls_ReadVisitor.h"
#include "nex_CommandException.h"
#include "omu_InterfaceObj.h"
#include "omu_ObjVarray.h"
#include "omu_PrimEnumBase.h"
#include "omu_PrimTuple.h"
#include "xh_Memory.h"

#include <cstring>
#include <new>
#include <string>
#include <utility>

omu_Primitive::~omu_Primitive() = default;

omu_PrimTuple::omu_PrimTuple(int, int bracket) : m_bracket(bracket) {}

omu_PrimTuple::~omu_PrimTuple() = default;

omu_PrimTuple* omu_PrimTuple::Copy() const {
  return new omu_PrimTuple(*this);
}

bool omu_PrimTuple::operator==(const omu_Primitive& other) const {
  const auto* const tuple = dynamic_cast<const omu_PrimTuple*>(&other);
  return tuple != nullptr && tuple->m_bracket == m_bracket && tuple->m_numbers == m_numbers;
}

void omu_PrimTuple::Put(double number) {
  m_numbers.push_back(number);
}

omu_PrimEnumBase::omu_PrimEnumBase() : m_value(0) {}

omu_PrimEnumBase::omu_PrimEnumBase(const cls_ReadVisitor& visitor)
    : m_name(visitor.ReadString(cls_FieldHandle(0, "_string"), cow_String()).CStr()), m_value(0) {}

omu_PrimEnumBase::omu_PrimEnumBase(const omu_PrimEnumBase&) = default;

omu_PrimEnumBase& omu_PrimEnumBase::operator=(const omu_PrimEnumBase&) = default;

omu_PrimEnumBase::~omu_PrimEnumBase() = default;

int omu_PrimEnumBase::GetValue() const {
  return m_value;
}

const atr_String& omu_PrimEnumBase::GetString() const {
  return m_name;
}

cow_String omu_PrimEnumBase::AsString() const {
  return cow_String(m_name.CStr(), m_name.Length());
}

cow_String omu_PrimEnumBase::PermissibleValuesAsString() const {
  std::string text;
  const cow_Map<cow_String, unsigned int> values = PermissibleValues();
  for (const auto& [name, value] : values.xh_Pairs()) {
    static_cast<void>(value);
    if (!text.empty()) text += " | ";
    text += name.CStr();
  }
  return cow_String(text.c_str());
}

bool omu_PrimEnumBase::operator==(const omu_Primitive& other) const {
  const auto* const that = dynamic_cast<const omu_PrimEnumBase*>(&other);
  return that != nullptr && that->m_value == m_value &&
         std::strcmp(that->m_name.CStr(), m_name.CStr()) == 0;
}

void omu_PrimEnumBase::Set(int value, const char* name) {
  m_name = atr_String(name);
  m_value = value;
}

omu_Shortcut::omu_Shortcut(const cow_String& path) : m_path(path) {}

omu_Shortcut::~omu_Shortcut() = default;

omu_Shortcut::omu_Shortcut(const omu_Shortcut&) = default;

omu_Shortcut& omu_Shortcut::operator=(const omu_Shortcut&) = default;

omu_InterfaceObj::omu_InterfaceObj(const omu_Shortcut& shortcut)
    : m_place(shortcut), m_typeName(""), m_methods(nullptr) {}

omu_InterfaceObj::omu_InterfaceObj(const omu_InterfaceObj&) = default;

omu_InterfaceObj& omu_InterfaceObj::operator=(const omu_InterfaceObj&) = default;

omu_InterfaceObj::~omu_InterfaceObj() = default;

void omu_InterfaceObj::DescribeType(const char* typeName, const omu_MethodEntry* methods,
                                    const omu_MemberEntry*, const void*, const void*) {
  m_typeName = typeName;
  m_methods = methods;
}

omu_Primitive* omu_InterfaceObj::xh_Call(const char* method, const omu_PrimTuple& arguments) {
  const int count = static_cast<int>(arguments.xh_Numbers().size());
  const omu_MethodEntry* entry = m_methods;
  while (entry != nullptr && entry->title != nullptr && std::strcmp(entry->title, method) != 0)
    ++entry;
  if (entry == nullptr || entry->title == nullptr) {
    nex_Exception::Throw(nex_CommandException(cow_String("no such method")), "external", 1);
  }
  if (count < entry->atLeast || count > entry->atMost) {
    nex_Exception::Throw(nex_CommandException(cow_String("wrong arguments")), "external", 2);
  }
  return (this->*entry->run)(arguments);
}

struct xh_Pages::Page {
  static constexpr unsigned int kPlaces = 16;

  void* places[kPlaces];
  Page* before;
  Page* after;
};

xh_Pages::xh_Pages() : m_first(nullptr), m_last(nullptr), m_count(0) {}

xh_Pages::xh_Pages(xh_Pages&& other) noexcept : xh_Pages() {
  *this = std::move(other);
}

xh_Pages& xh_Pages::operator=(xh_Pages&& other) noexcept {
  std::swap(m_first, other.m_first);
  std::swap(m_last, other.m_last);
  std::swap(m_count, other.m_count);
  return *this;
}

xh_Pages::~xh_Pages() {
  while (m_count != 0)
    Pop();
}

void* xh_Pages::At(unsigned int i) const {
  const Page* page = m_first;
  for (; i >= Page::kPlaces; i -= Page::kPlaces)
    page = page->after;
  return page->places[i];
}

void xh_Pages::Push(void* pointer) {
  const unsigned int place = m_count % Page::kPlaces;
  if (place == 0) {
    void* const block = xh_Memory::Take(sizeof(Page), alignof(Page));
    if (block == nullptr) throw std::bad_alloc();
    Page* const page = ::new (block) Page{{}, m_last, nullptr};
    (m_last != nullptr ? m_last->after : m_first) = page;
    m_last = page;
  }
  m_last->places[place] = pointer;
  ++m_count;
}

void* xh_Pages::Pop() {
  --m_count;
  const unsigned int place = m_count % Page::kPlaces;
  void* const popped = m_last->places[place];
  if (place == 0) {
    Page* const page = std::exchange(m_last, m_last->before);
    (m_last != nullptr ? m_last->after : m_first) = nullptr;
    xh_Memory::Release(page);
  }
  return popped;
}
