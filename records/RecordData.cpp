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
    roots.SetLastRecord(AppendRecord(frame));
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
  offsets.MakeRoom(2, bytes.Size() + room);
  if (offsets.Size() == 0) offsets.Append(bytes.Size());
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

gsl_records::Number gsl_RecordStore::Data::FindDuplicate(const Frame& frame, std::size_t begin,
                                                         std::uint32_t& hash) {
  if (frame.identity == gsl_RecordIdentity()) return FindByHash(frame, begin, hash);
  // Equal records have one shape.
  const Number shape = shapes.ShapeOf(frame.node);
  if (runs.size() <= shape) runs.resize(shapes.Shapes().size());
  Run& run = runs[shape];
  const Number prefix = prefixes.NumberOf(frame.identity.prefix);
  const std::uint64_t serial = frame.identity.serial;
  const Number number = Counted(RecordCount());
  // What was read has any order.
  const bool isFirst = !run.isKnown && rootsRead == 0;
  if (isFirst || (run.isAscending && run.prefix == prefix && run.serial < serial)) {
    run = {true, true, true, prefix, serial, {number}, 1};
    return kNone;
  }
  const bool isInRun = run.isWhole && run.prefix == prefix && run.serial == serial;
  if (isInRun && run.count < Run::kMost) return FindInRun(frame, begin, run);
  CatchUpSerials();
  if (serials.Insert(shape, prefix, serial)) {
    run = {true, false, true, prefix, serial, {number}, 1};
    serialsTo = RecordCount() + 1;
    return kNone;
  }
  run.isKnown = true;
  run.isAscending = run.isWhole = false;
  return FindByHash(frame, begin, hash);
}

/// A record that owns shared objects is new: an equal record that ended before only refers to them.
gsl_records::Number gsl_RecordStore::Data::FindInRun(const Frame& frame, std::size_t begin,
                                                     Run& run) {
  for (std::size_t i = 0; i < run.count && !frame.ownsObjects; ++i) {
    std::size_t extra = 0;
    if (!CanStandIn(run.records[i], begin, extra)) continue;
    extraPlaces += extra;
    return run.records[i];
  }
  run.records[run.count++] = Counted(RecordCount());
  return kNone;
}

gsl_records::Number gsl_RecordStore::Data::FindByHash(const Frame& frame, std::size_t begin,
                                                      std::uint32_t& hash) {
  const bool isAnonymous = frame.identity == gsl_RecordIdentity();
  if (isAnonymous) {
    CatchUpAnonymous();
  } else {
    CatchUpIdentified();
  }
  gsl_records::RecordDuplicates& known = isAnonymous ? anonymous : identified;
  hash = HashOf(begin, bytes.Size());
  if (!frame.ownsObjects) {
    std::size_t extra = 0;
    const Number equal =
        known.Find(hash, [&](Number record) { return CanStandIn(record, begin, extra); });
    if (equal != kNone) {
      extraPlaces += extra;
      return equal;
    }
  }
  if (isAnonymous) known.MakeRoom();
  return kNone;
}

bool gsl_RecordStore::Data::CanStandIn(Number record, std::size_t begin, std::size_t& extra) {
  if (!AreEqual(record, begin, bytes.Size())) return false;
  extra = ExtraPlaces(record, begin, bytes.Size());
  return extraPlaces + extra <= kMostExtraPlaces && PlacesWith(extra) < kNone;
}

void gsl_RecordStore::Data::CatchUpSerials() {
  for (; serialsTo < RecordCount(); ++serialsTo) {
    const unsigned char* const record = bytes.Begin() + offsets[serialsTo];
    std::uint64_t shape = 0;
    std::uint64_t prefix = 0;
    std::uint64_t serial = 0;
    const unsigned char* const at = GetVarint(GetVarint(record, shape), prefix);
    if (prefix == 0) continue;
    GetVarint(at, serial);
    static_cast<void>(
        serials.Insert(static_cast<Number>(shape), static_cast<Number>(prefix - 1), serial));
  }
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

gsl_RecordStore::Data::TableSizes gsl_RecordStore::Data::SizesOfTables() const {
  return {shapes.Size(), texts.Size(), prefixes.Size(), classes.size(), extraPlaces};
}

void gsl_RecordStore::Data::StartRoot(gsl_RecordIndex key) {
  const TableSizes sizes = SizesOfTables();
  roots.MakeRoomToStart();
  if (savepoints.empty() || !(savepoints.back().before == sizes)) {
    savepoints.push_back({roots.Size(), sizes});
  }
  roots.AddStarted({key, Counted(RecordCount()), Counted(objects.size())});
}

void gsl_RecordStore::Data::TakeBackRoots(std::size_t first) {
  depth = 0;
  const gsl_records::RecordRoots::Start root = roots.StartOf(first);
  const std::size_t count = root.recordsBefore;
  if (count < RecordCount()) offsets.Truncate(count + 1);
  if (offsets.Size() != 0) bytes.Truncate(static_cast<std::size_t>(offsets.Back()));
  placesWithin.Truncate(std::min(placesWithin.Size(), count));
  anonymous.Truncate(root.recordsBefore);
  identified.Truncate(root.recordsBefore);
  identifiedTo = std::min(identifiedTo, count);
  objects.resize(std::min<std::size_t>(root.objectsBefore, objects.size()));
  while (savepoints.back().root > first)
    savepoints.pop_back();
  TruncateTables(savepoints.back().before);
  serialsTo = std::min(serialsTo, count);
  for (Run& run : runs)
    run.isWhole = false;
  for (std::size_t i = first; i < roots.Size(); ++i) {
    if (const std::string* const name = roots.Name(i)) rootNames.erase(rootNames.find(*name));
  }
  roots.Truncate(first);
}

void gsl_RecordStore::Data::TruncateTables(const TableSizes& sizes) {
  extraPlaces = sizes.extraPlaces;
  shapes.Truncate(sizes.shapes);
  runs.resize(std::min(runs.size(), shapes.Shapes().size()));
  texts.Truncate(sizes.texts);
  prefixes.Truncate(sizes.prefixes);
  while (classes.size() > sizes.classes) {
    classOfType.erase(classes.back().typeId);
    classes.pop_back();
  }
}

const unsigned char* gsl_RecordStore::Data::ElementsOf(Number record) const {
  gsl_RecordIdentity identity;
  const unsigned char* at = ReadIdentity(record, identity);
  const ShapeField* field = &shapes.Fields()[ShapeOf(record).firstField];
  for (; field->kind < ShapeField::Entries; ++field)
    at = gsl_records::SkipValue(at, field->kind);
  return at;
}

std::size_t gsl_RecordStore::Data::MemoryUse() const {
  std::size_t sum = bytes.BytesHeld() + offsets.BytesHeld() + anonymous.BytesHeld() +
                    placesWithin.BytesHeld() + identified.BytesHeld() + texts.BytesHeld() +
                    prefixes.BytesHeld() + shapes.BytesHeld() + readShapes.BytesHeld();
  sum += serials.BytesHeld() + roots.BytesHeld() + savepoints.capacity() * sizeof(Savepoint) +
         objects.capacity() * sizeof(Object) + classes.size() * sizeof(Class) +
         frames.capacity() * sizeof(Frame);
  for (std::size_t i = 0; i < frames.size(); ++i)
    sum += frames[i].values.BytesHeld() + frames[i].elements.BytesHeld();
  return sum;
}
