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
  /// Of the records that begin there in a body.
  gsl_RecordChecker(gsl_records::CheckedBody& body, const unsigned char* records,
                    gsl_RecordStore::Data& data);

  /// Writes where the records begin, counted from `base`, and how many there are at all places.
  /// Sums the body on the way. Throws gsl_RecordError for what docs/records.md does not allow.
  void Check(std::size_t recordCount, const unsigned char* base);

private:
  /// What follows the identity in a record: neighbouring fields of one kind are one step.
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
  /// Calls `keep` with the number and the end of each record.
  template <class Keep>
  void CheckRecords(std::size_t recordCount, const Keep& keep);
  void CheckLinks();

  /// Each of these returns where it ends. Nothing is read from the end on. A record is far from the
  /// end where its fields end before it, whatever they hold.
  template <bool kIsFar>
  const unsigned char* Record(const unsigned char* at);
  template <bool kIsFar>
  const unsigned char* Identity(const unsigned char* at) const;
  template <bool kIsFar>
  const unsigned char* Text(const unsigned char* at) const;
  const unsigned char* Value(std::uint8_t kind, const unsigned char* at);
  const unsigned char* Elements(std::uint8_t kind, const unsigned char* at);
  const unsigned char* ListEntries(const unsigned char* at);
  const unsigned char* Object(const unsigned char* at);

  /// Reads a number whose length the processor can foresee.
  template <bool kIsFar>
  Taken Varint(const unsigned char* at) const;
  /// Reads a number that mostly takes one byte.
  template <bool kIsFar>
  Taken SmallVarint(const unsigned char* at) const;
  template <bool kIsFar>
  const unsigned char* SkipVarint(const unsigned char* at) const;
  /// Skips a number of at most 32 bits, whatever its length is.
  template <bool kIsFar>
  const unsigned char* SkipVarint32(const unsigned char* at) const;
  /// Skips two such numbers.
  template <bool kIsFar>
  const unsigned char* SkipTwoVarint32(const unsigned char* at) const;
  template <bool kIsFar>
  const unsigned char* Skip(const unsigned char* at, std::size_t count) const;
  /// Reads a number byte by byte, and refuses what is not a number.
  Taken LongVarint(const unsigned char* at) const;
  Taken Varint32(const unsigned char* at) const;
  Taken Byte(const unsigned char* at) const;
  std::size_t Remaining(const unsigned char* at) const {
    return static_cast<std::size_t>(m_end - at);
  }

  void Hold(std::uint64_t record);
  std::uint8_t PlacesToKeep();
  std::uint8_t ShapeToKeep() const {
    constexpr std::uint8_t kOther = gsl_RecordStore::Data::kOtherShape;
    return m_shape < kOther ? static_cast<std::uint8_t>(m_shape) : kOther;
  }
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

  gsl_records::CheckedBody& m_body;
  const unsigned char* const m_begin;
  const unsigned char* const m_end;
  /// Eight bytes begin at each place before this one.
  const unsigned char* const m_wordsEnd;
  /// A record that begins before this place is far from the end.
  const unsigned char* m_farEnd;
  gsl_RecordStore::Data& m_data;
  const std::size_t m_textCount;
  const std::size_t m_prefixCount;
  /// The steps of all shapes, and the first step of each shape.
  std::vector<Step> m_steps;
  std::vector<std::uint32_t> m_firstSteps;
  std::size_t m_record = 0;
  std::uint64_t m_shape = 0; ///< of that record
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
