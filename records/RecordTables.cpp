#include "RecordTables.h"

#include "gsl_RecordError.h"

namespace gsl_records {

namespace {

// An item of a hash table takes its own size and about three pointers.
template <class Map>
std::size_t Held(const Map& map) {
  return map.size() * (sizeof(typename Map::value_type) + 3 * sizeof(void*));
}

} // namespace

void RefuseCount() {
  throw gsl_RecordError("The record store is full: it holds at most 4294967294 of each item");
}

Number TextTable::NumberOf(std::string_view text) {
  if (text.empty()) return Find(text);
  const auto mixed = static_cast<unsigned char>(text.front() + 7 * text.back()) +
                     31 * static_cast<unsigned char>(text[text.size() / 2]) + 5 * text.size();
  Number& recent = m_recent[mixed % kRecent];
  if (recent != 0 && m_texts[recent - 1] == text) return recent - 1;
  const Number number = Find(text);
  recent = number + 1;
  return number;
}

Number TextTable::Find(std::string_view text) {
  const auto found = m_numbers.find(text);
  if (found != m_numbers.end()) return found->second;
  const Number number = Counted(m_texts.size());
  m_texts.emplace_back(text);
  try {
    m_numbers.emplace(m_texts.back(), number);
  } catch (...) {
    m_texts.pop_back();
    throw;
  }
  return number;
}

void TextTable::Truncate(Number size) {
  if (size == m_texts.size()) return;
  m_recent = {};
  while (m_texts.size() > size) {
    m_numbers.erase(m_texts.back());
    m_texts.pop_back();
  }
}

std::size_t TextTable::BytesHeld() const {
  std::size_t bytes = Held(m_numbers);
  for (const std::string& text : m_texts)
    bytes += sizeof(std::string) + text.capacity();
  return bytes;
}

Number PrefixTable::Find(std::uint64_t prefix) {
  const auto found = m_numbers.find(prefix);
  if (found != m_numbers.end()) return found->second;
  const Number number = Counted(m_prefixes.size());
  m_prefixes.push_back(prefix);
  try {
    m_numbers.emplace(prefix, number);
  } catch (...) {
    m_prefixes.pop_back();
    throw;
  }
  return number;
}

void PrefixTable::Truncate(Number size) {
  while (m_prefixes.size() > size) {
    m_numbers.erase(m_prefixes.back());
    m_prefixes.pop_back();
  }
}

std::size_t PrefixTable::BytesHeld() const {
  return m_prefixes.capacity() * sizeof(std::uint64_t) + Held(m_numbers);
}

} // namespace gsl_records
