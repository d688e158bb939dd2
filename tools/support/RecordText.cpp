#include "support/RecordText.h"

#include "Printable.h"
#include "support/VectorText.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace gsl_tools {

namespace {

using Kind = gsl_RecordKind;

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return gsl_mesh::Printable(quoted + '"');
}

/// "gsl_Point 0123456789abcdef:7".
std::string RecordLabel(const gsl_RecordReader& records, gsl_RecordIndex record) {
  const gsl_RecordIdentity identity = records.Identity(record);
  const std::string name = ClassText(records, records.TypeId(record));
  return identity == gsl_RecordIdentity() ? name : name + ' ' + IdentityText(identity);
}

std::string Counted(std::size_t count, const std::string& what) {
  return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

class Shower {
public:
  Shower(const gsl_RecordReader& records, TextPortions& out) : m_records(records), m_out(out) {}

  void Record(gsl_RecordIndex record, std::size_t indent) {
    const std::string elements = ElementsText(m_records, record);
    if (!elements.empty()) Line(indent, elements);
    std::size_t entry = 0;
    for (const gsl_RecordField& field : m_records.Fields(record)) {
      const std::string name = field.name.empty() ? '[' + std::to_string(entry++) + ']'
                                                  : gsl_mesh::Printable(std::string(field.name));
      Line(indent, name + ": " + ValueText(m_records, field));
      const bool holds = field.kind == Kind::Record || field.kind == Kind::Object;
      if (holds) Record(field.link, indent + 1);
    }
  }

  void Line(std::size_t indent, const std::string& text) {
    m_out.Add(std::string(2 * indent, ' ') + text + '\n');
  }

private:
  const gsl_RecordReader& m_records;
  TextPortions& m_out;
};

} // namespace

std::string TypeIdText(std::uint32_t typeId) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned int>(typeId));
  return text;
}

std::string ClassText(const gsl_RecordReader& records, std::uint32_t typeId) {
  const std::string_view name = records.ClassName(typeId);
  return name.empty() ? TypeIdText(typeId) : gsl_mesh::Printable(std::string(name));
}

std::string IdentityText(const gsl_RecordIdentity& identity) {
  if (identity == gsl_RecordIdentity()) return "null";
  char text[48];
  std::snprintf(text, sizeof text, "%016llx:%llu", static_cast<unsigned long long>(identity.prefix),
                static_cast<unsigned long long>(identity.serial));
  return text;
}

std::string BitsText(double value) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  char text[24];
  std::snprintf(text, sizeof text, "0x%016llx", static_cast<unsigned long long>(bits));
  return text;
}

bool NeedsBits(double value) {
  return !std::isfinite(value) || (value == 0.0 && std::signbit(value));
}

std::string RealText(double value) {
  return std::isnan(value) ? "nan " + BitsText(value) : NumberText(value);
}

std::string ValueText(const gsl_RecordReader& records, const gsl_RecordField& field) {
  switch (field.kind) {
  case Kind::Integer:
    return std::to_string(field.integer);
  case Kind::Double:
    return RealText(field.real);
  case Kind::Boolean:
    return field.boolean ? "true" : "false";
  case Kind::String:
    return Quoted(field.text);
  case Kind::Record:
    return RecordLabel(records, field.link);
  case Kind::Object:
    return "object " + std::to_string(field.object) + ", " + RecordLabel(records, field.link);
  case Kind::Reference:
    return "reference to object " + std::to_string(field.object) + ", " +
           RecordLabel(records, field.link);
  case Kind::Null:
    return "null of " + ClassText(records, field.link);
  }
  return {};
}

std::string ElementsText(const gsl_RecordReader& records, gsl_RecordIndex record) {
  std::string text;
  if (records.Collection(record) == gsl_RecordCollection::Unsigneds) {
    std::vector<std::uint32_t> values;
    records.ReadUnsigneds(record, values);
    text = Counted(values.size(), "unsigned integer");
    for (std::size_t i = 0; i < values.size(); ++i)
      text += (i == 0 ? ": " : " ") + std::to_string(values[i]);
  } else if (records.Collection(record) == gsl_RecordCollection::Doubles) {
    std::vector<double> values;
    std::size_t rows = 0;
    std::size_t columns = 0;
    records.ReadDoubles(record, values, rows, columns);
    text = std::to_string(rows) + " by " + std::to_string(columns) + " doubles";
    for (std::size_t i = 0; i < values.size(); ++i)
      text += (i == 0 ? ": " : i % columns == 0 ? "; " : " ") + RealText(values[i]);
  }
  return text;
}

std::string RootText(const gsl_RecordReader& records, std::size_t root) {
  const std::string name(records.RootName(root));
  if (name.empty()) return "root " + std::to_string(root);
  const bool isPlain = name.find_first_of(" \t\"'\\/:") == std::string::npos;
  return isPlain ? gsl_mesh::Printable(name) : Quoted(name);
}

std::string ListAsText(const gsl_RecordStore& records) {
  const std::size_t count = records.RootCount();
  std::vector<std::string> names;
  std::size_t width = 0;
  for (std::size_t i = 0; i < count; ++i) {
    names.push_back(RootText(records, i));
    width = std::max(width, names.back().size());
  }
  std::string text =
      Counted(count, "root") + ", " + Counted(records.RecordCount(), "record") + '\n';
  for (std::size_t i = 0; i < count; ++i) {
    names[i].resize(width, ' ');
    text += names[i] + "  " + RecordLabel(records, records.Root(i)) + '\n';
  }
  return text;
}

void ShowAsText(const gsl_RecordReader& records, std::size_t root, TextPortions& out) {
  Shower shower(records, out);
  shower.Line(0, RootText(records, root) + ": " + RecordLabel(records, records.Root(root)));
  shower.Record(records.Root(root), 1);
  out.Finish();
}

} // namespace gsl_tools
