#include "RecordData.h"

#include "gsl_RecordError.h"

#include <algorithm>

using gsl_records::Counted;
using gsl_records::GetVarint;
using gsl_records::kEndOfEntries;
using gsl_records::kMostVarintBytes;
using gsl_records::kNone;
using gsl_records::PutVarint;
using gsl_records::Shape;
using gsl_records::ShapeField;
using Kind = gsl_RecordKind;

namespace {

constexpr std::uint64_t kMostBytes = std::uint64_t{1} << 40;
/// The other half is left for records that are written.
constexpr std::size_t kMostExtraPlaces = std::size_t{1} << 31;

} // namespace

const unsigned char* gsl_records::SkipValue(const unsigned char* at, std::uint8_t kind) {
  switch (static_cast<Kind>(kind)) {
  case Kind::Double:
    return at + sizeof(double);
  case Kind::Boolean:
    return at + 1;
  default:
    while (*at >= 0x80u)
      ++at;
    return at + 1;
  }
}

gsl_RecordIndex gsl_RecordStore::Data::NextKey() {
  Counted(PlacesWith(1));
  return static_cast<gsl_RecordIndex>(started++);
}

gsl_RecordStore::Data::Frame& gsl_RecordStore::Data::Reopen(gsl_RecordIndex owner) {
  std::size_t level = depth;
  while (level != 0 && frames[level - 1].key != owner)
    --level;
  if (level == 0) throw gsl_RecordError("A record that has ended takes no further fields");
  while (depth > level)
    EndRecord();
  return frames[depth - 1];
}

gsl_RecordStore::Data::Frame& gsl_RecordStore::Data::Push(gsl_RecordIndex key, std::uint32_t typeId,
                                                          const gsl_RecordIdentity& identity) {
  if (depth == frames.size()) frames.emplace_back();
  Frame& frame = frames[depth];
  frame.key = key;
  frame.node = shapes.Start(typeId, gsl_RecordCollection::None);
  frame.identity = identity;
  frame.collection = gsl_RecordCollection::None;
  frame.object = kNone;
  frame.ownsObjects = false;
  frame.values.Truncate(0);
  frame.elements.Truncate(0);
  ++depth;
  return frame;
}

unsigned char* gsl_RecordStore::Data::AddEntry(Frame& frame, gsl_RecordKind kind) {
  if (frame.collection != gsl_RecordCollection::Objects) {
    throw gsl_RecordError("A field of a record must have a name, unless the record is a list");
  }
  unsigned char* const at = frame.elements.Room(1 + kMostVarintBytes);
  *at = static_cast<unsigned char>(kind);
  return at + 1;
}

void gsl_RecordStore::Data::SetCollection(Frame& frame, gsl_RecordCollection collection) {
  if (frame.collection == collection) return;
  frame.node = shapes.WithCollection(frame.node, collection);
  frame.collection = collection;
  frame.elements.Truncate(0);
}

gsl_records::Number gsl_RecordStore::Data::NumberOfObject(gsl_RecordIndex key) const {
  const auto found = std::lower_bound(
      objects.begin() + static_cast<std::ptrdiff_t>(objectsRead), objects.end(), key,
      [](const Object& object, gsl_RecordIndex wanted) { return object.key < wanted; });
  if (found == objects.end() || found->key != key) {
    throw gsl_RecordError("A field must refer to a shared object");
  }
  return static_cast<Number>(found - objects.begin());
}

void gsl_RecordStore::Data::EndRecord() {
  Frame& frame = frames[depth - 1];
  if (frame.place == Frame::Place::Root) {
    roots.back().record = AppendRecord(frame);
  } else if (frame.place == Frame::Place::Object) {
    objects[frame.object].record = AppendRecord(frame);
  } else {
    Frame& holder = frames[depth - 2];
    ByteBuffer& link = frame.place == Frame::Place::Value ? holder.values : holder.elements;
    unsigned char* const at = link.Room(kMostVarintBytes);
    link.SetEnd(PutVarint(at, AppendRecord(frame)));
  }
  --depth;
}

