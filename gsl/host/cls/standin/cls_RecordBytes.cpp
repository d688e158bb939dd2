#include "cls_RecordException.h"
#include "cls_RecordStore.h"

#include <cstring>
#include <unordered_map>
#include <utility>

// The byte form, all numbers little-endian, "varint" in groups of seven bits, lowest first:
//
//   "gslr" 1
//   varint names       each: varint length, bytes
//   varint records     each, in the order in which they were started:
//     byte flags       bit 0: root
//     varint type id, 16 bytes uid, varint collection type
//     unsigned list    varint count, varints
//     double matrix    varint rows, varint columns, doubles
//     varint fields    each: varint name + 1 (0: list entry), zigzag index, byte kind, value
//
// A value is a zigzag varint, 8 bytes, a byte, varint length and bytes, the number of a record, or
// a type id. A record follows the one that holds it.

namespace {

using Index = cls_RecordStore::Index;
using Kind = cls_RecordStore::Kind;

constexpr const char* kSourceUnit = "gsl/host/cls/cls_RecordBytes";
constexpr unsigned char kHeader[] = {'g', 's', 'l', 'r', 1};
constexpr unsigned char kRootFlag = 1;
constexpr std::size_t kMostVarintBytes = 10;

[[noreturn]] void Refuse(const char* why, int line) {
  nex_Exception::Throw(cls_RecordException(why), kSourceUnit, line);
}

class Writer {
public:
  void Byte(unsigned int value) { bytes.push_back(static_cast<unsigned char>(value)); }

  void Varint(std::uint64_t value) {
    while (value >= 0x80u) {
      Byte(static_cast<unsigned int>(value & 0x7Fu) | 0x80u);
      value >>= 7;
    }
    Byte(static_cast<unsigned int>(value));
  }

  void Zigzag(std::int32_t value) {
    const auto bits = static_cast<std::uint32_t>(value);
    Varint((bits << 1) ^ (value < 0 ? 0xFFFFFFFFu : 0u));
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

  void Text(const char* text, std::size_t length) {
    Varint(length);
    bytes.insert(bytes.end(), text, text + length);
  }

  std::vector<unsigned char> bytes;
};

class Reader {
public:
  Reader(const unsigned char* begin, std::size_t count) : at(begin), end(begin + count) {}

  std::size_t Remaining() const { return static_cast<std::size_t>(end - at); }

  unsigned int Byte() {
    if (at == end) Refuse("The bytes end inside a record", __LINE__);
    return *at++;
  }

  std::uint64_t Varint() {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < kMostVarintBytes; ++i) {
      const std::uint64_t byte = Byte();
      value |= (byte & 0x7Fu) << (7 * i);
      if (byte < 0x80u) return value;
    }
    Refuse("A number in the bytes is too long", __LINE__);
  }

  std::uint32_t Varint32() {
    const std::uint64_t value = Varint();
    if (value > 0xFFFFFFFFu) Refuse("A number in the bytes is too large", __LINE__);
    return static_cast<std::uint32_t>(value);
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
    if (count > Remaining() / bytesEach) Refuse("The bytes announce more than they hold", __LINE__);
    return static_cast<std::size_t>(count);
  }

  std::pair<const char*, std::size_t> Text() {
    const std::size_t length = Count(1);
    const char* const text = reinterpret_cast<const char*>(at);
    at += length;
    return {text, length};
  }

private:
  const unsigned char* at;
  const unsigned char* end;
};

/// Gives names their numbers in the order of first use, so that names that a store knows but does
/// not use leave no trace.
class NameTable {
public:
  std::uint64_t NumberOf(Index name) {
    if (name == cls_RecordStore::kNone) return 0;
    const auto [place, isNew] = numbers.try_emplace(name, inOrder.size() + 1);
    if (isNew) inOrder.push_back(name);
    return place->second;
  }
  const std::vector<Index>& InOrder() const { return inOrder; }

private:
  std::unordered_map<Index, std::uint64_t> numbers;
  std::vector<Index> inOrder;
};

void WriteValue(Writer& out, const cls_RecordStore& store, const cls_RecordStore::Field& field) {
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
    out.Text(store.String(field).CStr(), store.String(field).Length());
    break;
  case Kind::Record:
  case Kind::Object:
  case Kind::Reference:
  case Kind::Null:
    out.Varint(field.link);
    break;
  }
}

