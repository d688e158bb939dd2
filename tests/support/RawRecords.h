#ifndef TEST_SUPPORT_RAW_RECORDS_H
#define TEST_SUPPORT_RAW_RECORDS_H

#include "gsl_RecordStore.h"
#include "gsl_Version.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <vector>

// Records as plain data, which a test may change in any way, and an independent encoder of their
// byte form. So tests can make bytes that no writer would write.

struct RawField {
  /// The name is empty for an entry of a list.
  std::string name;
  int index = -1;
  gsl_RecordKind kind = gsl_RecordKind::Integer;
  int integer = 0;
  double real = 0.0;
  bool boolean = false;
  std::string text;
  /// The number of a record, or the type id of a null.
  std::uint32_t link = 0;
};

struct RawRecord {
  bool isRoot = false;
  std::uint32_t typeId = 0;
  std::uint64_t prefix = 0;
  std::uint64_t serial = 0;
  std::uint32_t collection = 0;
  std::vector<std::uint32_t> unsigneds;
  std::size_t rows = 0;
  std::size_t columns = 0;
  std::vector<double> doubles;
  std::vector<RawField> fields;
};

using RawRecords = std::vector<RawRecord>;

inline RawField RawCopy(const gsl_RecordField& field) {
  using Kind = gsl_RecordKind;
  RawField raw;
  raw.name = field.name;
  raw.index = field.index;
  raw.kind = field.kind;
  switch (field.kind) {
  case Kind::Integer:
    raw.integer = field.integer;
    break;
  case Kind::Double:
    raw.real = field.real;
    break;
  case Kind::Boolean:
    raw.boolean = field.boolean;
    break;
  case Kind::String:
    raw.text = field.text;
    break;
  default:
    raw.link = field.link;
    break;
  }
  return raw;
}

inline RawRecords RawCopy(const gsl_RecordStore& store) {
  RawRecords records(store.RecordCount());
  for (std::size_t i = 0; i < store.RootCount(); ++i)
    records[store.Root(i)].isRoot = true;
  for (std::uint32_t i = 0; i < records.size(); ++i) {
    RawRecord& raw = records[i];
    raw.typeId = store.TypeId(i);
    raw.prefix = store.Identity(i).prefix;
    raw.serial = store.Identity(i).serial;
    raw.collection = static_cast<std::uint32_t>(store.Collection(i));
    const auto unsigneds = store.Unsigneds(i);
    raw.unsigneds.assign(unsigneds.values, unsigneds.values + unsigneds.count);
    const auto doubles = store.Doubles(i);
    raw.rows = doubles.rows;
    raw.columns = doubles.columns;
    raw.doubles.assign(doubles.values, doubles.values + doubles.rows * doubles.columns);
    for (const gsl_RecordField& field : store.Fields(i))
      raw.fields.push_back(RawCopy(field));
  }
  return records;
}

/// Returns the checksum of the byte form, computed bit by bit.
inline std::uint32_t RawChecksum(const std::vector<unsigned char>& bytes) {
  std::uint32_t sum = 0xFFFFFFFFu;
  for (const unsigned char byte : bytes) {
    for (unsigned int bit = 0; bit < 8; ++bit) {
      const bool isOdd = ((sum ^ (byte >> bit)) & 1u) != 0;
      sum = (sum >> 1) ^ (isOdd ? 0x82F63B78u : 0u);
    }
  }
  return ~sum;
}

inline void AppendNumber(std::vector<unsigned char>& bytes, std::uint64_t value, int size) {
  for (int i = 0; i < size; ++i, value /= 256)
    bytes.push_back(static_cast<unsigned char>(value % 256));
}

/// Returns a body between its header and the checksums of its blocks.
inline std::vector<unsigned char> RawFrame(const std::vector<unsigned char>& body) {
  std::vector<unsigned char> bytes = {'g', 's', 'l', 'r', 2, 0, 0, 0};
  AppendNumber(bytes, body.size(), 8);
  AppendNumber(bytes, RawChecksum(bytes), 4);
  bytes.insert(bytes.end(), body.begin(), body.end());
  for (std::size_t begin = 0, number = 0; begin < body.size(); begin += 1048576, ++number) {
    std::vector<unsigned char> block;
    AppendNumber(block, number, 8);
    const std::size_t end = std::min<std::size_t>(begin + 1048576, body.size());
    block.insert(block.end(), body.begin() + static_cast<std::ptrdiff_t>(begin),
                 body.begin() + static_cast<std::ptrdiff_t>(end));
    AppendNumber(bytes, RawChecksum(block), 4);
  }
  return bytes;
}