/// Stores nothing where it throws.
gsl_records::Number gsl_RecordStore::Data::AppendRecord(const Frame& frame) {
  const std::size_t begin = bytes.Size();
  const Number number = Counted(RecordCount());
  offsets.Room(2);
  if (offsets.Size() == 0) offsets.Append(begin);
  std::uint32_t hash = 0;
  try {
    AppendBytes(frame);
    const Number duplicate = FindDuplicate(frame, begin, hash);
    if (duplicate != kNone) {
      bytes.Truncate(begin);
      return duplicate;
    }
  } catch (...) {
    bytes.Truncate(begin);
    throw;
  }
  offsets.Append(bytes.Size());
  if (frame.identity == gsl_RecordIdentity()) anonymous.Insert(hash, number);
  return number;
}

void gsl_RecordStore::Data::AppendBytes(const Frame& frame) {
  const Number shape = shapes.ShapeOf(frame.node);
  const std::size_t room = 5 * kMostVarintBytes + frame.values.Size() + frame.elements.Size();
  if (bytes.Size() + room >= kMostBytes) {
    throw gsl_RecordError("The record store is full: it holds at most 1099511627775 bytes");
  }
  unsigned char* at = PutVarint(bytes.Room(room), shape);
  if (frame.identity == gsl_RecordIdentity()) {
    *at++ = 0;
  } else {
    at = PutVarint(at, std::uint64_t{prefixes.NumberOf(frame.identity.prefix)} + 1);
    at = PutVarint(at, frame.identity.serial);
  }
  bytes.SetEnd(at);
  bytes.Append(frame.values.Begin(), frame.values.Size());
  bytes.Append(frame.elements.Begin(), frame.elements.Size());
  if (frame.collection == gsl_RecordCollection::Objects) {
    bytes.Append(kEndOfEntries);
  } else if (frame.collection != gsl_RecordCollection::None && frame.elements.Size() == 0) {
    // No element, or no row and no column.
    bytes.Append(0);
    if (frame.collection == gsl_RecordCollection::Doubles) bytes.Append(0);
  }
}

/// A record that owns shared objects is new: an equal record that ended before only refers to them.
gsl_records::Number gsl_RecordStore::Data::FindDuplicate(const Frame& frame, std::size_t begin,
                                                         std::uint32_t& hash) {
  const std::size_t end = bytes.Size();
  const bool isAnonymous = frame.identity == gsl_RecordIdentity();
  if (!isAnonymous && IsAscending(frame)) return kNone;
  if (isAnonymous) {
    CatchUpAnonymous();
  } else {
    CatchUpIdentified();
  }
  gsl_records::RecordDuplicates& known = isAnonymous ? anonymous : identified;
  hash = HashOf(begin, end);
  if (!frame.ownsObjects) {
    std::size_t extra = 0;
    const Number equal = known.Find(hash, [&](Number record) {
      if (!AreEqual(record, begin, end)) return false;
      extra = ExtraPlaces(record, begin, end);
      return extraPlaces + extra <= kMostExtraPlaces && PlacesWith(extra) < kNone;
    });
    if (equal != kNone) {
      extraPlaces += extra;
      return equal;
    }
  }
  if (isAnonymous) known.MakeRoom();
  return kNone;
}

/// Whether no earlier record of the shape has the identity, as far as ascending serials show it.
/// Equal records have one shape.
bool gsl_RecordStore::Data::IsAscending(const Frame& frame) {
  // What was read has any order.
  if (rootsRead != 0) return false;
  ascents.resize(shapes.Shapes().size());
  Ascent& ascent = ascents[shapes.ShapeOf(frame.node)];
  if (!ascent.isKnown) {
    ascent = {true, frame.identity.prefix, frame.identity.serial};
    return true;
  }
  if (ascent.prefix != frame.identity.prefix || ascent.serial >= frame.identity.serial) {
    return false;
  }
  ascent.serial = frame.identity.serial;
  return true;
}

/// Records that were read from bytes are looked up when the first record without an identity is
/// added; later ones are added to the table at once.
void gsl_RecordStore::Data::CatchUpAnonymous() {
  for (; recordsToLookUp != 0; --recordsToLookUp)
    InsertDuplicate(static_cast<Number>(recordsToLookUp - 1), true);
}

