#include "RecordFrame.h"
#include "gsl_RecordError.h"
#include "gsl_RecordStore.h"

#include <cstring>
#include <iterator>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

// The body of the byte form, all numbers little-endian, "varint" in groups of seven bits, lowest
// first. RecordFrame.h describes the frame around it.
//
//   text               the program that wrote the records: varint length, bytes
//   varint names       each: a text that is not empty
//   varint prefixes    each: 8 bytes
//   varint records     each, in the order in which they were started:
//     byte flags       bit 0: root
//     varint type id
//     varint prefix    0: the null identity; otherwise the number of the prefix, from 1, and then
//     zigzag serial    minus the last serial of the same prefix, 0 before the first, modulo 2^64
//     varint collection type
//     unsigned list    varint count, varints
//     double matrix    varint rows, varint columns, doubles
//     varint fields    each: varint name + 1 (0: list entry), zigzag index, byte kind, value
//
// A value is a zigzag varint, 8 bytes, a byte, a text, the number of a record, or a type id. A
// record follows the record that holds it.

namespace {

using Kind = gsl_RecordKind;

constexpr std::string_view kWriter = "gsl_geometry " GSL_RECORDS_VERSION;
constexpr unsigned char kRootFlag = 1;
constexpr std::size_t kMostVarintBytes = 10;

[[noreturn]] void Refuse(const char* why) {
  throw gsl_RecordError(why);
}

/// Appends numbers and texts to bytes.
class Writer {
public:
  explicit Writer(std::vector<unsigned char> start = {}) : bytes(std::move(start)) {}

  void Byte(unsigned int value) { bytes.push_back(static_cast<unsigned char>(value)); }

  void Varint(std::uint64_t value) {
    while (value >= 0x80u) {
      Byte(static_cast<unsigned int>(value & 0x7Fu) | 0x80u);
      value >>= 7;
    }
    Byte(static_cast<unsigned int>(value));
  }

  void Zigzag(std::int64_t value) {
    const auto bits = static_cast<std::uint64_t>(value);
    Varint((bits << 1) ^ (value < 0 ? ~std::uint64_t{0} : 0u));
  }

  void Fixed64(std::uint64_t value) {
    for (int shift = 0; shift < 64; shift += 8)
      Byte(static_cast<unsigned int>((value >> shift) & 0xFFu));
  }

  void Double(double value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    Fixed64(bits);
  }

  void Text(std::string_view text) {
    Varint(text.size());
    bytes.insert(bytes.end(), text.begin(), text.end());
  }

  std::vector<unsigned char> bytes;
};

class Reader {
public:
  Reader(const unsigned char* begin, std::size_t count) : m_at(begin), m_end(begin + count) {}

  std::size_t Remaining() const { return static_cast<std::size_t>(m_end - m_at); }

  unsigned int Byte() {
    if (m_at == m_end) Refuse("The bytes end inside a record");
    return *m_at++;
  }

  std::uint64_t Varint() {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < kMostVarintBytes; ++i) {
      const std::uint64_t byte = Byte();
      // The tenth byte has room for the highest bit alone.
      if (i + 1 == kMostVarintBytes && byte > 1) break;
      value |= (byte & 0x7Fu) << (7 * i);
      if (byte < 0x80u) return value;
    }
    Refuse("A number in the bytes is too long");
  }

  std::uint32_t Varint32() {
    const std::uint64_t value = Varint();
    if (value > 0xFFFFFFFFu) Refuse("A number in the bytes is too large");
    return static_cast<std::uint32_t>(value);
  }

  std::uint64_t Zigzag64() {
    const std::uint64_t value = Varint();
    return (value >> 1) ^ ((value & 1u) != 0 ? ~std::uint64_t{0} : 0u);
  }

  std::int32_t Zigzag() {
    const std::uint32_t value = Varint32();
    const std::uint32_t bits = (value >> 1) ^ ((value & 1u) != 0 ? 0xFFFFFFFFu : 0u);
    std::int32_t result = 0;
    std::memcpy(&result, &bits, sizeof result);
    return result;
  }

  std::uint64_t Fixed64() {
    std::uint64_t value = 0;
    for (int shift = 0; shift < 64; shift += 8)
      value |= static_cast<std::uint64_t>(Byte()) << shift;
    return value;
  }

