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
  /// The place of a record among the records, or a null's type id.
  std::uint32_t link = 0;
};

struct RawRecord {
  bool isRoot = false;
  /// Of a root; empty for a root without a name.
  std::string rootName;
  std::string className;
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

/// Each record before the records that it holds, and once for each place that holds it.
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

/// Copies what a reader has, depth first.
class RawCopier {
public:
  explicit RawCopier(const gsl_RecordReader& reader) : from(reader) {}

  RawRecords Copy() {
    for (std::size_t i = 0; i < from.RootCount(); ++i) {
      const std::size_t at = CopyRecord(from.Root(i));
      records[at].isRoot = true;
      records[at].rootName = from.RootName(i);
    }
    for (RawRecord& record : records) {
      for (RawField& field : record.fields) {
        if (field.kind == gsl_RecordKind::Reference) field.link = placeOfObject[field.link];
      }
    }
    return std::move(records);
  }

private:
  std::uint32_t CopyRecord(gsl_RecordIndex record) {
    const std::size_t at = records.size();
    RawRecord raw;
    raw.typeId = from.TypeId(record);
    raw.className = from.ClassName(raw.typeId);
    raw.prefix = from.Identity(record).prefix;
    raw.serial = from.Identity(record).serial;
    raw.collection = static_cast<std::uint32_t>(from.Collection(record));
    from.ReadUnsigneds(record, raw.unsigneds);
    from.ReadDoubles(record, raw.doubles, raw.rows, raw.columns);
    records.push_back(raw);
    for (const gsl_RecordField& field : from.Fields(record)) {
      RawField copy = RawCopy(field);
      if (field.kind == gsl_RecordKind::Record || field.kind == gsl_RecordKind::Object) {
        copy.link = CopyRecord(field.link);
      }
      if (field.kind == gsl_RecordKind::Object) placeOfObject[field.object] = copy.link;
      if (field.kind == gsl_RecordKind::Reference) copy.link = field.object;
      records[at].fields.push_back(copy);
    }
    return static_cast<std::uint32_t>(at);
  }