/// Nothing is looked up as long as serials ascend.
void gsl_RecordStore::Data::CatchUpIdentified() {
  for (; identifiedTo < RecordCount(); ++identifiedTo)
    InsertDuplicate(static_cast<Number>(identifiedTo), false);
}

void gsl_RecordStore::Data::InsertDuplicate(Number record, bool isAnonymous) {
  gsl_RecordIdentity identity;
  ReadIdentity(record, identity);
  if ((identity == gsl_RecordIdentity()) != isAnonymous) return;
  const std::uint32_t hash = HashOf(static_cast<std::size_t>(offsets[record]),
                                    static_cast<std::size_t>(offsets[record + 1]));
  (isAnonymous ? anonymous : identified).Insert(hash, record);
}

template <class Visit>
void gsl_RecordStore::Data::VisitValues(const unsigned char* record, const Visit& visit) const {
  std::uint64_t number = 0;
  const unsigned char* at = GetVarint(record, number);
  const Shape& shape = shapes.Shapes()[static_cast<std::size_t>(number)];
  at = GetVarint(at, number);
  if (number != 0) at = GetVarint(at, number);
  const ShapeField* field = &shapes.Fields()[shape.firstField];
  for (; field->kind < ShapeField::Entries; ++field) {
    visit(static_cast<Kind>(field->kind), at);
    at = gsl_records::SkipValue(at, field->kind);
  }
  if (field->kind == ShapeField::End) return;
  while (*at != kEndOfEntries) {
    const std::uint8_t kind = *at++;
    visit(static_cast<Kind>(kind), at);
    at = gsl_records::SkipValue(at, kind);
  }
}

/// The bytes of a record in which each field that owns a shared object only refers to it: they are
/// equal for records of equal contents.
const unsigned char* gsl_RecordStore::Data::Canonical(std::size_t begin, std::size_t size,
                                                      ByteBuffer& copy) const {
  const unsigned char* const record = bytes.Begin() + begin;
  std::uint64_t number = 0;
  GetVarint(record, number);
  if (!shapes.Shapes()[static_cast<std::size_t>(number)].mayHaveObjects) return record;
  copy.Truncate(0);
  copy.Append(record, size);
  VisitValues(record, [&](Kind kind, const unsigned char* at) {
    if (kind == Kind::Object) copy[static_cast<std::size_t>(at - record)] |= 1u;
  });
  return copy.Begin();
}

std::uint32_t gsl_RecordStore::Data::HashOf(std::size_t begin, std::size_t end) {
  const std::size_t size = end - begin;
  const unsigned char* const form = Canonical(begin, size, canonical[0]);
  return gsl_records::HashOfBytes(form, size);
}

bool gsl_RecordStore::Data::AreEqual(Number record, std::size_t begin, std::size_t end) {
  const auto other = static_cast<std::size_t>(offsets[record]);
  const std::size_t size = end - begin;
  if (offsets[record + 1] - other != size) return false;
  const unsigned char* const a = Canonical(begin, size, canonical[0]);
  const unsigned char* const b = Canonical(other, size, canonical[1]);
  return std::memcmp(a, b, size) == 0;
}

std::size_t gsl_RecordStore::Data::ExtraPlaces(Number record, std::size_t begin, std::size_t end) {
  const unsigned char* const known = bytes.Begin() + offsets[record];
  if (std::memcmp(known, bytes.Begin() + begin, end - begin) == 0) return 0;
  CatchUpPlaces();
  return placesWithin[record] - PlacesWithin(begin);
}

/// What a record holds has lower numbers.
std::size_t gsl_RecordStore::Data::PlacesWithin(std::size_t begin) const {
  std::size_t places = 1;
  VisitValues(bytes.Begin() + begin, [&](Kind kind, const unsigned char* at) {
    if (kind != Kind::Record && kind != Kind::Object) return;
    std::uint64_t link = 0;
    GetVarint(at, link);
    if (kind == Kind::Record) {
      places += placesWithin[static_cast<std::size_t>(link)];
    } else if ((link & 1u) == 0) {
      places += placesWithin[objects[static_cast<std::size_t>(link >> 1)].record];
    }
  });
  return places;
}

