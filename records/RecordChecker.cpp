#include "RecordChecker.h"

#include "Varint.h"
#include "gsl_RecordError.h"

#include <algorithm>

using gsl_records::CheckedKind;
using gsl_records::kEndOfEntries;
using gsl_records::kMostVarintBytes;
using gsl_records::kNone;
using gsl_records::Number;
using gsl_records::Refuse;
using gsl_records::Shape;
using gsl_records::ShapeField;
using Kind = gsl_RecordKind;

namespace {

constexpr std::uint8_t CodeOf(Kind kind) {
  return static_cast<std::uint8_t>(kind);
}

constexpr std::size_t kWord = sizeof(std::uint64_t);

std::size_t WordsOf(std::size_t marks) {
  return marks / 64 + 1;
}

/// Equal records are stored once; a reader meets them once for each place that holds them.
[[noreturn]] void RefuseSize() {
  Refuse("The bytes hold more than 4294967294 records, counted at every place that holds them");
}

} // namespace

namespace gsl_records {

void Refuse(const char* why) {
  throw gsl_RecordError(why);
}

unsigned int CheckedKind(unsigned int kind) {
  if (kind > CodeOf(Kind::Null) || kind == CodeOf(Kind::Reference)) {
    Refuse("A field in the bytes is of an unknown kind");
  }
  return kind;
}

} // namespace gsl_records

gsl_RecordChecker::gsl_RecordChecker(gsl_records::CheckedBody& body, const unsigned char* records,
                                     gsl_RecordStore::Data& data)
    : m_body(body), m_begin(records), m_end(body.Body().begin + body.Body().count),
      m_wordsEnd(Remaining(m_begin) < kWord ? m_begin : m_end - (kWord - 1)), m_farEnd(m_begin),
      m_data(data), m_textCount(data.texts.Size()), m_prefixCount(data.prefixes.Size()) {}

void gsl_RecordChecker::PlanSteps() {
  std::size_t most = 0;
  for (const Shape& shape : m_data.shapes.Shapes()) {
    const std::size_t first = m_steps.size();
    m_firstSteps.push_back(static_cast<std::uint32_t>(first));
    const ShapeField* const firstField = &m_data.shapes.Fields()[shape.firstField];
    const ShapeField* field = firstField;
    for (; field->kind < ShapeField::Entries; ++field) {
      if (m_steps.size() > first && m_steps.back().kind == field->kind) {
        ++m_steps.back().count;
      } else {
        m_steps.push_back({field->kind, 1});
      }
    }
    most = std::max(most, static_cast<std::size_t>(field - firstField));
    std::uint8_t last = field->kind == ShapeField::Entries ? Step::Entries : Step::End;
    if (shape.collection == gsl_RecordCollection::Unsigneds) last = Step::Unsigneds;
    if (shape.collection == gsl_RecordCollection::Doubles) last = Step::Doubles;
    m_steps.push_back({last, 1});
  }
  // The number of the shape and the identity are three numbers. A word begins at each of them.
  const std::size_t mostBytes = (most + 3) * kMostVarintBytes + kWord;
  if (mostBytes < Remaining(m_begin)) m_farEnd = m_end - mostBytes;
}

template <bool kIsFar>
inline gsl_RecordChecker::Taken gsl_RecordChecker::Varint(const unsigned char* at) const {
  if (kIsFar || at < m_wordsEnd) {
    std::uint64_t value = 0;
    const unsigned char* const next = gsl_records::GetUsualVarint(at, value);
    if (next != nullptr) return {value, next};
  }
  return LongVarint(at);
}

template <bool kIsFar>
inline gsl_RecordChecker::Taken gsl_RecordChecker::SmallVarint(const unsigned char* at) const {
  if ((kIsFar || at != m_end) && *at < 0x80u) return {*at, at + 1};
  return LongVarint(at);
}

template <bool kIsFar>
inline const unsigned char* gsl_RecordChecker::SkipVarint(const unsigned char* at) const {
  if (kIsFar || at < m_wordsEnd) {
    const unsigned char* const next = gsl_records::SkipUsualVarint(at);
    if (next != nullptr) return next;
  }
  return LongVarint(at).next;
}

template <bool kIsFar>
inline const unsigned char* gsl_RecordChecker::SkipVarint32(const unsigned char* at) const {
  if (kIsFar || at < m_wordsEnd) {
    const std::size_t length = gsl_records::LengthOfShortVarint(gsl_records::GetFixed64(at));
    if (length != 0) return at + length;
  }
  return Varint32(at).next;
}

template <bool kIsFar>
inline const unsigned char* gsl_RecordChecker::SkipTwoVarint32(const unsigned char* at) const {
  if (kIsFar || at < m_wordsEnd) {
    const std::size_t length = gsl_records::LengthOfTwoShortVarints(gsl_records::GetFixed64(at));
    if (length != 0) return at + length;
  }
  return SkipVarint32<kIsFar>(SkipVarint32<kIsFar>(at));
}

