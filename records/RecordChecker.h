#ifndef RECORDS_RECORD_CHECKER_H
#define RECORDS_RECORD_CHECKER_H

#include "PlainBuffer.h"
#include "RecordData.h"
#include "RecordFrame.h"
#include "RecordShapes.h"
#include "gsl_RecordStore.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace gsl_records {

[[noreturn]] void Refuse(const char* why);

/// The kind of a value, if there is such a kind in the byte form.
unsigned int CheckedKind(unsigned int kind);

} // namespace gsl_records

/// Checks the records of a body, whose tables are in the data of the store.
class gsl_RecordChecker {
public:
  gsl_RecordChecker(gsl_records::Bytes records, gsl_RecordStore::Data& data);

  /// Writes where the records begin, counted from `base`, and how many there are at all places.
  /// Throws gsl_RecordError for what docs/records.md does not allow.
  void Check(std::size_t recordCount, const unsigned char* base);

private:
  /// What follows the identity in a record: neighbouring doubles are one step.
  struct Step {
    enum Last : std::uint8_t { Unsigneds = 0xFC, Doubles = 0xFD, Entries = 0xFE, End = 0xFF };

    std::uint8_t kind; ///< a gsl_RecordKind, or a Last
    std::uint32_t count;
  };
  static constexpr std::uint8_t kMany = 0xFF;

  /// A number, and what follows it.
  struct Taken {
    std::uint64_t value;
    const unsigned char* next;
  };

  void PlanSteps();
  void CheckLinks();

  /// Each of these returns where it ends. Nothing is read from the end on.
  const unsigned char* Record(const unsigned char* at);
  const unsigned char* Value(std::uint8_t kind, const unsigned char* at);
  const unsigned char* Elements(std::uint8_t kind, const unsigned char* at);
  const unsigned char* ListEntries(const unsigned char* at);
  const unsigned char* Object(const unsigned char* at);

  Taken Varint(const unsigned char* at) const {
    if (at != m_end && *at < 0x80u) return {*at, at + 1};
    return LongVarint(at);
  }
  Taken LongVarint(const unsigned char* at) const;
  Taken Varint32(const unsigned char* at) const;
  Taken Byte(const unsigned char* at) const;
  const unsigned char* Skip(const unsigned char* at, std::size_t count) const;
  std::size_t Remaining(const unsigned char* at) const {
    return static_cast<std::size_t>(m_end - at);
  }

  void Hold(std::uint64_t record);
  void KeepPlaces();
  std::uint64_t PlacesOf(std::size_t record) const {
    return m_places[record] != kMany ? m_places[record] : ManyPlacesOf(record);
  }
  std::uint64_t ManyPlacesOf(std::size_t record) const;
  /// Whether it was not marked before.
  static bool Mark(std::vector<std::uint64_t>& marks, std::size_t number) {
    std::uint64_t& word = marks[number / 64];
    const std::uint64_t bit = std::uint64_t{1} << (number % 64);
    const bool isNew = (word & bit) == 0;
    word |= bit;
    return isNew;
  }

  const unsigned char* const m_begin;
  const unsigned char* const m_end;
  gsl_RecordStore::Data& m_data;
  /// The steps of all shapes, and the first step of each shape.
  std::vector<Step> m_steps;
  std::vector<std::uint32_t> m_firstSteps;
  std::size_t m_record = 0;
  /// How many records there are within a record, itself included, counted at every place.
  std::uint64_t m_inside = 0;
  gsl_records::PlainBuffer<std::uint8_t> m_places; ///< of each record, kMany for many
  struct Many {
    std::size_t record;
    gsl_records::Number places;
  };
  std::vector<Many> m_many; ///< in the order of the records
  std::vector<std::uint64_t> m_isHeld, m_isOwned;
  std::size_t m_held = 0, m_owned = 0;
};

#endif
