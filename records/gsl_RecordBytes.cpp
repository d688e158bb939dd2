#include "RecordBytes.h"
#include "RecordChecker.h"
#include "RecordFrame.h"
#include "gsl_RecordError.h"
#include "gsl_RecordStore.h"

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

using gsl_records::CheckedKind;
using gsl_records::Number;
using gsl_records::Refuse;
using gsl_records::Shape;
using gsl_records::ShapeField;

namespace {

constexpr std::string_view kWriter = "gsl_geometry " GSL_RECORDS_VERSION;

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
    std::uint64_t value = 0;
    if (Remaining() >= sizeof(std::uint32_t)) {
      const unsigned char* const next = gsl_records::GetUsualVarint(m_at, value);
      if (next != nullptr) {
        m_at = next;
        return value;
      }
    }
    const std::uint64_t first = Byte();
    return first < 0x80u ? first : RestOfVarint(first & 0x7Fu);
  }

  /// Takes up to `most` roots without names, in few steps, as long as their numbers take at most
  /// four bytes. Writes the numbers, and returns how many there are.
  std::size_t UsualRoots(std::uint32_t* records, std::size_t most) {
    constexpr std::ptrdiff_t kMostBytes = 1 + sizeof(std::uint32_t);
    const unsigned char* at = m_at;
    std::size_t taken = 0;
    for (; taken < most && m_end - at >= kMostBytes && *at == 0; ++taken) {
      std::uint64_t value = 0;
      const unsigned char* const next = gsl_records::GetUsualVarint(at + 1, value);
      if (next == nullptr) break;
      records[taken] = static_cast<std::uint32_t>(value);
      at = next;
    }
    m_at = at;
    return taken;
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
  gsl_RecordDecoder(gsl_records::CheckedBody& body, gsl_RecordStore::Data& data)
      : m_body(body), m_in(body.Body().begin, body.Body().count), m_data(data) {}

  const unsigned char* Decode(const unsigned char* base) {
    m_in.Text();
    ReadNames();
    ReadClasses();
    ReadTexts();
    ReadPrefixes();
    ReadShapes();
    ReadObjects();
    ReadRoots();
    const std::size_t recordCount = m_in.Count(kFewestRecordBytes);
    const unsigned char* const records = m_in.At();
    gsl_RecordChecker checker(m_body, records, m_data);
    checker.Check(recordCount, base != nullptr ? base : records);
    m_body.SumAll();
    m_data.rootsRead = m_data.roots.Size();
    m_data.objectsRead = m_data.objects.size();
    m_data.recordsToLookUp = recordCount;
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

  void ReadObjects() {
    m_data.objects.resize(m_in.Count(1));
    for (gsl_RecordStore::Data::Object& object : m_data.objects)
      object = {0, m_in.Varint32()};
  }

  void ReadRoots() {
    const std::size_t count = m_in.Count(2);
    for (std::size_t i = 0; i < count; ++i) {
      const std::size_t usual = m_in.UsualRoots(m_data.roots.RoomToRead(count - i), count - i);
      m_data.roots.AddFilled(usual);
      i += usual;
      if (i == count) break;
      const std::string_view name = m_in.Text();
      const std::string* kept = nullptr;
      if (!name.empty()) {
        const auto [place, isNew] = m_data.rootNames.emplace(std::string(name), i);
        if (!isNew) Refuse("Two roots in the bytes have one name");
        kept = &place->first;
      }
      m_data.roots.AddRead(m_in.Varint32());
      if (kept == nullptr) continue;
      m_data.roots.MakeRoomForLastName();
      m_data.roots.SetLastName(kept);
    }
  }

  gsl_records::CheckedBody& m_body;
  Reader m_in;
  gsl_RecordStore::Data& m_data;
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
    const std::string* const name = data.roots.Name(i);
    out.Text(name != nullptr ? std::string_view(*name) : std::string_view());
    out.Varint(data.roots.Record(i));
  }
  out.Varint(data.RecordCount());
  return std::move(out.bytes);
}

gsl_records::Bytes gsl_RecordCodec::RecordsOf(const gsl_RecordStore::Data& data) {
  if (data.offsets.Size() == 0) return {nullptr, 0};
  const auto first = static_cast<std::size_t>(data.offsets[0]);
  return {data.bytes.Begin() + first, static_cast<std::size_t>(data.offsets.Back()) - first};
}