void gsl_RecordStore::Data::CatchUpPlaces() {
  while (placesWithin.Size() < RecordCount()) {
    const auto begin = static_cast<std::size_t>(offsets[placesWithin.Size()]);
    placesWithin.Append(static_cast<Number>(PlacesWithin(begin)));
  }
}

gsl_RecordStore::Data::Sizes gsl_RecordStore::Data::Size() const {
  return {RecordCount(),   objects.size(), shapes.Size(), texts.Size(),
          prefixes.Size(), classes.size(), extraPlaces};
}

void gsl_RecordStore::Data::Truncate(const Sizes& sizes) {
  if (sizes.records < RecordCount()) offsets.Truncate(sizes.records + 1);
  if (offsets.Size() != 0) bytes.Truncate(static_cast<std::size_t>(offsets.Back()));
  extraPlaces = sizes.extraPlaces;
  placesWithin.Truncate(std::min(placesWithin.Size(), sizes.records));
  const auto end = static_cast<Number>(sizes.records);
  anonymous.Truncate(end);
  identified.Truncate(end);
  identifiedTo = std::min(identifiedTo, sizes.records);
  objects.resize(std::min(sizes.objects, objects.size()));
  shapes.Truncate(sizes.shapes);
  ascents.resize(std::min(ascents.size(), shapes.Shapes().size()));
  texts.Truncate(sizes.texts);
  prefixes.Truncate(sizes.prefixes);
  while (classes.size() > sizes.classes) {
    classOfType.erase(classes.back().typeId);
    classes.pop_back();
  }
}

const unsigned char* gsl_RecordStore::Data::ReadIdentity(Number record,
                                                         gsl_RecordIdentity& identity) const {
  std::uint64_t number = 0;
  const unsigned char* at = GetVarint(bytes.Begin() + offsets[record], number);
  at = GetVarint(at, number);
  if (number == 0) {
    identity = {};
    return at;
  }
  identity.prefix = prefixes[static_cast<Number>(number - 1)];
  return GetVarint(at, identity.serial);
}

const unsigned char* gsl_RecordStore::Data::ElementsOf(Number record) const {
  gsl_RecordIdentity identity;
  const unsigned char* at = ReadIdentity(record, identity);
  const ShapeField* field = &shapes.Fields()[ShapeOf(record).firstField];
  for (; field->kind < ShapeField::Entries; ++field)
    at = gsl_records::SkipValue(at, field->kind);
  return at;
}

const unsigned char* gsl_RecordStore::Data::ReadValue(const unsigned char* at,
                                                      gsl_RecordField& field) const {
  if (field.kind == Kind::Double) {
    field.real = gsl_records::GetDouble(at);
    return at + sizeof field.real;
  }
  std::uint64_t value = 0;
  at = GetVarint(at, value);
  switch (field.kind) {
  case Kind::Integer:
    field.integer = gsl_records::OfZigzag(value);
    break;
  case Kind::Boolean:
    field.boolean = value != 0;
    break;
  case Kind::String:
    field.text = texts[static_cast<Number>(value)];
    break;
  case Kind::Object:
    field.kind = (value & 1u) != 0 ? Kind::Reference : Kind::Object;
    field.object = static_cast<std::uint32_t>(value >> 1);
    field.link = objects[field.object].record;
    break;
  default:
    field.link = static_cast<std::uint32_t>(value);
    break;
  }
  return at;
}

std::size_t gsl_RecordStore::Data::MemoryUse() const {
  std::size_t sum = bytes.BytesHeld() + offsets.BytesHeld() + anonymous.BytesHeld() +
                    placesWithin.BytesHeld() + identified.BytesHeld() + texts.BytesHeld() +
                    prefixes.BytesHeld() + shapes.BytesHeld();
  sum += roots.capacity() * sizeof(Root) + objects.capacity() * sizeof(Object) +
         classes.size() * sizeof(Class) + frames.capacity() * sizeof(Frame);
  for (std::size_t i = 0; i < frames.size(); ++i)
    sum += frames[i].values.BytesHeld() + frames[i].elements.BytesHeld();
  return sum;
}