void WriteElements(Writer& out, const cls_RecordStore& store, Index record) {
  if (store.Collection(record) == cls_UnsignedList) {
    const cls_RecordStore::UnsignedArray array = store.Unsigneds(record);
    out.Varint(array.count);
    for (std::size_t i = 0; i < array.count; ++i)
      out.Varint(array.values[i]);
  } else if (store.Collection(record) == cls_DoubleMatrix) {
    const cls_RecordStore::DoubleArray array = store.Doubles(record);
    out.Varint(array.rows);
    out.Varint(array.columns);
    for (std::size_t i = 0; i < array.rows * array.columns; ++i)
      out.Double(array.values[i]);
  }
}

void WriteRecord(Writer& out, NameTable& names, const cls_RecordStore& store, Index record,
                 bool isRoot) {
  out.Byte(isRoot ? kRootFlag : 0u);
  out.Varint(store.TypeId(record));
  out.Fixed64(store.Uid(record).Prefix());
  out.Fixed64(store.Uid(record).Serial());
  out.Varint(static_cast<std::uint64_t>(store.Collection(record)));
  WriteElements(out, store, record);
  std::uint64_t count = 0;
  for (const auto* field = store.First(record); field != nullptr; field = store.Next(*field))
    ++count;
  out.Varint(count);
  for (const auto* field = store.First(record); field != nullptr; field = store.Next(*field)) {
    out.Varint(names.NumberOf(field->name));
    out.Zigzag(field->index);
    out.Byte(static_cast<unsigned int>(field->kind));
    WriteValue(out, store, *field);
  }
}

} // namespace

/// Fills a store from its byte form.
class cls_RecordDecoder {
public:
  cls_RecordDecoder(const unsigned char* bytes, std::size_t count) : in(bytes, count) {}

  cls_RecordStore Decode() {
    for (const unsigned char expected : kHeader) {
      if (in.Byte() != expected) Refuse("The bytes are no records of a known version", __LINE__);
    }
    ReadNames();
    recordCount = in.Count(kFewestRecordBytes);
    holders.assign(recordCount, Holder::None);
    for (std::size_t i = 0; i < recordCount; ++i)
      ReadRecord(static_cast<Index>(i));
    if (in.Remaining() != 0) Refuse("Bytes follow the last record", __LINE__);
    CheckReferences();
    return std::move(store);
  }

private:
  enum class Holder : unsigned char { None, Root, Field, SharedField };

  static constexpr std::size_t kFewestRecordBytes = 20;
  static constexpr std::size_t kFewestFieldBytes = 4;

  void ReadNames() {
    const std::size_t count = in.Count(2);
    for (std::size_t i = 0; i < count; ++i) {
      const auto [text, length] = in.Text();
      const std::string name(text, length);
      if (name.empty() || name.find('\0') != std::string::npos) {
        Refuse("A field name in the bytes is empty or cut", __LINE__);
      }
      if (store.InternName(name.c_str()) != i) {
        Refuse("A field name appears twice in the bytes", __LINE__);
      }
    }
  }

  void ReadRecord(Index record) {
    const unsigned int flags = in.Byte();
    if (flags > kRootFlag) Refuse("A record in the bytes has unknown flags", __LINE__);
    const unsigned int typeId = in.Varint32();
    const std::uint64_t prefix = in.Fixed64();
    store.AddRecord(typeId, cls_Uid(prefix, in.Fixed64()));
    if (flags == kRootFlag) {
      Claim(record, Holder::Root);
      store.roots.push_back(record);
    } else if (holders[record] == Holder::None) {
      Refuse("A record in the bytes belongs to none before it", __LINE__);
    }
    ReadElements(record);
    const std::size_t fieldCount = in.Count(kFewestFieldBytes);
    for (std::size_t i = 0; i < fieldCount; ++i)
      ReadField(record);
  }

  void ReadElements(Index record) {
    const std::uint32_t collection = in.Varint32();
    switch (collection) {
    case cls_NoCollection:
    case cls_ObjectList:
      break;
    case cls_UnsignedList:
      ReadUnsigneds(record);
      break;
    case cls_DoubleMatrix:
      ReadDoubles(record);
      break;
    default:
      Refuse("A record in the bytes is an unknown collection", __LINE__);
    }
    store.records[record].collection = static_cast<cls_CollectionType>(collection);
  }

