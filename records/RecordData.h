#ifndef RECORDS_RECORD_DATA_H
#define RECORDS_RECORD_DATA_H

#include "PlainBuffer.h"
#include "RecordDuplicates.h"
#include "RecordOffsets.h"
#include "RecordRoots.h"
#include "RecordShapes.h"
#include "RecordTables.h"
#include "SerialSet.h"
#include "Varint.h"
#include "gsl_RecordStore.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace gsl_records {

constexpr unsigned char kEndOfEntries = 0xFF;

/// Returns where the value of a field of that kind ends.
const unsigned char* SkipValue(const unsigned char* at, std::uint8_t kind);

} // namespace gsl_records

/// What a store holds. Records that ended are bytes, one record after the other:
///
///   varint shape
///   varint prefix      0: the null identity; otherwise the number of the prefix, from 1, and then
///   varint serial
///   the values of the shape's fields
///   the elements, or the entries with a byte 0xFF after the last one; docs/records.md has them
///
/// A record follows the records that it holds. Records that are being written wait in frames.
struct GSL_RECORDS_HIDDEN gsl_RecordStore::Data {
  using Number = gsl_records::Number;
  using ByteBuffer = gsl_records::PlainBuffer<unsigned char>;

  /// How many items of the tables there were, which few roots change.
  struct TableSizes {
    gsl_records::RecordShapes::Sizes shapes;
    Number texts, prefixes;
    std::size_t classes;
    std::size_t extraPlaces;

    [[nodiscard]] bool operator==(const TableSizes& o) const {
      return shapes == o.shapes && texts == o.texts && prefixes == o.prefixes &&
             classes == o.classes && extraPlaces == o.extraPlaces;
    }
  };
  /// The sizes when a root was started; they hold for the roots up to the next savepoint.
  struct Savepoint {
    std::size_t root;
    TableSizes before;
  };
  struct Object {
    gsl_RecordIndex key;
    Number record; ///< kNone while the object is being written
  };
  struct Class {
    std::uint32_t typeId;
    std::string name;
  };
  /// The records of one shape that were added last, while they have one identity.
  struct Run {
    static constexpr std::size_t kMost = 4;

    bool isKnown = false;
    /// Each serial of the shape, under one prefix, was higher than the one before.
    bool isAscending = false;
    /// No other record of the shape has the identity.
    bool isWhole = false;
    Number prefix = 0;
    std::uint64_t serial = 0;
    Number records[kMost] = {};
    std::size_t count = 0;
  };
  struct Frame {
    gsl_RecordIndex key = 0;
    Number node = 0;
    gsl_RecordIdentity identity;
    gsl_RecordCollection collection = gsl_RecordCollection::None;
    /// Where the number of the record goes when it ends.
    enum class Place { Root, Value, Entry, Object } place = Place::Root;
    Number object = gsl_records::kNone;
    /// Whether a field holds a shared object, so that the record cannot be left out.
    bool ownsObjects = false;
    ByteBuffer values;
    ByteBuffer elements;
  };

  // Writing.
  gsl_RecordIndex NextKey();
  /// How many records there will be at all places. A reader refuses kNone or more.
  std::size_t PlacesWith(std::size_t further) const {
    return placesRead + extraPlaces + started + further;
  }
  /// The frame of a record, after every record that it holds has ended.
  Frame& Open(gsl_RecordIndex owner) {
    if (depth != 0 && frames[depth - 1].key == owner) return frames[depth - 1];
    return Reopen(owner);
  }
  Frame& Reopen(gsl_RecordIndex owner);
  Frame& Push(gsl_RecordIndex key, std::uint32_t typeId, const gsl_RecordIdentity& identity);
  /// Gives the record a field of that kind. Returns where its value goes, with room for it.
  unsigned char* AddField(Frame& frame, const gsl_RecordPlace& place, gsl_RecordKind kind) {
    if (place.name == nullptr) return AddEntry(frame, kind);
    unsigned char* const at = frame.values.Room(gsl_records::kMostVarintBytes);
    frame.node = shapes.Next(frame.node, place.name, place.index, static_cast<std::uint8_t>(kind));
    return at;
  }
  unsigned char* AddEntry(Frame& frame, gsl_RecordKind kind);
  static void EndField(Frame& frame, const gsl_RecordPlace& place, const unsigned char* end) {
    (place.name != nullptr ? frame.values : frame.elements).SetEnd(end);
  }
  void SetCollection(Frame& frame, gsl_RecordCollection collection);
  /// Leaves the record open where it throws, so that it can be called again.
  void EndRecord();
  void EndAll() {
    while (depth != 0)
      EndRecord();
  }
  Number NumberOfObject(gsl_RecordIndex key) const;

  // Duplicates.
  Number AppendRecord(const Frame& frame);
  void AppendBytes(const Frame& frame);
  /// Returns a stored record that can take the place of the record whose bytes were appended, or
  /// kNone. Writes the hash of a record without an identity that is new.
  Number FindDuplicate(const Frame& frame, std::size_t begin, std::uint32_t& hash);
  Number FindInRun(const Frame& frame, std::size_t begin, Run& run);
  Number FindByHash(const Frame& frame, std::size_t begin, std::uint32_t& hash);
  /// Whether that record can take the place. Writes how many more records there are then.
  bool CanStandIn(Number record, std::size_t begin, std::size_t& extra);
  void CatchUpSerials();
  void CatchUpAnonymous();
  void CatchUpIdentified();
  void InsertDuplicate(Number record, bool isAnonymous);
  /// Calls `visit` with the kind and the place of every value of a record, its entries included.
  template <class Visit>
  void VisitValues(const unsigned char* record, const Visit& visit) const;
  const unsigned char* Canonical(std::size_t begin, std::size_t size, ByteBuffer& copy) const;
  std::uint32_t HashOf(std::size_t begin, std::size_t end);
  bool AreEqual(Number record, std::size_t begin, std::size_t end);
  /// How many more records there are at a place that holds that record in place of an equal one.
  std::size_t ExtraPlaces(Number record, std::size_t begin, std::size_t end);
  std::size_t PlacesWithin(std::size_t begin) const;
  void CatchUpPlaces();

