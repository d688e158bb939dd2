#include "RecordBytes.h"
#include "RecordFrame.h"
#include "gsl_RecordError.h"
#include "gsl_RecordStore.h"

#include <cstring>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

using gsl_records::kNone;
using gsl_records::Number;
using gsl_records::Shape;
using gsl_records::ShapeField;
using Kind = gsl_RecordKind;

namespace {

constexpr std::string_view kWriter = "gsl_geometry " GSL_RECORDS_VERSION;

[[noreturn]] void Refuse(const char* why) {
  throw gsl_RecordError(why);
}

/// Appends numbers and texts to bytes.
class Writer {
public:
  void Byte(unsigned int value) { bytes.Append(static_cast<unsigned char>(value)); }

  void Varint(std::uint64_t value) {
    unsigned char* const at = bytes.Room(gsl_records::kMostVarintBytes);
    bytes.SetEnd(gsl_records::PutVarint(at, value));
  }

  void Fixed64(std::uint64_t value) {
    bytes.SetEnd(gsl_records::PutFixed64(bytes.Room(sizeof value), value));
  }

  void Text(std::string_view text) {
    Varint(text.size());
    bytes.Append(reinterpret_cast<const unsigned char*>(text.data()), text.size());
  }

  gsl_records::PlainBuffer<unsigned char> bytes;
};

void WriteTexts(Writer& out, const gsl_records::TextTable& table) {
  out.Varint(table.Size());
  for (Number i = 0; i < table.Size(); ++i)
    out.Text(table[i]);
}

/// The classes of the shapes in the order of first use, and the number of each shape's class.
struct ClassesOfShapes {
  explicit ClassesOfShapes(const std::vector<Shape>& shapes) {
    std::unordered_map<std::uint32_t, std::size_t, gsl_records::MixedHash> numbers;
    for (const Shape& shape : shapes) {
      const auto [place, isNew] = numbers.try_emplace(shape.typeId, inOrder.size());
      if (isNew) inOrder.push_back(shape.typeId);
      ofShape.push_back(place->second);
    }
  }

  std::vector<std::uint32_t> inOrder;
  std::vector<std::size_t> ofShape;
};

void WriteShapes(Writer& out, const gsl_records::RecordShapes& shapes,
                 const ClassesOfShapes& classes) {
  out.Varint(shapes.Shapes().size());
  for (std::size_t i = 0; i < shapes.Shapes().size(); ++i) {
    const Shape& shape = shapes.Shapes()[i];
    out.Varint(classes.ofShape[i]);
    out.Varint(static_cast<std::uint64_t>(shape.collection));
    const ShapeField* const first = &shapes.Fields()[shape.firstField];
    const ShapeField* end = first;
    while (end->kind < ShapeField::Entries)
      ++end;
    out.Varint(static_cast<std::uint64_t>(end - first));
    for (const ShapeField* field = first; field != end; ++field) {
      out.Varint(field->nameNumber);
      out.Varint(gsl_records::ZigzagOf(field->index));
      out.Byte(field->kind);
    }
  }
}

class Reader {
public:
  Reader(const unsigned char* begin, std::size_t count) : m_at(begin), m_end(begin + count) {}

  const unsigned char* At() const { return m_at; }
  std::size_t Remaining() const { return static_cast<std::size_t>(m_end - m_at); }

  unsigned int Byte() {
    if (m_at == m_end) Refuse("The bytes end inside a record");
    return *m_at++;
  }

  std::uint64_t Varint() {
    const std::uint64_t first = Byte();
    return first < 0x80u ? first : RestOfVarint(first & 0x7Fu);
  }

  std::uint32_t Varint32() {
    const std::uint64_t value = Varint();
    if (value > 0xFFFFFFFFu) Refuse("A number in the bytes is too large");
    return static_cast<std::uint32_t>(value);
  }

  void Skip(std::size_t count) {
    if (count > Remaining()) Refuse("The bytes end inside a record");
    m_at += count;
  }

