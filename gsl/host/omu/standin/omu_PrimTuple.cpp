#include "omu_PrimTuple.h"

#include "nex_CommandException.h"

#include <charconv>
#include <string>

namespace {

constexpr const char* kSourceUnit = "omu_PrimTuple";

void AppendNumber(std::string& text, double number) {
  // A sign, 17 digits, a point and an exponent of three digits are 24 characters at most.
  char digits[32];
  const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, number);
  const std::string shortest(digits, end.ptr);
  text += shortest;
  if (shortest.find_first_not_of("-0123456789") == std::string::npos) text += ".0";
}

char ClosingBracket(int opening) {
  switch (opening) {
  case '(':
    return ')';
  case '[':
    return ']';
  case '{':
    return '}';
  default:
    return static_cast<char>(opening);
  }
}

} // namespace

omu_PrimTuple::omu_PrimTuple(int expectedCount, int bracket) : m_kind(bracket) {
  if (expectedCount > 0) m_elements.reserve(static_cast<std::size_t>(expectedCount));
}

omu_PrimTuple::omu_PrimTuple(const omu_PrimTuple& other)
    : omu_Primitive(other), m_kind(other.m_kind) {
  m_elements.reserve(other.m_elements.size());
  for (const Element& e : other.m_elements) {
    m_elements.push_back(
        {e.number, std::unique_ptr<omu_Primitive>(e.object ? e.object->Copy() : nullptr)});
  }
}

omu_PrimTuple& omu_PrimTuple::operator=(const omu_PrimTuple& other) {
  if (this != &other) *this = omu_PrimTuple(other);
  return *this;
}

omu_PrimTuple::~omu_PrimTuple() = default;

bool omu_PrimTuple::operator==(const omu_Primitive& other) const {
  const auto* const tuple = dynamic_cast<const omu_PrimTuple*>(&other);
  if (tuple == nullptr || tuple->m_kind != m_kind || tuple->Count() != Count()) return false;
  for (std::size_t i = 0; i < Count(); ++i) {
    const Element& a = m_elements[i];
    const Element& b = tuple->m_elements[i];
    if ((a.object == nullptr) != (b.object == nullptr)) return false;
    if (a.object == nullptr ? !(a.number == b.number) : !(*a.object == *b.object)) return false;
  }
  return true;
}

omu_PrimTuple* omu_PrimTuple::Copy() const {
  return new omu_PrimTuple(*this);
}

cow_String omu_PrimTuple::AsString(int style) const {
  std::string text(1, static_cast<char>(m_kind));
  for (const Element& e : m_elements) {
    if (text.size() > 1) text += ", ";
    if (e.object != nullptr) {
      text += e.object->AsString(style).CStr();
    } else {
      AppendNumber(text, e.number);
    }
  }
  // The comma after a single element distinguishes a tuple from a number in brackets.
  if (m_kind == '(' && m_elements.size() == 1) text += ',';
  text += ClosingBracket(m_kind);
  return text.c_str();
}

void omu_PrimTuple::Put(double number) {
  m_elements.push_back({number, nullptr});
}

void omu_PrimTuple::Put(const omu_Primitive& value) {
  m_elements.push_back({0.0, std::unique_ptr<omu_Primitive>(value.Copy())});
}

double omu_PrimTuple::Number(std::size_t i) const {
  const Element& element = At(i);
  if (element.object != nullptr) {
    nex_Exception::Throw(nex_CommandException("tuple element is not a number"), kSourceUnit,
                         __LINE__);
  }
  return element.number;
}

const omu_Primitive& omu_PrimTuple::Primitive(std::size_t i) const {
  const Element& element = At(i);
  if (element.object == nullptr) {
    nex_Exception::Throw(nex_CommandException("tuple element is a plain number"), kSourceUnit,
                         __LINE__);
  }
  return *element.object;
}

const omu_PrimTuple::Element& omu_PrimTuple::At(std::size_t i) const {
  if (i >= m_elements.size()) {
    nex_Exception::Throw(nex_CommandException("tuple index out of range"), kSourceUnit, __LINE__);
  }
  return m_elements[i];
}
