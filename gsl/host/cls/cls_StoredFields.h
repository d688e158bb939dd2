#ifndef CLS_STORED_FIELDS_H
#define CLS_STORED_FIELDS_H

#include <cstddef>
#include <cstdint>
#include <cstring>

/// A record that is read where its storage keeps it: the fields of its shape, and the bytes of its
/// values one after the other. docs/records.md describes the bytes, which were checked before.
class cls_StoredFields {
public:
  /// What a value is, by the numbers of docs/records.md. The last field of a shape has no name and
  /// is of no kind.
  enum Kind : unsigned int { Integer, Double, Boolean, Text, Record, None = ~0u };

  /// A field of a shape.
  struct Slot {
    const char* name;       ///< without an end; it belongs to the store
    std::size_t nameLength; ///< in bytes
    unsigned int kind;      ///< a Kind, or that of an object
  };

  cls_StoredFields() = default;
  /// The fields of a shape whose values begin there.
  cls_StoredFields(const Slot* first, const unsigned char* values)
      : m_first(first), m_next(first), m_at(values) {}

  /// Returns whether there is a record.
  [[nodiscard]] bool IsThere() const { return m_first != nullptr; }
  /// Returns whether the record has no field, so that its elements begin where its values do.
  [[nodiscard]] bool HasElementsOnly() const { return m_first != nullptr && m_first->kind == None; }
  /// Returns whether no field was taken of a record that is there.
  [[nodiscard]] bool IsAtFirst() const { return m_first != nullptr && m_next == m_first; }
  /// Goes on after that many fields, whose values end there. Does nothing without a record.
  void MoveTo(std::size_t count, const unsigned char* at) {
    if (m_first == nullptr) return;
    m_next = m_first + count;
    m_at = at;
  }
  /// Returns the number of fields that were taken.
  std::size_t Taken() const { return static_cast<std::size_t>(m_next - m_first); }
  /// Returns where the next value or the elements begin.
  const unsigned char* At() const { return m_at; }
  /// Returns the next field.
  const Slot& Next() const { return *m_next; }

  /// Returns whether the next field has that name and holds a value of that kind. The name is
  /// mostly a constant, so that the comparison takes a few instructions.
  [[nodiscard]] bool IsNext(const char* name, Kind kind) const {
    const std::size_t length = __builtin_strlen(name);
    return m_next->kind == kind && m_next->nameLength == length &&
           __builtin_memcmp(m_next->name, name, length) == 0;
  }

  /// Takes the next field, a double.
  double TakeDouble() {
    const double value = DoubleAt(m_at);
    MoveOn(m_at + sizeof value);
    return value;
  }
  /// Takes the next field, a boolean.
  [[nodiscard]] bool TakeBoolean() {
    const bool value = *m_at != 0;
    MoveOn(m_at + 1);
    return value;
  }
  /// Takes the next field, an integer.
  int TakeInteger() { return IntegerOf(TakeNumber()); }
  /// Takes the next field, and returns the number of its text or of its record.
  std::uint32_t TakeLink() { return static_cast<std::uint32_t>(TakeNumber()); }

  /// Reads a number in groups of seven bits. Returns where it ends.
  static const unsigned char* NumberAt(const unsigned char* at, std::uint64_t& number) {
    number = at[0];
    if (at[0] < 0x80u) return at + 1;
    for (unsigned int i = 1; i < kUsual; ++i) {
      // What marked the byte before goes.
      number += (std::uint64_t{at[i]} - 1) << (7 * i);
      if (at[i] < 0x80u) return at + i + 1;
    }
    return LongNumberAt(at + kUsual, number);
  }
  /// Does the same where four bytes can be read. No branch depends on the length of a number that
  /// takes at most four bytes.
  static const unsigned char* NumberInWord(const unsigned char* at, std::uint64_t& number) {
    std::uint32_t word = 0;
    std::memcpy(&word, at, sizeof word);
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    word = __builtin_bswap32(word);
#endif
    const std::uint32_t ends = ~word & 0x80808080u;
    if (ends == 0) return NumberAt(at, number);
    // The bytes after the number go, then the marks between the groups.
    std::uint32_t groups = word & (ends ^ (ends - 1)) & 0x7F7F7F7Fu;
    groups = (groups & 0x007F007Fu) | (groups & 0x7F007F00u) >> 1;
    number = (groups & 0x3FFFu) | (groups & 0x3FFF0000u) >> 2;
    return at + ((static_cast<unsigned int>(__builtin_ctz(ends)) + 1) >> 3);
  }
  /// Returns the first place among the bytes at which no four bytes begin.
  static const unsigned char* EndOfWords(const unsigned char* bytes, std::size_t count) {
    constexpr std::size_t kWord = sizeof(std::uint32_t);
    return count < kWord ? bytes : bytes + (count - (kWord - 1));
  }
  /// Returns the integer that a number stores.
  static int IntegerOf(std::uint64_t bits) {
    return static_cast<int>(static_cast<std::uint32_t>((bits >> 1) ^ (0 - (bits & 1u))));
  }
  /// Reads a double, whose lowest byte comes first.
  static double DoubleAt(const unsigned char* at) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, at, sizeof bits);
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    bits = __builtin_bswap64(bits);
#endif
    double value = 0.0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
  }

private:
  std::uint64_t TakeNumber() {
    std::uint64_t number = 0;
    MoveOn(NumberAt(m_at, number));
    return number;
  }
  void MoveOn(const unsigned char* at) {
    m_at = at;
    ++m_next;
  }

  /// Few numbers take more bytes.
  static constexpr unsigned int kUsual = 5;

  /// Reads the rest of a number.
  static const unsigned char* LongNumberAt(const unsigned char* at, std::uint64_t& number) {
    for (unsigned int shift = 7 * kUsual;; shift += 7) {
      number += (std::uint64_t{*at} - 1) << shift;
      if (*at++ < 0x80u) return at;
    }
  }

  static constexpr Slot kNothing = {"", 0, None};

  const Slot* m_first = nullptr;
  const Slot* m_next = &kNothing;
  const unsigned char* m_at = nullptr;
};

#endif