  std::uint64_t Fixed64() {
    const unsigned char* const at = m_at;
    Skip(sizeof(std::uint64_t));
    return gsl_records::GetFixed64(at);
  }

  /// A number of items of which each takes at least `bytesEach` bytes.
  std::size_t Count(std::size_t bytesEach) {
    const std::uint64_t count = Varint();
    if (count > Remaining() / bytesEach) Refuse("The bytes announce more than they hold");
    return static_cast<std::size_t>(count);
  }

  std::string_view Text() {
    const std::size_t length = Count(1);
    const std::string_view text(reinterpret_cast<const char*>(m_at), length);
    m_at += length;
    return text;
  }

private:
  std::uint64_t RestOfVarint(std::uint64_t value) {
    for (std::size_t i = 1; i < gsl_records::kMostVarintBytes; ++i) {
      const std::uint64_t byte = Byte();
      // The tenth byte has room for the highest bit alone.
      if (i + 1 == gsl_records::kMostVarintBytes && byte > 1) break;
      value |= (byte & 0x7Fu) << (7 * i);
      if (byte == 0) Refuse("A number in the bytes takes more bytes than it needs");
      if (byte < 0x80u) return value;
    }
    Refuse("A number in the bytes is too long");
  }

  const unsigned char* m_at;
  const unsigned char* m_end;
};

} // namespace

/// Fills the data of a store from a body, and checks every record.
class gsl_RecordDecoder {
public:
  gsl_RecordDecoder(gsl_records::Bytes body, gsl_RecordStore::Data& data)
      : m_in(body.begin, body.count), m_data(data) {}

  const unsigned char* Decode(const unsigned char* base) {
    m_in.Text();
    ReadNames();
    ReadClasses();
    ReadTexts();
    ReadPrefixes();
    ReadShapes();
    ReadObjects();
    ReadRoots();
    m_recordCount = m_in.Count(kFewestRecordBytes);
    const unsigned char* const records = m_in.At();
    ReadRecords(base != nullptr ? base : records);
    CheckLinks();
    m_data.rootsRead = m_data.roots.Size();
    m_data.objectsRead = m_data.objects.size();
    m_data.recordsToLookUp = m_recordCount;
    return records;
  }

private:
  static constexpr std::size_t kFewestRecordBytes = 2;
  static constexpr std::size_t kFewestShapeBytes = 3;
  static constexpr std::size_t kFewestFieldBytes = 3;

  void ReadNames() {
    const std::size_t count = m_in.Count(2);
    for (std::size_t i = 0; i < count; ++i) {
      const std::string_view name = m_in.Text();
      if (name.empty() || name.find('\0') != std::string_view::npos) {
        Refuse("A field name in the bytes is empty or cut");
      }
      if (m_data.shapes.Names().NumberOf(name) != i) {
        Refuse("A field name appears twice in the bytes");
      }
    }
  }