  double Double() {
    const std::uint64_t bits = Fixed64();
    double value = 0.0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
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
  const unsigned char* m_at;
  const unsigned char* m_end;
};

/// Gives names their numbers in the order of first use, so that names that a store knows but does
/// not use leave no trace.
class NameTable {
public:
  std::uint64_t NumberOf(std::string_view name) {
    if (name.empty()) return 0;
    const auto [place, isNew] = m_numbers.try_emplace(name, m_inOrder.size() + 1);
    if (isNew) m_inOrder.push_back(name);
    return place->second;
  }
  const std::vector<std::string_view>& InOrder() const { return m_inOrder; }

private:
  std::unordered_map<std::string_view, std::uint64_t> m_numbers;
  std::vector<std::string_view> m_inOrder;
};

/// Gives the prefixes of identities their numbers in the order of first use, and remembers the last
/// serial under each.
class PrefixTable {
public:
  void Write(Writer& out, const gsl_RecordIdentity& identity) {
    if (identity == gsl_RecordIdentity()) return out.Varint(0);
    const auto [place, isNew] = m_numbers.try_emplace(identity.prefix, m_inOrder.size());
    if (isNew) {
      m_inOrder.push_back(identity.prefix);
      m_lastSerials.push_back(0);
    }
    std::uint64_t& last = m_lastSerials[place->second];
    out.Varint(place->second + 1);
    out.Zigzag(Signed(identity.serial - last));
    last = identity.serial;
  }
  const std::vector<std::uint64_t>& InOrder() const { return m_inOrder; }

private:
  static std::int64_t Signed(std::uint64_t bits) {
    std::int64_t value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
  }

  std::unordered_map<std::uint64_t, std::size_t> m_numbers;
  std::vector<std::uint64_t> m_inOrder;
  std::vector<std::uint64_t> m_lastSerials;
};

void WriteValue(Writer& out, const gsl_RecordField& field) {
  switch (field.kind) {
  case Kind::Integer:
    out.Zigzag(field.integer);
    break;
  case Kind::Double:
    out.Double(field.real);
    break;
  case Kind::Boolean:
    out.Byte(field.boolean ? 1 : 0);
    break;
  case Kind::String:
    out.Text(field.text);
    break;
  case Kind::Record:
  case Kind::Object:
  case Kind::Reference:
  case Kind::Null:
    out.Varint(field.link);
    break;
  }
}

void WriteElements(Writer& out, const gsl_RecordStore& store, gsl_RecordIndex record) {
  if (store.Collection(record) == gsl_RecordCollection::Unsigneds) {
    const gsl_RecordStore::UnsignedArray array = store.Unsigneds(record);
    out.Varint(array.count);
    for (std::size_t i = 0; i < array.count; ++i)
      out.Varint(array.values[i]);
  } else if (store.Collection(record) == gsl_RecordCollection::Doubles) {
    const gsl_RecordStore::DoubleArray array = store.Doubles(record);
    out.Varint(array.rows);
    out.Varint(array.columns);
    for (std::size_t i = 0; i < array.rows * array.columns; ++i)
      out.Double(array.values[i]);
  }
}

void WriteRecord(Writer& out, NameTable& names, PrefixTable& prefixes, const gsl_RecordStore& store,
                 gsl_RecordIndex record, bool isRoot) {
  out.Byte(isRoot ? kRootFlag : 0u);
  out.Varint(store.TypeId(record));
  prefixes.Write(out, store.Identity(record));
  out.Varint(static_cast<std::uint64_t>(store.Collection(record)));
  WriteElements(out, store, record);
  std::uint64_t count = 0;
  for (const gsl_RecordField& field : store.Fields(record)) {
    static_cast<void>(field);
    ++count;
  }
  out.Varint(count);
  for (const gsl_RecordField& field : store.Fields(record)) {
    out.Varint(names.NumberOf(field.name));
    out.Zigzag(field.index);
    out.Byte(static_cast<unsigned int>(field.kind));
    WriteValue(out, field);
  }
}

} // namespace

/// Fills a store from its byte form.
class gsl_RecordDecoder {
public:
  gsl_RecordDecoder(const unsigned char* bytes, std::size_t count) : m_in(bytes, count) {}

