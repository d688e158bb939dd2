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

gsl_RecordChecker::gsl_RecordChecker(gsl_records::Bytes records, gsl_RecordStore::Data& data)
    : m_begin(records.begin), m_end(records.begin + records.count), m_data(data) {}

void gsl_RecordChecker::Check(std::size_t recordCount, const unsigned char* base) {
  PlanSteps();
  m_isHeld.assign(WordsOf(recordCount), 0);
  m_isOwned.assign(WordsOf(m_data.objects.size()), 0);
  m_places.Room(recordCount);
  const auto before = static_cast<std::uint64_t>(m_begin - base);
  m_data.offsets.MakeRoom(recordCount + 1, before + Remaining(m_begin));
  m_data.offsets.Append(before);
  const unsigned char* at = m_begin;
  for (m_record = 0; m_record < recordCount; ++m_record) {
    m_inside = 1;
    at = Record(at);
    KeepPlaces();
    m_data.offsets.Append(static_cast<std::uint64_t>(at - base));
  }
  if (at != m_end) Refuse("Bytes follow the last record");
  CheckLinks();
}

void gsl_RecordChecker::PlanSteps() {
  for (const Shape& shape : m_data.shapes.Shapes()) {
    const std::size_t first = m_steps.size();
    m_firstSteps.push_back(static_cast<std::uint32_t>(first));
    const ShapeField* field = &m_data.shapes.Fields()[shape.firstField];
    for (; field->kind < ShapeField::Entries; ++field) {
      const bool isFurtherDouble = field->kind == CodeOf(Kind::Double) && m_steps.size() > first &&
                                   m_steps.back().kind == field->kind;
      if (isFurtherDouble) {
        ++m_steps.back().count;
      } else {
        m_steps.push_back({field->kind, 1});
      }
    }
    std::uint8_t last = field->kind == ShapeField::Entries ? Step::Entries : Step::End;
    if (shape.collection == gsl_RecordCollection::Unsigneds) last = Step::Unsigneds;
    if (shape.collection == gsl_RecordCollection::Doubles) last = Step::Doubles;
    m_steps.push_back({last, 1});
  }
}

const unsigned char* gsl_RecordChecker::Record(const unsigned char* at) {
  const Taken shape = Varint(at);
  if (shape.value >= m_firstSteps.size()) Refuse("A record in the bytes has no shape");
  const Taken prefix = Varint(shape.next);
  if (prefix.value > m_data.prefixes.Size()) {
    Refuse("An identity in the bytes has an unknown prefix");
  }
  at = prefix.next;
  if (prefix.value != 0) {
    const Taken serial = Varint(at);
    if (serial.value == 0 && m_data.prefixes[static_cast<Number>(prefix.value - 1)] == 0) {
      Refuse("A null identity in the bytes has a prefix and a serial, but must be the number 0");
    }
    at = serial.next;
  }
  const Step* step = &m_steps[m_firstSteps[static_cast<std::size_t>(shape.value)]];
  for (; step->kind < Step::Unsigneds; ++step) {
    at = step->kind == CodeOf(Kind::Double) ? Skip(at, step->count * sizeof(double))
                                            : Value(step->kind, at);
  }
  return step->kind == Step::End ? at : Elements(step->kind, at);
}

const unsigned char* gsl_RecordChecker::Value(std::uint8_t kind, const unsigned char* at) {
  switch (static_cast<Kind>(kind)) {
  case Kind::Double:
    return Skip(at, sizeof(double));
  case Kind::Boolean: {
    const Taken value = Byte(at);
    if (value.value > 1) Refuse("A boolean in the bytes is neither true nor false");
    return value.next;
  }
  case Kind::String: {
    const Taken text = Varint(at);
    if (text.value >= m_data.texts.Size()) Refuse("A field in the bytes has an unknown text");
    return text.next;
  }
  case Kind::Record: {
    const Taken record = Varint(at);
    Hold(record.value);
    return record.next;
  }
  case Kind::Object:
    return Object(at);
  default:
    return Varint32(at).next;
  }
}

const unsigned char* gsl_RecordChecker::Elements(std::uint8_t kind, const unsigned char* at) {
  if (kind == Step::Entries) return ListEntries(at);
  if (kind == Step::Unsigneds) {
    const Taken count = Varint(at);
    at = count.next;
    if (count.value > Remaining(at)) Refuse("The bytes announce more than they hold");
    for (std::uint64_t i = 0; i < count.value; ++i)
      at = Varint32(at).next;
    return at;
  }
  const Taken rows = Varint32(at);
  const Taken columns = Varint32(rows.next);
  const std::size_t most = Remaining(columns.next) / sizeof(double);
  if (columns.value != 0 && rows.value > most / columns.value) {
    Refuse("The bytes announce more than they hold");
  }
  return Skip(columns.next, static_cast<std::size_t>(rows.value * columns.value) * sizeof(double));
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
  const Taken value = Varint(at);
  const std::uint64_t number = value.value >> 1;
  if (number >= m_data.objects.size()) Refuse("A field in the bytes has an unknown object");
  if ((value.value & 1u) != 0) return value.next;
  const auto object = static_cast<std::size_t>(number);
  if (!Mark(m_isOwned, object)) Refuse("An object in the bytes belongs to two fields");
  ++m_owned;
  Hold(m_data.objects[object].record);
  return value.next;
}

/// A field holds a record. Nothing can hold itself, because a record follows the records that it
/// holds.
void gsl_RecordChecker::Hold(std::uint64_t record) {
  if (record >= m_record) Refuse("A field in the bytes must hold a record before its own record");
  const auto held = static_cast<std::size_t>(record);
  if (Mark(m_isHeld, held)) ++m_held;
  m_inside += PlacesOf(held);
  if (m_inside >= kNone) RefuseSize();
}

void gsl_RecordChecker::KeepPlaces() {
  const bool isFew = m_inside < kMany;
  if (!isFew) m_many.push_back({m_record, static_cast<Number>(m_inside)});
  m_places.Append(isFew ? static_cast<std::uint8_t>(m_inside) : kMany);
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
    if (Mark(m_isHeld, record)) ++m_held;
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
  const Taken taken = Varint(at);
  if (taken.value > 0xFFFFFFFFu) Refuse("A number in the bytes is too large");
  return taken;
}

gsl_RecordChecker::Taken gsl_RecordChecker::Byte(const unsigned char* at) const {
  if (at == m_end) Refuse("The bytes end inside a record");
  return {*at, at + 1};
}

const unsigned char* gsl_RecordChecker::Skip(const unsigned char* at, std::size_t count) const {
  if (count > Remaining(at)) Refuse("The bytes end inside a record");
  return at + count;
}