template <bool kIsFar>
inline const unsigned char* gsl_RecordChecker::Text(const unsigned char* at) const {
  const Taken text = SmallVarint<kIsFar>(at);
  if (text.value >= m_textCount) Refuse("A field in the bytes has an unknown text");
  return text.next;
}

template <bool kIsFar>
inline const unsigned char* gsl_RecordChecker::Skip(const unsigned char* at,
                                                    std::size_t count) const {
  if (!kIsFar && count > Remaining(at)) Refuse("The bytes end inside a record");
  return at + count;
}

template <bool kIsFar>
inline const unsigned char* gsl_RecordChecker::Identity(const unsigned char* at) const {
  const Taken prefix = SmallVarint<kIsFar>(at);
  if (prefix.value > m_prefixCount) Refuse("An identity in the bytes has an unknown prefix");
  if (prefix.value == 0) return prefix.next;
  const bool isZero = (kIsFar || prefix.next != m_end) && *prefix.next == 0;
  if (isZero && m_data.prefixes[static_cast<Number>(prefix.value - 1)] == 0) {
    Refuse("A null identity in the bytes has a prefix and a serial, but must be the number 0");
  }
  return SkipVarint<kIsFar>(prefix.next);
}

/// A field holds a record. Nothing can hold itself, because a record follows the records that it
/// holds.
inline void gsl_RecordChecker::Hold(std::uint64_t record) {
  if (record >= m_record) Refuse("A field in the bytes must hold a record before its own record");
  const auto held = static_cast<std::size_t>(record);
  m_held += Mark(m_isHeld, held) ? 1 : 0;
  m_inside += PlacesOf(held);
  if (m_inside >= kNone) RefuseSize();
}

// A call for each record would take as long as a sixth of its check.
template <bool kIsFar>
[[gnu::always_inline]] inline const unsigned char*
gsl_RecordChecker::Record(const unsigned char* at) {
  const Taken shape = SmallVarint<kIsFar>(at);
  if (shape.value >= m_firstSteps.size()) Refuse("A record in the bytes has no shape");
  m_shape = shape.value;
  at = Identity<kIsFar>(shape.next);
  for (const Step* step = &m_steps[m_firstSteps[static_cast<std::size_t>(shape.value)]];; ++step) {
    std::uint32_t count = step->count;
    switch (step->kind) {
    case CodeOf(Kind::Double):
      at = Skip<kIsFar>(at, count * sizeof(double));
      break;
    case CodeOf(Kind::Integer):
      for (; count >= 2; count -= 2)
        at = SkipTwoVarint32<kIsFar>(at);
      if (count != 0) at = SkipVarint32<kIsFar>(at);
      break;
    case CodeOf(Kind::Record):
      for (; count != 0; --count) {
        const Taken record = Varint<kIsFar>(at);
        Hold(record.value);
        at = record.next;
      }
      break;
    case CodeOf(Kind::String):
      for (; count != 0; --count)
        at = Text<kIsFar>(at);
      break;
    case Step::End:
      return at;
    default:
      if (step->kind >= Step::Unsigneds) return Elements(step->kind, at);
      for (; count != 0; --count)
        at = Value(step->kind, at);
    }
  }
}

template <class Keep>
void gsl_RecordChecker::CheckRecords(std::size_t recordCount, const Keep& keep) {
  const unsigned char* at = m_begin;
  std::uint8_t* const places = m_places.Begin();
  std::uint8_t* const shapes = m_data.readShapes.Begin();
  for (m_record = 0; m_record < recordCount;) {
    const unsigned char* const summed = m_body.SumPast(at);
    do {
      m_inside = 1;
      at = at < m_farEnd ? Record<true>(at) : Record<false>(at);
      places[m_record] = PlacesToKeep();
      shapes[m_record] = ShapeToKeep();
      keep(m_record, at);
      ++m_record;
    } while (m_record < recordCount && at < summed);
  }
  if (at != m_end) Refuse("Bytes follow the last record");
}

void gsl_RecordChecker::Check(std::size_t recordCount, const unsigned char* base) {
  PlanSteps();
  m_isHeld.assign(WordsOf(recordCount), 0);
  m_isOwned.assign(WordsOf(m_data.objects.size()), 0);
  m_places.Room(recordCount);
  m_data.readShapes.SetEnd(m_data.readShapes.Room(recordCount) + recordCount);
  const auto before = static_cast<std::uint64_t>(m_begin - base);
  gsl_records::RecordOffsets& offsets = m_data.offsets;
  offsets.MakeRoom(recordCount + 1, before + Remaining(m_begin));
  offsets.Append(before);
  if (std::uint32_t* const ends = offsets.ShortRoom(recordCount, before + Remaining(m_begin))) {
    CheckRecords(recordCount, [ends, base](std::size_t record, const unsigned char* end) {
      ends[record] = static_cast<std::uint32_t>(end - base);
    });
    offsets.AppendFilled(recordCount);
  } else {
    CheckRecords(recordCount, [&offsets, base](std::size_t, const unsigned char* end) {
      offsets.Append(static_cast<std::uint64_t>(end - base));
    });
  }
  CheckLinks();
}