  gsl_RecordStore Decode() {
    m_in.Text();
    ReadNames();
    ReadPrefixes();
    m_recordCount = m_in.Count(kFewestRecordBytes);
    m_holders.assign(m_recordCount, Holder::None);
    for (std::size_t i = 0; i < m_recordCount; ++i)
      ReadRecord(static_cast<gsl_RecordIndex>(i));
    if (m_in.Remaining() != 0) Refuse("Bytes follow the last record");
    CheckReferences();
    return std::move(m_store);
  }

private:
  enum class Holder : unsigned char { None, Root, Field, SharedField };

  static constexpr gsl_RecordIndex kNone = gsl_RecordStore::kNone;
  static constexpr std::size_t kFewestRecordBytes = 5;
  static constexpr std::size_t kFewestFieldBytes = 4;

  void ReadNames() {
    const std::size_t count = m_in.Count(2);
    for (std::size_t i = 0; i < count; ++i) {
      const std::string name(m_in.Text());
      if (name.empty() || name.find('\0') != std::string::npos) {
        Refuse("A field name in the bytes is empty or cut");
      }
      if (m_store.InternName(name.c_str()) != i) {
        Refuse("A field name appears twice in the bytes");
      }
    }
  }

  void ReadPrefixes() {
    m_prefixes.resize(m_in.Count(sizeof(std::uint64_t)));
    for (std::uint64_t& prefix : m_prefixes)
      prefix = m_in.Fixed64();
    m_lastSerials.assign(m_prefixes.size(), 0);
  }

  gsl_RecordIdentity ReadIdentity() {
    const std::uint64_t number = m_in.Varint();
    if (number == 0) return {};
    if (number > m_prefixes.size()) Refuse("An identity in the bytes has an unknown prefix");
    const auto place = static_cast<std::size_t>(number - 1);
    m_lastSerials[place] += m_in.Zigzag64();
    return {m_prefixes[place], m_lastSerials[place]};
  }

  void ReadRecord(gsl_RecordIndex record) {
    const unsigned int flags = m_in.Byte();
    if (flags > kRootFlag) Refuse("A record in the bytes has unknown flags");
    const std::uint32_t typeId = m_in.Varint32();
    const gsl_RecordIdentity identity = ReadIdentity();
    if (flags == kRootFlag) {
      Claim(record, Holder::Root);
      m_store.AddRoot(typeId, identity);
    } else if (m_holders[record] == Holder::None) {
      Refuse("A record in the bytes does not belong to an earlier record");
    } else {
      m_store.m_records.push_back(
          {typeId, gsl_RecordCollection::None, identity, kNone, kNone, kNone});
    }
    ReadElements(record);
    const std::size_t fieldCount = m_in.Count(kFewestFieldBytes);
    for (std::size_t i = 0; i < fieldCount; ++i)
      ReadField(record);
  }

  void ReadElements(gsl_RecordIndex record) {
    const auto collection = static_cast<gsl_RecordCollection>(m_in.Varint32());
    switch (collection) {
    case gsl_RecordCollection::None:
      break;
    case gsl_RecordCollection::Objects:
      m_store.SetCollection(record, collection);
      break;
    case gsl_RecordCollection::Unsigneds:
      ReadUnsigneds(record);
      break;
    case gsl_RecordCollection::Doubles:
      ReadDoubles(record);
      break;
    default:
      Refuse("A record in the bytes is an unknown collection");
    }
  }

  void ReadUnsigneds(gsl_RecordIndex record) {
    std::vector<std::uint32_t> values(m_in.Count(1));
    for (std::uint32_t& value : values)
      value = m_in.Varint32();
    m_store.SetUnsigneds(record, values.data(), values.size());
  }

  void ReadDoubles(gsl_RecordIndex record) {
    const std::size_t rows = m_in.Varint32();
    const std::size_t columns = m_in.Varint32();
    const std::size_t most = m_in.Remaining() / sizeof(double);
    if (columns != 0 && rows > most / columns) {
      Refuse("The bytes announce more than they hold");
    }
    std::vector<double> values(rows * columns);
    for (double& value : values)
      value = m_in.Double();
    m_store.SetDoubles(record, values.data(), rows, columns);
  }