  void ReadClasses() {
    const std::size_t count = m_in.Count(2);
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint32_t typeId = m_in.Varint32();
      const std::string_view name = m_in.Text();
      if (!m_data.classOfType.emplace(typeId, i).second) {
        Refuse("A class appears twice in the bytes");
      }
      m_data.classes.push_back({typeId, std::string(name)});
    }
  }

  void ReadTexts() {
    const std::size_t count = m_in.Count(1);
    for (std::size_t i = 0; i < count; ++i) {
      if (m_data.texts.NumberOf(m_in.Text()) != i) Refuse("A text appears twice in the bytes");
    }
  }

  void ReadPrefixes() {
    const std::size_t count = m_in.Count(sizeof(std::uint64_t));
    for (std::size_t i = 0; i < count; ++i) {
      if (m_data.prefixes.NumberOf(m_in.Fixed64()) != i) {
        Refuse("A prefix of identities appears twice in the bytes");
      }
    }
  }

  void ReadShapes() {
    const std::size_t count = m_in.Count(kFewestShapeBytes);
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint64_t number = m_in.Varint();
      if (number >= m_data.classes.size()) Refuse("A shape in the bytes has an unknown class");
      const std::uint32_t typeId = m_data.classes[static_cast<std::size_t>(number)].typeId;
      Number node = m_data.shapes.Start(typeId, ReadCollection());
      const std::size_t fieldCount = m_in.Count(kFewestFieldBytes);
      for (std::size_t field = 0; field < fieldCount; ++field)
        node = ReadShapeField(node);
      if (m_data.shapes.ShapeOf(node) != i) Refuse("A shape appears twice in the bytes");
    }
  }

  gsl_RecordCollection ReadCollection() {
    const auto collection = static_cast<gsl_RecordCollection>(m_in.Varint32());
    switch (collection) {
    case gsl_RecordCollection::None:
    case gsl_RecordCollection::Objects:
    case gsl_RecordCollection::Unsigneds:
    case gsl_RecordCollection::Doubles:
      return collection;
    }
    Refuse("A shape in the bytes is an unknown collection");
  }

  Number ReadShapeField(Number node) {
    const std::uint32_t name = m_in.Varint32();
    if (name >= m_data.shapes.Names().Size()) Refuse("A field in the bytes has an unknown name");
    const std::int32_t index = gsl_records::OfZigzag(m_in.Varint32());
    const unsigned int kind = CheckedKind(m_in.Byte());
    return m_data.shapes.NextOfNumber(node, name, index, static_cast<std::uint8_t>(kind));
  }

  static unsigned int CheckedKind(unsigned int kind) {
    if (kind > static_cast<unsigned int>(Kind::Null) ||
        kind == static_cast<unsigned int>(Kind::Reference)) {
      Refuse("A field in the bytes is of an unknown kind");
    }
    return kind;
  }

  void ReadObjects() {
    m_data.objects.resize(m_in.Count(1));
    for (gsl_RecordStore::Data::Object& object : m_data.objects)
      object = {0, m_in.Varint32()};
    m_isOwned.assign(m_data.objects.size(), false);
  }

  void ReadRoots() {
    const std::size_t count = m_in.Count(2);
    m_data.roots.Room(count);
    for (std::size_t i = 0; i < count; ++i) {
      const std::string_view name = m_in.Text();
      const std::string* kept = nullptr;
      if (!name.empty()) {
        const auto [place, isNew] = m_data.rootNames.emplace(std::string(name), i);
        if (!isNew) Refuse("Two roots in the bytes have one name");
        kept = &place->first;
      }
      m_data.roots.Append({kept, m_in.Varint32(), 0, 0, 0});
    }
  }

  void ReadRecords(const unsigned char* base) {
    m_isHeld.assign(m_recordCount, false);
    m_written.reserve(m_recordCount);
    const auto here = [&] { return static_cast<std::uint64_t>(m_in.At() - base); };
    m_data.offsets.Room(m_recordCount + 1);
    m_data.offsets.Append(here());
    for (m_record = 0; m_record < m_recordCount; ++m_record) {
      m_recordsInside = 1;
      ReadRecord();
      m_written.push_back(static_cast<Number>(m_recordsInside));
      m_data.offsets.Append(here());
    }
    if (m_in.Remaining() != 0) Refuse("Bytes follow the last record");
  }

  void ReadRecord() {
    const std::uint64_t number = m_in.Varint();
    if (number >= m_data.shapes.Shapes().size()) Refuse("A record in the bytes has no shape");
    const Shape& shape = m_data.shapes.Shapes()[static_cast<std::size_t>(number)];
    const std::uint64_t prefix = m_in.Varint();
    if (prefix > m_data.prefixes.Size()) Refuse("An identity in the bytes has an unknown prefix");
    if (prefix != 0) CheckSerial(m_data.prefixes[static_cast<Number>(prefix - 1)], m_in.Varint());
    const ShapeField* field = &m_data.shapes.Fields()[shape.firstField];
    for (; field->kind < ShapeField::Entries; ++field) {
      if (field->kind == static_cast<std::uint8_t>(Kind::Double)) {
        m_in.Skip(sizeof(double));
      } else {
        CheckValue(static_cast<Kind>(field->kind));
      }
    }
    if (shape.collection != gsl_RecordCollection::None) CheckElements(shape.collection);
  }

  static void CheckSerial(std::uint64_t prefix, std::uint64_t serial) {
    if (prefix == 0 && serial == 0) {
      Refuse("A null identity in the bytes has a prefix and a serial, but must be the number 0");
    }
  }

  void CheckElements(gsl_RecordCollection collection) {
    if (collection == gsl_RecordCollection::Unsigneds) {
      for (std::size_t count = m_in.Count(1); count != 0; --count)
        m_in.Varint32();
    } else if (collection == gsl_RecordCollection::Doubles) {
      const std::size_t rows = m_in.Varint32();
      const std::size_t columns = m_in.Varint32();
      const std::size_t most = m_in.Remaining() / sizeof(double);
      if (columns != 0 && rows > most / columns) Refuse("The bytes announce more than they hold");
      m_in.Skip(rows * columns * sizeof(double));
    } else if (collection == gsl_RecordCollection::Objects) {
      for (unsigned int tag = m_in.Byte(); tag != gsl_records::kEndOfEntries; tag = m_in.Byte())
        CheckValue(static_cast<Kind>(CheckedKind(tag)));
    }
  }

  void CheckValue(Kind kind) {
    switch (kind) {
    case Kind::Double:
      return m_in.Skip(sizeof(double));
    case Kind::Boolean:
      if (m_in.Byte() > 1) Refuse("A boolean in the bytes is neither true nor false");
      return;
    case Kind::String:
      if (m_in.Varint() >= m_data.texts.Size()) Refuse("A field in the bytes has an unknown text");
      return;
    case Kind::Record:
      return Hold(m_in.Varint());
    case Kind::Object:
      return CheckObject(m_in.Varint());
    default:
      m_in.Varint32();
    }
  }

  /// A field holds a record. Nothing can hold itself, because a record follows the records that it
  /// holds.
  void Hold(std::uint64_t record) {
    if (record >= m_record) Refuse("A field in the bytes must hold a record before its own record");
    const auto held = static_cast<std::size_t>(record);
    m_isHeld[held] = true;
    m_recordsInside += m_written[held];
    if (m_recordsInside >= kNone) RefuseSize();
  }

  void CheckObject(std::uint64_t value) {
    const std::uint64_t number = value >> 1;
    if (number >= m_data.objects.size()) Refuse("A field in the bytes has an unknown object");
    if ((value & 1u) != 0) return;
    const auto object = static_cast<std::size_t>(number);
    if (m_isOwned[object]) Refuse("An object in the bytes belongs to two fields");
    m_isOwned[object] = true;
    Hold(m_data.objects[object].record);
  }

  void CheckLinks() {
    std::uint64_t written = 0;
    for (std::size_t i = 0; i < m_data.roots.Size(); ++i) {
      const Number record = m_data.roots[i].record;
      if (record >= m_recordCount) Refuse("A root in the bytes is not a record");
      m_isHeld[record] = true;
      written += m_written[record];
      if (written >= kNone) RefuseSize();
    }
    m_data.placesRead = static_cast<std::size_t>(written);
    for (const bool isHeld : m_isHeld) {
      if (!isHeld) Refuse("A record in the bytes belongs to nothing");
    }
    for (const bool isOwned : m_isOwned) {
      if (!isOwned) Refuse("An object in the bytes belongs to no field");
    }
  }

  /// Equal records are stored once; a reader meets them once for each place that holds them.
  [[noreturn]] static void RefuseSize() {
    Refuse("The bytes hold more than 4294967294 records, counted at every place that holds them");
  }

  Reader m_in;
  gsl_RecordStore::Data& m_data;
  std::size_t m_recordCount = 0;
  std::size_t m_record = 0;
  /// How many records there are within a record, itself included, counted at every place.
  std::uint64_t m_recordsInside = 0;
  std::vector<Number> m_written;
  std::vector<bool> m_isHeld, m_isOwned;
};