  const gsl_RecordReader& from;
  RawRecords records;
  std::map<std::uint32_t, std::uint32_t> placeOfObject;
};

inline RawRecords RawCopy(const gsl_RecordReader& reader) {
  return RawCopier(reader).Copy();
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

/// Texts or numbers by the order of their first use.
template <class T>
struct RawTable {
  std::size_t NumberOf(const T& item) {
    const auto [place, isNew] = numbers.emplace(item, items.size());
    if (isNew) items.push_back(item);
    return place->second;
  }

  std::vector<T> items;
  std::map<T, std::size_t> numbers;
};

struct RawBuffer {
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

  void Append(const std::vector<unsigned char>& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
  }

  std::vector<unsigned char> bytes;
};

/// The byte form. A link that no writer could write, as to a record that holds the field, leads
/// nowhere.
class RawEncoder {
public:
  explicit RawEncoder(const RawRecords& all)
      : records(all), numbers(all.size(), kNowhere), objects(all.size(), kNowhere) {}

  std::vector<unsigned char> Encode() {
    NumberObjects();
    RawBuffer roots;
    std::vector<bool> seen(records.size(), false);
    std::size_t rootCount = 0;
    for (std::size_t i = 0; i < records.size(); ++i) {
      if (!records[i].isRoot) continue;
      ++rootCount;
      Walk(
          i, seen,
          [&](const RawField& field, const RawRecord& record) {
            if (!IsEntry(field, record)) names.NumberOf(field.name);
            if (field.kind == Kind::String) texts.NumberOf(field.text);
          },
          [&](std::size_t place) { Add(place); });
      roots.Text(records[i].rootName);
      roots.Number(numbers[i]);
    }
    RawBuffer body;
    AppendTables(body);
    body.Number(objectOrder.size());
    for (const std::size_t place : objectOrder)
      body.Number(numbers[place]);
    body.Number(rootCount);
    body.Append(roots.bytes);
    body.Number(count);
    body.Append(stream.bytes);
    return RawFrame(body.bytes);
  }

private:
  using Kind = gsl_RecordKind;
  static constexpr std::uint64_t kNowhere = 0xFFFFFFFFu;

  static bool IsEntry(const RawField& field, const RawRecord& record) {
    return field.name.empty() && record.collection == 1;
  }

  /// Visits the records of a root, as deep as they are: `onField` each field before what it holds,
  /// `onEnd` each record after what it holds.
  template <class OnField, class OnEnd>
  void Walk(std::size_t root, std::vector<bool>& seen, const OnField& onField, const OnEnd& onEnd) {
    std::vector<std::pair<std::size_t, std::size_t>> open = {{root, 0}};
    seen[root] = true;
    while (!open.empty()) {
      const std::size_t place = open.back().first;
      const RawRecord& record = records[place];
      if (open.back().second == record.fields.size()) {
        onEnd(place);
        open.pop_back();
        continue;
      }
      const RawField& field = record.fields[open.back().second++];
      onField(field, record);
      const bool holds = field.kind == Kind::Record || field.kind == Kind::Object;
      if (!holds || field.link >= records.size() || seen[field.link]) continue;
      seen[field.link] = true;
      open.emplace_back(field.link, 0);
    }
  }

  void NumberObjects() {
    std::vector<bool> seen(records.size(), false);
    const auto number = [&](const RawField& field, const RawRecord&) {
      if (field.kind != Kind::Object || field.link >= records.size()) return;
      if (objects[field.link] != kNowhere) return;
      objects[field.link] = objectOrder.size();
      objectOrder.push_back(field.link);
    };
    for (std::size_t i = 0; i < records.size(); ++i) {
      if (records[i].isRoot) Walk(i, seen, number, [](std::size_t) {});
    }
  }

  void AppendTables(RawBuffer& body) const {
    body.Text("gsl_geometry " + std::to_string(GSL_VERSION_MAJOR) + '.' +
              std::to_string(GSL_VERSION_MINOR) + '.' + std::to_string(GSL_VERSION_PATCH));
    const auto appendTexts = [&](const RawTable<std::string>& table) {
      body.Number(table.items.size());
      for (const std::string& text : table.items)
        body.Text(text);
    };
    appendTexts(names);
    body.Number(classes.items.size());
    for (const std::uint32_t typeId : classes.items) {
      body.Number(typeId);
      body.Text(classNames.at(typeId));
    }
    appendTexts(texts);
    body.Number(prefixes.items.size());
    for (const std::uint64_t prefix : prefixes.items)
      body.Eight(prefix);
    body.Number(shapes.items.size());
    for (const std::vector<unsigned char>& shape : shapes.items)
      body.Append(shape);
  }

  static int KindIn(const RawField& field) {
    return static_cast<int>(field.kind == Kind::Reference ? Kind::Object : field.kind);
  }

  std::uint64_t LinkOf(const RawField& field) {
    const bool leads = field.link < records.size();
    switch (field.kind) {
    case Kind::Record:
      return leads ? numbers[field.link] : kNowhere;
    case Kind::Object:
      return leads ? 2 * objects[field.link] : kNowhere;
    case Kind::Reference:
      return leads ? 2 * objects[field.link] + 1 : kNowhere;
    default:
      return field.link;
    }
  }

  void AddValue(RawBuffer& out, const RawField& field) {
    switch (field.kind) {
    case Kind::Integer:
      return out.Signed(field.integer);
    case Kind::Double:
      return out.Real(field.real);
    case Kind::Boolean:
      return out.bytes.push_back(field.boolean ? 1 : 0);
    case Kind::String:
      return out.Number(texts.NumberOf(field.text));
    default:
      return out.Number(LinkOf(field));
    }
  }

  static void AddElements(RawBuffer& out, const RawRecord& record) {
    if (record.collection == 57) {
      out.Number(record.unsigneds.size());
      for (const std::uint32_t value : record.unsigneds)
        out.Number(value);
    } else if (record.collection == 82) {
      out.Number(record.rows);
      out.Number(record.columns);
      for (const double value : record.doubles)
        out.Real(value);
    }
  }

  /// Writes the record at a place, unless an equal one is there. What it holds was written.
  void Add(std::size_t place) {
    const RawRecord& record = records[place];
    RawBuffer values, entries, shapeFields;
    std::size_t fieldCount = 0;
    bool owns = false;
    for (const RawField& field : record.fields) {
      owns = owns || field.kind == Kind::Object;
      const bool isEntry = IsEntry(field, record);
      if (isEntry) {
        entries.bytes.push_back(static_cast<unsigned char>(KindIn(field)));
      } else {
        ++fieldCount;
        shapeFields.Number(names.NumberOf(field.name));
        shapeFields.Signed(field.index);
        shapeFields.bytes.push_back(static_cast<unsigned char>(KindIn(field)));
      }
      AddValue(isEntry ? entries : values, field);
    }
    if (record.collection == 1) entries.bytes.push_back(0xFF);
    RawBuffer shape;
    shape.Number(classes.NumberOf(record.typeId));
    shape.Number(record.collection);
    shape.Number(fieldCount);
    shape.Append(shapeFields.bytes);
    classNames[record.typeId] = record.className;
    RawBuffer out;
    out.Number(shapes.NumberOf(shape.bytes));
    if (record.prefix == 0 && record.serial == 0) {
      out.Number(0);
    } else {
      out.Number(prefixes.NumberOf(record.prefix) + 1);
      out.Number(record.serial);
    }
    out.Append(values.bytes);
    out.Append(entries.bytes);
    AddElements(out, record);
    numbers[place] = Store(out.bytes, owns);
  }

  std::uint64_t Store(const std::vector<unsigned char>& record, bool owns) {
    if (!owns) {
      const auto [place, isNew] = stored.emplace(record, count);
      if (!isNew) return place->second;
    }
    stream.Append(record);
    return count++;
  }

  const RawRecords& records;
  std::vector<std::uint64_t> numbers;
  std::vector<std::uint64_t> objects;
  std::vector<std::size_t> objectOrder;
  RawTable<std::string> names, texts;
  RawTable<std::uint32_t> classes;
  std::map<std::uint32_t, std::string> classNames;
  RawTable<std::uint64_t> prefixes;
  RawTable<std::vector<unsigned char>> shapes;
  std::map<std::vector<unsigned char>, std::uint64_t> stored;
  RawBuffer stream;
  std::uint64_t count = 0;
};

inline std::vector<unsigned char> RawBytes(const RawRecords& records) {
  return RawEncoder(records).Encode();
}

#endif
