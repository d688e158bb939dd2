#include "support/RecordJson.h"

#include "support/VectorText.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <string_view>
#include <vector>

namespace gsl_tools {

namespace {

using Kind = gsl_RecordKind;
using Json = nlohmann::ordered_json;

std::string JsonOf(std::string_view text) {
  return Json(std::string(text)).dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string JsonOf(double value) {
  return NeedsBits(value) ? "{\"bits\": \"" + BitsText(value) + "\"}" : NumberText(value);
}

std::string JsonOf(const gsl_RecordIdentity& identity) {
  return identity == gsl_RecordIdentity() ? "null" : JsonOf(IdentityText(identity));
}

const char* NameOf(Kind kind) {
  constexpr const char* kNames[] = {"integer", "double", "boolean",   "string",
                                    "record",  "object", "reference", "null"};
  return kNames[static_cast<std::size_t>(kind)];
}

/// "class": ..., "type_id": ...
std::string ClassKeys(const gsl_RecordReader& records, std::uint32_t typeId) {
  const std::string_view name = records.ClassName(typeId);
  return "\"class\": " + (name.empty() ? "null" : JsonOf(name)) + ", \"type_id\": \"" +
         TypeIdText(typeId) + '"';
}

std::string RecordKeys(const gsl_RecordReader& records, gsl_RecordIndex record) {
  return ClassKeys(records, records.TypeId(record)) +
         ", \"identity\": " + JsonOf(records.Identity(record));
}

std::string RootKeys(const gsl_RecordReader& records, std::size_t root) {
  const std::string_view name = records.RootName(root);
  return "\"number\": " + std::to_string(root) +
         ", \"name\": " + (name.empty() ? "null" : JsonOf(name));
}

/// The keys with which every document begins.
std::string DocumentKeys(const std::string& file) {
  return "{\n  \"schema_version\": 1,\n  \"tool_version\": " +
         JsonOf(std::string_view(GSL_VERSION)) +
         ",\n  \"file\": " + JsonOf(std::string_view(file)) + ",\n";
}

/// Numbers, with commas between them.
template <class Numbers, class Text>
std::string ArrayOf(const Numbers& numbers, const Text& text) {
  std::string array = "[";
  for (std::size_t i = 0; i < numbers.size(); ++i)
    array += (i == 0 ? "" : ", ") + text(numbers[i]);
  return array + ']';
}

class RecordWriter {
public:
  RecordWriter(const gsl_RecordReader& records, TextPortions& out)
      : m_records(records), m_out(out) {}

  void Record(gsl_RecordIndex record, std::size_t indent) {
    const gsl_RecordCollection collection = m_records.Collection(record);
    m_out.Add('{' + RecordKeys(m_records, record));
    Fields(record, indent + 1, "fields", false);
    if (collection == gsl_RecordCollection::Objects) Fields(record, indent + 1, "entries", true);
    if (collection == gsl_RecordCollection::Unsigneds) Unsigneds(record, indent + 1);
    if (collection == gsl_RecordCollection::Doubles) Doubles(record, indent + 1);
    m_out.Add("}");
  }

private:
  static std::string NewLine(std::size_t indent) { return '\n' + std::string(2 * indent, ' '); }

  void Key(const std::string& key, std::size_t indent) {
    m_out.Add("," + NewLine(indent) + '"' + key + "\": ");
  }

  /// Writes the named fields, or the entries of a list.
  void Fields(gsl_RecordIndex record, std::size_t indent, const std::string& key, bool areEntries) {
    Key(key, indent);
    m_out.Add("[");
    std::string before;
    for (const gsl_RecordField& field : m_records.Fields(record)) {
      if (field.name.empty() != areEntries) continue;
      m_out.Add(before + NewLine(indent + 1) + '{');
      before = ",";
      if (!areEntries) {
        m_out.Add("\"name\": " + JsonOf(field.name) +
                  ", \"index\": " + std::to_string(field.index) + ", ");
      }
      Value(field, indent + 1);
      m_out.Add("}");
    }
    m_out.Add("]");
  }

  void Value(const gsl_RecordField& field, std::size_t indent) {
    m_out.Add(std::string("\"kind\": \"") + NameOf(field.kind) + '"');
    switch (field.kind) {
    case Kind::Integer:
      return m_out.Add(", \"value\": " + std::to_string(field.integer));
    case Kind::Double:
      return m_out.Add(", \"value\": " + JsonOf(field.real));
    case Kind::Boolean:
      return m_out.Add(field.boolean ? ", \"value\": true" : ", \"value\": false");
    case Kind::String:
      return m_out.Add(", \"value\": " + JsonOf(field.text));
    case Kind::Null:
      return m_out.Add(", " + ClassKeys(m_records, field.link));
    case Kind::Reference:
      return m_out.Add(", \"object\": " + std::to_string(field.object) + ", " +
                       RecordKeys(m_records, field.link));
    case Kind::Object:
      m_out.Add(", \"object\": " + std::to_string(field.object));
      break;
    case Kind::Record:
      break;
    }
    m_out.Add(", \"record\": ");
    Record(field.link, indent);
  }

  void Unsigneds(gsl_RecordIndex record, std::size_t indent) {
    std::vector<std::uint32_t> values;
    m_records.ReadUnsigneds(record, values);
    Key("unsigneds", indent);
    m_out.Add(ArrayOf(values, [](std::uint32_t value) { return std::to_string(value); }));
  }

  void Doubles(gsl_RecordIndex record, std::size_t indent) {
    std::vector<double> values;
    std::size_t rows = 0;
    std::size_t columns = 0;
    m_records.ReadDoubles(record, values, rows, columns);
    Key("rows", indent);
    m_out.Add(std::to_string(rows) + ", \"columns\": " + std::to_string(columns));
    Key("doubles", indent);
    m_out.Add(ArrayOf(values, [](double value) { return JsonOf(value); }));
  }

  const gsl_RecordReader& m_records;
  TextPortions& m_out;
};

} // namespace

void ListAsJson(const gsl_RecordStore& records, const std::string& file, TextPortions& out) {
  out.Add(DocumentKeys(file) + "  \"records\": " + std::to_string(records.RecordCount()) +
          ",\n  \"roots\": [");
  for (std::size_t i = 0; i < records.RootCount(); ++i) {
    out.Add((i == 0 ? "\n    {" : ",\n    {") + RootKeys(records, i) + ", " +
            RecordKeys(records, records.Root(i)) + '}');
  }
  out.Add("]\n}\n");
  out.Finish();
}

void ShowAsJson(const gsl_RecordReader& records, std::size_t root, const std::string& file,
                TextPortions& out) {
  out.Add(DocumentKeys(file) + "  \"root\": {" + RootKeys(records, root) + "},\n  \"record\": ");
  RecordWriter(records, out).Record(records.Root(root), 1);
  out.Add("\n}\n");
  out.Finish();
}

} // namespace gsl_tools