gsl_records::PlainBuffer<unsigned char>
gsl_RecordCodec::TablesOf(const gsl_RecordStore::Data& data) {
  Writer out;
  out.Text(kWriter);
  WriteTexts(out, data.shapes.Names());
  const ClassesOfShapes classes(data.shapes.Shapes());
  out.Varint(classes.inOrder.size());
  for (const std::uint32_t typeId : classes.inOrder) {
    const auto found = data.classOfType.find(typeId);
    out.Varint(typeId);
    out.Text(found != data.classOfType.end() ? std::string_view(data.classes[found->second].name)
                                             : std::string_view());
  }
  WriteTexts(out, data.texts);
  out.Varint(data.prefixes.Size());
  for (Number i = 0; i < data.prefixes.Size(); ++i)
    out.Fixed64(data.prefixes[i]);
  WriteShapes(out, data.shapes, classes);
  out.Varint(data.objects.size());
  for (const gsl_RecordStore::Data::Object& object : data.objects)
    out.Varint(object.record);
  out.Varint(data.roots.Size());
  for (std::size_t i = 0; i < data.roots.Size(); ++i) {
    const gsl_RecordStore::Data::Root& root = data.roots[i];
    out.Text(root.name != nullptr ? std::string_view(*root.name) : std::string_view());
    out.Varint(root.record);
  }
  out.Varint(data.RecordCount());
  return std::move(out.bytes);
}