  void ReadUnsigneds(Index record) {
    std::vector<unsigned int> values(in.Count(1));
    for (unsigned int& value : values)
      value = in.Varint32();
    store.SetUnsigneds(record, values.data(), values.size());
  }

  void ReadDoubles(Index record) {
    const std::size_t rows = in.Varint32();
    const std::size_t columns = in.Varint32();
    const std::size_t most = in.Remaining() / sizeof(double);
    if (columns != 0 && rows > most / columns) {
      Refuse("The bytes announce more than they hold", __LINE__);
    }
    std::vector<double> values(rows * columns);
    for (double& value : values)
      value = in.Double();
    store.SetDoubles(record, values.data(), rows, columns);
  }

  void ReadField(Index record) {
    const std::uint32_t number = in.Varint32();
    if (number > store.names.size()) Refuse("A field in the bytes has no such name", __LINE__);
    const std::int32_t index = in.Zigzag();
    const unsigned int kind = in.Byte();
    if (kind > static_cast<unsigned int>(Kind::Null)) {
      Refuse("A field in the bytes is of an unknown kind", __LINE__);
    }
    const Index name = number != 0 ? number - 1 : cls_RecordStore::kNone;
    ReadValue(record, store.AddField(record, name, index, static_cast<Kind>(kind)));
  }

  void ReadValue(Index record, cls_RecordStore::Field& field) {
    switch (field.kind) {
    case Kind::Integer:
      field.integer = in.Zigzag();
      break;
    case Kind::Double:
      field.real = in.Double();
      break;
    case Kind::Boolean:
      field.boolean = ReadBoolean();
      break;
    case Kind::String: {
      const auto [text, length] = in.Text();
      store.AddString(field, cow_String(text, length));
      break;
    }
    case Kind::Record:
    case Kind::Object:
      field.link = ReadChild(record, field.kind);
      break;
    case Kind::Reference:
      field.link = in.Varint32();
      references.push_back(field.link);
      break;
    case Kind::Null:
      field.link = in.Varint32();
      break;
    }
  }

  bool ReadBoolean() {
    const unsigned int value = in.Byte();
    if (value > 1) Refuse("A boolean in the bytes is neither true nor false", __LINE__);
    return value == 1;
  }

  /// A record follows the one that holds it: so nothing can hold itself.
  Index ReadChild(Index record, Kind kind) {
    const Index child = in.Varint32();
    if (child <= record || child >= recordCount) {
      Refuse("A field in the bytes holds no record after its own", __LINE__);
    }
    Claim(child, kind == Kind::Object ? Holder::SharedField : Holder::Field);
    return child;
  }

  void Claim(Index record, Holder holder) {
    if (holders[record] != Holder::None) {
      Refuse("A record in the bytes belongs to two places", __LINE__);
    }
    holders[record] = holder;
  }

  void CheckReferences() const {
    for (const Index target : references) {
      if (target >= recordCount || holders[target] != Holder::SharedField) {
        Refuse("A field in the bytes refers to no shared object", __LINE__);
      }
    }
  }

  Reader in;
  cls_RecordStore store;
  std::size_t recordCount = 0;
  std::vector<Holder> holders;
  std::vector<Index> references;
};

std::vector<unsigned char> cls_RecordStore::ToBytes() const {
  Writer body;
  NameTable used;
  std::size_t nextRoot = 0;
  body.Varint(records.size());
  for (Index i = 0; i < records.size(); ++i) {
    const bool isRoot = nextRoot < roots.size() && roots[nextRoot] == i;
    if (isRoot) ++nextRoot;
    WriteRecord(body, used, *this, i, isRoot);
  }
  Writer out;
  out.bytes.assign(std::begin(kHeader), std::end(kHeader));
  out.Varint(used.InOrder().size());
  for (const Index name : used.InOrder())
    out.Text(names[name].data(), names[name].size());
  out.bytes.insert(out.bytes.end(), body.bytes.begin(), body.bytes.end());
  return std::move(out.bytes);
}

cls_RecordStore cls_RecordStore::FromBytes(const unsigned char* bytes, std::size_t count) {
  return cls_RecordDecoder(bytes, count).Decode();
}