  // Taking back.
  TableSizes SizesOfTables() const;
  std::size_t MemoryUse() const;
  /// Starts a root that its writer knows by that key.
  void StartRoot(gsl_RecordIndex key);
  /// Forgets the roots from that one on, with their records. Throws nothing.
  void TakeBackRoots(std::size_t first);
  void TruncateTables(const TableSizes& sizes);

  // Reading.
  const gsl_records::Shape& ShapeOf(Number record) const {
    if (record < readShapes.Size() && readShapes[record] != kOtherShape) {
      return shapes.Shapes()[readShapes[record]];
    }
    std::uint64_t shape = 0;
    gsl_records::GetVarint(bytes.Begin() + offsets[record], shape);
    return shapes.Shapes()[static_cast<std::size_t>(shape)];
  }
  /// The identity, and where the values begin.
  const unsigned char* ReadIdentity(Number record, gsl_RecordIdentity& identity) const;
  /// Where the elements begin.
  const unsigned char* ElementsOf(Number record) const;
  /// Reads the value of a field of that kind. Returns where it ends.
  const unsigned char* ReadValue(const unsigned char* at, gsl_RecordField& field) const;
  std::size_t RecordCount() const { return offsets.Size() == 0 ? 0 : offsets.Size() - 1; }

  /// The records are at the offsets; after the last record there is its end.
  ByteBuffer bytes;
  gsl_records::RecordOffsets offsets;
  /// The shape of each record that was read from bytes, which are not fetched to look at it.
  static constexpr std::uint8_t kOtherShape = 0xFF;
  gsl_records::PlainBuffer<std::uint8_t> readShapes;
  gsl_records::RecordRoots roots;
  std::vector<Savepoint> savepoints;
  /// Owns the names.
  std::unordered_map<std::string, std::size_t> rootNames;
  std::vector<Object> objects;
  std::deque<Class> classes;
  std::unordered_map<std::uint32_t, std::size_t, gsl_records::MixedHash> classOfType;
  gsl_records::TextTable texts;
  gsl_records::PrefixTable prefixes;
  gsl_records::RecordShapes shapes;

  std::vector<Frame> frames;
  std::size_t depth = 0;
  std::size_t started = 0;
  /// Roots and objects that were read from bytes have no number of a writer.
  std::size_t rootsRead = 0, objectsRead = 0;
  /// The records of the roots that were read, counted at every place that holds them.
  std::size_t placesRead = 0;
  /// How many more records are at all places than were written: a record that refers to a shared
  /// object may be stored as the record that owns it.
  std::size_t extraPlaces = 0;
  /// By record: how many there are within it at all places, itself included. Caught up on demand.
  gsl_records::PlainBuffer<Number> placesWithin;

  gsl_records::RecordDuplicates anonymous, identified;
  std::size_t recordsToLookUp = 0;
  std::size_t identifiedTo = 0;
  /// The serials of the records below that number, caught up when the serials of a shape do not
  /// ascend. A record that was taken back stays.
  gsl_records::SerialSet serials;
  std::size_t serialsTo = 0;
  /// By shape.
  std::vector<Run> runs;
  ByteBuffer canonical[2];
};

inline const unsigned char*
gsl_RecordStore::Data::ReadIdentity(Number record, gsl_RecordIdentity& identity) const {
  std::uint64_t number = 0;
  const unsigned char* at = gsl_records::GetVarint(bytes.Begin() + offsets[record], number);
  at = gsl_records::GetVarint(at, number);
  if (number == 0) {
    identity = {};
    return at;
  }
  identity.prefix = prefixes[static_cast<Number>(number - 1)];
  return gsl_records::GetVarint(at, identity.serial);
}

inline const unsigned char* gsl_RecordStore::Data::ReadValue(const unsigned char* at,
                                                             gsl_RecordField& field) const {
  if (field.kind == gsl_RecordKind::Double) {
    field.real = gsl_records::GetDouble(at);
    return at + sizeof field.real;
  }
  std::uint64_t value = 0;
  at = gsl_records::GetVarint(at, value);
  switch (field.kind) {
  case gsl_RecordKind::Integer:
    field.integer = gsl_records::OfZigzag(value);
    break;
  case gsl_RecordKind::Boolean:
    field.boolean = value != 0;
    break;
  case gsl_RecordKind::String:
    field.text = texts[static_cast<Number>(value)];
    break;
  case gsl_RecordKind::Object:
    field.kind = (value & 1u) != 0 ? gsl_RecordKind::Reference : gsl_RecordKind::Object;
    field.object = static_cast<std::uint32_t>(value >> 1);
    field.link = objects[field.object].record;
    break;
  default:
    field.link = static_cast<std::uint32_t>(value);
    break;
  }
  return at;
}

#endif