  void ReadField(gsl_RecordIndex record) {
    const std::uint32_t number = m_in.Varint32();
    if (number > m_store.m_names.size()) Refuse("A field in the bytes has an unknown name");
    const char* const name = number != 0 ? m_store.m_names[number - 1].c_str() : nullptr;
    const gsl_RecordPlace place = {name, m_in.Zigzag()};
    const unsigned int kind = m_in.Byte();
    if (kind > static_cast<unsigned int>(Kind::Null)) {
      Refuse("A field in the bytes is of an unknown kind");
    }
    ReadValue(record, place, static_cast<Kind>(kind));
  }

  void ReadValue(gsl_RecordIndex record, const gsl_RecordPlace& place, Kind kind) {
    switch (kind) {
    case Kind::Integer:
      m_store.AddInteger(record, place, m_in.Zigzag());
      break;
    case Kind::Double:
      m_store.AddDouble(record, place, m_in.Double());
      break;
    case Kind::Boolean:
      m_store.AddBoolean(record, place, ReadBoolean());
      break;
    case Kind::String:
      m_store.AddString(record, place, m_in.Text());
      break;
    case Kind::Record:
    case Kind::Object:
      AddHolder(record, place, kind);
      break;
    case Kind::Reference:
      m_references.push_back(m_in.Varint32());
      m_store.AddReference(record, place, m_references.back());
      break;
    case Kind::Null:
      m_store.AddNull(record, place, m_in.Varint32());
      break;
    }
  }

  bool ReadBoolean() {
    const unsigned int value = m_in.Byte();
    if (value > 1) Refuse("A boolean in the bytes is neither true nor false");
    return value == 1;
  }

  /// Adds a field whose record follows. Nothing can hold itself, because a record follows the
  /// record that holds it.
  void AddHolder(gsl_RecordIndex record, const gsl_RecordPlace& place, Kind kind) {
    const gsl_RecordIndex child = m_in.Varint32();
    if (child <= record || child >= m_recordCount) {
      Refuse("A field in the bytes must hold a record after its own record");
    }
    Claim(child, kind == Kind::Object ? Holder::SharedField : Holder::Field);
    gsl_RecordStore::Field field = {};
    field.kind = kind;
    field.link = child;
    m_store.AddField(record, place, field);
  }

  void Claim(gsl_RecordIndex record, Holder holder) {
    if (m_holders[record] != Holder::None) {
      Refuse("A record in the bytes belongs to two places");
    }
    m_holders[record] = holder;
  }

  void CheckReferences() const {
    for (const gsl_RecordIndex target : m_references) {
      if (target >= m_recordCount || m_holders[target] != Holder::SharedField) {
        Refuse("A field in the bytes must refer to a shared object");
      }
    }
  }

  Reader m_in;
  gsl_RecordStore m_store;
  std::size_t m_recordCount = 0;
  std::vector<Holder> m_holders;
  std::vector<gsl_RecordIndex> m_references;
  std::vector<std::uint64_t> m_prefixes;
  std::vector<std::uint64_t> m_lastSerials;
};

std::vector<unsigned char> gsl_RecordStore::ToBytes() const {
  Writer body;
  NameTable usedNames;
  PrefixTable usedPrefixes;
  std::size_t nextRoot = 0;
  body.Varint(m_records.size());
  for (gsl_RecordIndex i = 0; i < m_records.size(); ++i) {
    const bool isRoot = nextRoot < m_roots.size() && m_roots[nextRoot].record == i;
    if (isRoot) ++nextRoot;
    WriteRecord(body, usedNames, usedPrefixes, *this, i, isRoot);
  }
  Writer out(gsl_records::StartFrame());
  out.Text(kWriter);
  out.Varint(usedNames.InOrder().size());
  for (const std::string_view name : usedNames.InOrder())
    out.Text(name);
  out.Varint(usedPrefixes.InOrder().size());
  for (const std::uint64_t prefix : usedPrefixes.InOrder())
    out.Fixed64(prefix);
  out.bytes.insert(out.bytes.end(), body.bytes.begin(), body.bytes.end());
  gsl_records::FinishFrame(out.bytes);
  return std::move(out.bytes);
}

gsl_RecordStore gsl_RecordStore::FromBytes(const unsigned char* bytes, std::size_t count) {
  const gsl_records::Bytes body = gsl_records::BodyOf({bytes, count});
  return gsl_RecordDecoder(body.begin, body.count).Decode();
}