/// Returns the byte form.
class RawEncoder {
public:
  std::vector<unsigned char> Encode(const RawRecords& records) {
    Number(records.size());
    for (const RawRecord& record : records)
      Add(record);
    const std::vector<unsigned char> body = std::move(bytes);
    bytes.clear();
    Text("gsl_geometry " + std::to_string(GSL_VERSION_MAJOR) + '.' +
         std::to_string(GSL_VERSION_MINOR) + '.' + std::to_string(GSL_VERSION_PATCH));
    Number(names.size());
    for (const std::string& name : names)
      Text(name);
    Number(prefixes.size());
    for (const std::uint64_t prefix : prefixes)
      Eight(prefix);
    bytes.insert(bytes.end(), body.begin(), body.end());
    return RawFrame(bytes);
  }

private:
  void Number(std::uint64_t value) {
    do {
      const auto low = static_cast<unsigned char>(value % 128);
      value /= 128;
      bytes.push_back(value != 0 ? static_cast<unsigned char>(low + 128) : low);
    } while (value != 0);
  }

  void Signed(std::int64_t value) {
    Number(value < 0 ? static_cast<std::uint64_t>(-2 * value - 1)
                     : static_cast<std::uint64_t>(2 * value));
  }

  void Eight(std::uint64_t value) {
    for (int i = 0; i < 8; ++i, value /= 256)
      bytes.push_back(static_cast<unsigned char>(value % 256));
  }

  void Real(double value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    Eight(bits);
  }

  void Text(const std::string& text) {
    Number(text.size());
    bytes.insert(bytes.end(), text.begin(), text.end());
  }

  void Name(const std::string& name) {
    if (name.empty()) return Number(0);
    const auto [place, isNew] = numberOf.emplace(name, names.size() + 1);
    if (isNew) names.push_back(name);
    Number(place->second);
  }

  void Identity(const RawRecord& record) {
    if (record.prefix == 0 && record.serial == 0) return Number(0);
    std::size_t place = 0;
    while (place < prefixes.size() && prefixes[place] != record.prefix)
      ++place;
    if (place == prefixes.size()) {
      prefixes.push_back(record.prefix);
      serials.push_back(0);
    }
    Number(place + 1);
    Step(record.serial - serials[place]);
    serials[place] = record.serial;
  }

  /// Returns a difference modulo 2^64 as the nearest signed number.
  void Step(std::uint64_t difference) {
    const bool isNegative = difference >= 0x8000000000000000u;
    Number(isNegative ? 2 * (0 - difference) - 1 : 2 * difference);
  }

  void Add(const RawField& field) {
    using Kind = gsl_RecordKind;
    Name(field.name);
    Signed(field.index);
    bytes.push_back(static_cast<unsigned char>(field.kind));
    switch (field.kind) {
    case Kind::Integer:
      return Signed(field.integer);
    case Kind::Double:
      return Real(field.real);
    case Kind::Boolean:
      return bytes.push_back(field.boolean ? 1 : 0);
    case Kind::String:
      return Text(field.text);
    default:
      return Number(field.link);
    }
  }

  void Add(const RawRecord& record) {
    bytes.push_back(record.isRoot ? 1 : 0);
    Number(record.typeId);
    Identity(record);
    Number(record.collection);
    if (record.collection == 57) {
      Number(record.unsigneds.size());
      for (const std::uint32_t value : record.unsigneds)
        Number(value);
    } else if (record.collection == 82) {
      Number(record.rows);
      Number(record.columns);
      for (const double value : record.doubles)
        Real(value);
    }
    Number(record.fields.size());
    for (const RawField& field : record.fields)
      Add(field);
  }

  std::vector<unsigned char> bytes;
  std::vector<std::string> names;
  std::vector<std::uint64_t> prefixes;
  std::vector<std::uint64_t> serials;
  std::map<std::string, std::size_t> numberOf;
};

inline std::vector<unsigned char> RawBytes(const RawRecords& records) {
  return RawEncoder().Encode(records);
}

#endif