const unsigned char* gsl_RecordCodec::Decode(gsl_records::CheckedBody& body,
                                             const unsigned char* base,
                                             gsl_RecordStore::Data& data) {
  try {
    return gsl_RecordDecoder(body, data).Decode(base);
  } catch (...) {
    body.SumAll();
    throw;
  }
}

namespace {

/// Room for a byte form.
std::vector<unsigned char> RoomFor(std::size_t size) {
  std::vector<unsigned char> bytes;
  bytes.reserve(size);
  return bytes;
}

void Append(std::vector<unsigned char>& bytes, gsl_records::Bytes part) {
  bytes.insert(bytes.end(), part.begin, part.begin + part.count);
}

} // namespace

std::vector<unsigned char> gsl_RecordStore::ToBytes() const {
  m_data->EndAll();
  const gsl_records::PlainBuffer<unsigned char> tables = gsl_RecordCodec::TablesOf(*m_data);
  const gsl_records::Bytes records = gsl_RecordCodec::RecordsOf(*m_data);
  const std::size_t bodySize = tables.Size() + records.count;
  const auto header = gsl_records::HeaderOf(bodySize);
  gsl_records::BlockSums body(bodySize);
  std::vector<unsigned char> bytes = RoomFor(header.size() + bodySize + body.Size());
  Append(bytes, {header.data(), header.size()});
  body.Add({tables.Begin(), tables.Size()});
  Append(bytes, {tables.Begin(), tables.Size()});
  body.Add(records);
  Append(bytes, records);
  const std::vector<unsigned char> sums = body.Finish();
  Append(bytes, {sums.data(), sums.size()});
  return bytes;
}

std::vector<unsigned char> gsl_RecordStore::TakeBytes() {
  m_data->EndAll();
  gsl_records::PlainBuffer<unsigned char> tables = gsl_RecordCodec::TablesOf(*m_data);
  const gsl_records::Bytes records = gsl_RecordCodec::RecordsOf(*m_data);
  const std::size_t bodySize = tables.Size() + records.count;
  const auto header = gsl_records::HeaderOf(bodySize);
  gsl_records::BlockSums body(bodySize);
  std::vector<unsigned char> bytes = RoomFor(header.size() + bodySize + body.Size());
  auto fresh = std::make_unique<Data>();
  // Nothing throws from here. Everything but the records is given back first.
  std::swap(fresh, m_data);
  const gsl_records::PlainBuffer<unsigned char> taken = std::move(fresh->bytes);
  fresh.reset();
  Append(bytes, {header.data(), header.size()});
  body.Add({tables.Begin(), tables.Size()});
  Append(bytes, {tables.Begin(), tables.Size()});
  tables = {};
  for (std::size_t at = 0; at < records.count; at += gsl_records::kBlockSize) {
    const std::size_t count = std::min(gsl_records::kBlockSize, records.count - at);
    Append(bytes, {records.begin + at, count});
    body.Add({records.begin + at, count});
    const auto begin = static_cast<std::size_t>(records.begin + at - taken.Begin());
    taken.ForgetUntil(begin, begin + count);
  }
  const std::vector<unsigned char> sums = body.Finish();
  Append(bytes, {sums.data(), sums.size()});
  return bytes;
}

gsl_RecordStore gsl_RecordStore::FromBytes(const unsigned char* bytes, std::size_t count) {
  gsl_RecordStore store = OverBytes(bytes, count);
  store.m_data->bytes.Own();
  return store;
}

gsl_RecordStore gsl_RecordStore::OverBytes(const unsigned char* bytes, std::size_t count) {
  gsl_records::CheckedBody checked({bytes, count});
  gsl_RecordStore store;
  const unsigned char* const records = gsl_RecordCodec::Decode(checked, nullptr, *store.m_data);
  const gsl_records::Bytes body = checked.Body();
  const auto size = static_cast<std::size_t>(body.begin + body.count - records);
  store.m_data->bytes = gsl_records::PlainBuffer<unsigned char>::Borrowed(records, size);
  return store;
}
