#ifndef RECORDS_RECORD_TABLES_H
#define RECORDS_RECORD_TABLES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// What records name by a number: texts and prefixes of identities, each there once, in the order
/// of first use.
namespace gsl_records {

/// The number of an item in its table.
using Number = std::uint32_t;
constexpr Number kNone = 0xFFFFFFFFu;

[[noreturn]] void RefuseCount();

/// A number of items, as a store keeps it. Throws gsl_RecordError when there are too many.
inline Number Counted(std::size_t count) {
  if (count >= kNone) RefuseCount();
  return static_cast<Number>(count);
}

/// A hash that spreads numbers of one remainder, too: a file may be full of them.
struct MixedHash {
  std::size_t operator()(std::uint64_t number) const {
    number = (number ^ (number >> 30)) * 0xBF58476D1CE4E5B9u;
    number = (number ^ (number >> 27)) * 0x94D049BB133111EBu;
    return static_cast<std::size_t>(number ^ (number >> 31));
  }
};

class TextTable {
public:
  TextTable() = default;
  // Texts are looked up by views into the table.
  TextTable(const TextTable&) = delete;
  TextTable& operator=(const TextTable&) = delete;

  Number Size() const { return static_cast<Number>(m_texts.size()); }
  std::string_view operator[](Number number) const { return m_texts[number]; }
  /// Returns the number of the text, which is added where it is new.
  Number NumberOf(std::string_view text);
  void Truncate(Number size);
  std::size_t BytesHeld() const;

private:
  static constexpr std::size_t kRecent = 64;

  Number Find(std::string_view text);

  std::deque<std::string> m_texts;
  std::unordered_map<std::string_view, Number> m_numbers;
  /// Numbers of texts that were asked for, by a cheap mixture of a text's characters; one more than
  /// the number, 0 for nothing.
  std::array<Number, kRecent> m_recent = {};
};

class PrefixTable {
public:
  Number Size() const { return static_cast<Number>(m_prefixes.size()); }
  std::uint64_t operator[](Number number) const { return m_prefixes[number]; }
  const std::uint64_t* Prefixes() const { return m_prefixes.data(); }
  /// Returns the number of the prefix, which is added where it is new.
  Number NumberOf(std::uint64_t prefix) {
    if (m_last < m_prefixes.size() && m_prefixes[m_last] == prefix) return m_last;
    return m_last = Find(prefix);
  }
  void Truncate(Number size);
  std::size_t BytesHeld() const;

private:
  Number Find(std::uint64_t prefix);

  std::vector<std::uint64_t> m_prefixes;
  std::unordered_map<std::uint64_t, Number, MixedHash> m_numbers;
  Number m_last = 0;
};

} // namespace gsl_records

#endif