gsl_records::Bytes gsl_RecordCodec::RecordsOf(const gsl_RecordStore::Data& data) {
  if (data.offsets.Size() == 0) return {nullptr, 0};
  const auto first = static_cast<std::size_t>(data.offsets[0]);
  return {data.bytes.Begin() + first, static_cast<std::size_t>(data.offsets.Back()) - first};
}

const unsigned char* gsl_RecordCodec::Decode(gsl_records::Bytes body, const unsigned char* base,
                                             gsl_RecordStore::Data& data) {
  return gsl_RecordDecoder(body, data).Decode(base);
}

std::vector<unsigned char> gsl_RecordStore::ToBytes() const {
  m_data->EndAll();
  const gsl_records::PlainBuffer<unsigned char> tables = gsl_RecordCodec::TablesOf(*m_data);
  const gsl_records::Bytes records = gsl_RecordCodec::RecordsOf(*m_data);
  gsl_records::BlockSums body;
  body.Add({tables.Begin(), tables.Size()});
  body.Add(records);
  const std::vector<unsigned char> sums = body.Finish();
  const auto header = gsl_records::HeaderOf(tables.Size() + records.count);
  std::vector<unsigned char> bytes;
  bytes.reserve(header.size() + tables.Size() + records.count + sums.size());
  bytes.insert(bytes.end(), header.begin(), header.end());
  bytes.insert(bytes.end(), tables.Begin(), tables.Begin() + tables.Size());
  bytes.insert(bytes.end(), records.begin, records.begin + records.count);
  bytes.insert(bytes.end(), sums.begin(), sums.end());
  return bytes;
}

gsl_RecordStore gsl_RecordStore::FromBytes(const unsigned char* bytes, std::size_t count) {
  const gsl_records::Bytes body = gsl_records::BodyOf({bytes, count});
  gsl_RecordStore store;
  const unsigned char* const records = gsl_RecordCodec::Decode(body, nullptr, *store.m_data);
  store.m_data->bytes.Append(records, static_cast<std::size_t>(body.begin + body.count - records));
  return store;
}