const unsigned char* gsl_RecordChecker::Value(std::uint8_t kind, const unsigned char* at) {
  switch (static_cast<Kind>(kind)) {
  case Kind::Double:
    return Skip<false>(at, sizeof(double));
  case Kind::Boolean: {
    const Taken value = Byte(at);
    if (value.value > 1) Refuse("A boolean in the bytes is neither true nor false");
    return value.next;
  }
  case Kind::String:
    return Text<false>(at);
  case Kind::Record: {
    const Taken record = Varint<false>(at);
    Hold(record.value);
    return record.next;
  }
  case Kind::Object:
    return Object(at);
  default:
    return SkipVarint32<false>(at);
  }
}

const unsigned char* gsl_RecordChecker::Elements(std::uint8_t kind, const unsigned char* at) {
  if (kind == Step::Entries) return ListEntries(at);
  if (kind == Step::Unsigneds) {
    const Taken count = Varint<false>(at);
    at = count.next;
    if (count.value > Remaining(at)) Refuse("The bytes announce more than they hold");
    for (std::uint64_t i = 0; i < count.value; ++i)
      at = SkipVarint32<false>(at);
    return at;
  }
  const Taken rows = Varint32(at);
  const Taken columns = Varint32(rows.next);
  const std::size_t most = Remaining(columns.next) / sizeof(double);
  if (columns.value != 0 && rows.value > most / columns.value) {
    Refuse("The bytes announce more than they hold");
  }
  return Skip<false>(columns.next,
                     static_cast<std::size_t>(rows.value * columns.value) * sizeof(double));
}

const unsigned char* gsl_RecordChecker::ListEntries(const unsigned char* at) {
  for (;;) {
    const Taken tag = Byte(at);
    if (tag.value == kEndOfEntries) return tag.next;
    const unsigned int kind = CheckedKind(static_cast<unsigned int>(tag.value));
    at = Value(static_cast<std::uint8_t>(kind), tag.next);
  }
}

const unsigned char* gsl_RecordChecker::Object(const unsigned char* at) {
  const Taken value = Varint<false>(at);
  const std::uint64_t number = value.value >> 1;
  if (number >= m_data.objects.size()) Refuse("A field in the bytes has an unknown object");
  if ((value.value & 1u) != 0) return value.next;
  const auto object = static_cast<std::size_t>(number);
  if (!Mark(m_isOwned, object)) Refuse("An object in the bytes belongs to two fields");
  ++m_owned;
  Hold(m_data.objects[object].record);
  return value.next;
}

std::uint8_t gsl_RecordChecker::PlacesToKeep() {
  if (m_inside < kMany) return static_cast<std::uint8_t>(m_inside);
  m_many.push_back({m_record, static_cast<Number>(m_inside)});
  return kMany;
}

std::uint64_t gsl_RecordChecker::ManyPlacesOf(std::size_t record) const {
  return std::lower_bound(m_many.begin(), m_many.end(), record,
                          [](const Many& many, std::size_t wanted) { return many.record < wanted; })
      ->places;
}

void gsl_RecordChecker::CheckLinks() {
  std::uint64_t places = 0;
  for (std::size_t i = 0; i < m_data.roots.Size(); ++i) {
    const Number record = m_data.roots.Record(i);
    if (record >= m_record) Refuse("A root in the bytes is not a record");
    m_held += Mark(m_isHeld, record) ? 1 : 0;
    places += PlacesOf(record);
    if (places >= kNone) RefuseSize();
  }
  m_data.placesRead = static_cast<std::size_t>(places);
  if (m_held != m_record) Refuse("A record in the bytes belongs to nothing");
  if (m_owned != m_data.objects.size()) Refuse("An object in the bytes belongs to no field");
}

gsl_RecordChecker::Taken gsl_RecordChecker::LongVarint(const unsigned char* at) const {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < kMostVarintBytes; ++i) {
    const Taken byte = Byte(at);
    at = byte.next;
    // The tenth byte has room for the highest bit alone.
    if (i + 1 == kMostVarintBytes && byte.value > 1) break;
    value |= (byte.value & 0x7Fu) << (7 * i);
    if (byte.value >= 0x80u) continue;
    if (byte.value == 0 && i != 0) Refuse("A number in the bytes takes more bytes than it needs");
    return {value, at};
  }
  Refuse("A number in the bytes is too long");
}

gsl_RecordChecker::Taken gsl_RecordChecker::Varint32(const unsigned char* at) const {
  const Taken taken = Varint<false>(at);
  if (taken.value > 0xFFFFFFFFu) Refuse("A number in the bytes is too large");
  return taken;
}

gsl_RecordChecker::Taken gsl_RecordChecker::Byte(const unsigned char* at) const {
  if (at == m_end) Refuse("The bytes end inside a record");
  return {*at, at + 1};
}
