#include "TableChecksum.h"

#include <algorithm>
#include <cstddef>

namespace gsl_model {

namespace {

using Kind = gsl_RecordKind;

bool IsLink(Kind kind) {
  return kind == Kind::Record || kind == Kind::Object || kind == Kind::Reference;
}

void AddValue(const RecordTable& table, const RecordTable::Field& field,
              const std::vector<std::int64_t>& ids, Checksum& sum) {
  switch (field.kind) {
  case Kind::Integer:
    return sum.Add(static_cast<std::uint64_t>(std::int64_t{field.integer}));
  case Kind::Double:
    return sum.AddDouble(field.real);
  case Kind::Boolean:
    return sum.Add(field.boolean ? 1 : 0);
  case Kind::String:
    return sum.AddText(table.Text(field.text));
  case Kind::Null:
    return sum.Add(field.link);
  default:
    return sum.Add(static_cast<std::uint64_t>(ids[field.link]));
  }
}

void AddField(const RecordTable& table, const RecordTable::Field& field,
              const std::vector<std::int64_t>& ids, Checksum& sum) {
  // The field that holds an object and the fields that refer to it are stored alike.
  const Kind kind = field.kind == Kind::Reference ? Kind::Object : field.kind;
  sum.Add(static_cast<std::uint64_t>(kind));
  if (field.name == kNone) {
    sum.AddText({});
  } else {
    const FieldName& name = table.Names()[field.name];
    sum.AddText(name.name);
    sum.Add(static_cast<std::uint64_t>(std::int64_t{name.number}));
  }
  AddValue(table, field, ids, sum);
}

void AddElements(const Elements& elements, Checksum& sum) {
  sum.Add(elements.unsigneds.size());
  for (const std::uint32_t value : elements.unsigneds)
    sum.Add(value);
  sum.Add(elements.rows);
  sum.Add(elements.columns);
  for (const double value : elements.doubles)
    sum.AddDouble(value);
}

} // namespace

ReachedRecords::ReachedRecords(const RecordTable& table)
    : m_table(table), m_visits(table.Records().size(), 0) {}

const std::vector<Number>& ReachedRecords::From(Number root) {
  ++m_call;
  m_reached.clear();
  m_waiting.assign(1, root);
  while (!m_waiting.empty()) {
    const Number record = m_waiting.back();
    m_waiting.pop_back();
    if (m_visits[record] == m_call) continue;
    m_visits[record] = m_call;
    m_reached.push_back(record);
    // The links of the record are visited next, the first one first.
    const auto begin = static_cast<std::ptrdiff_t>(m_waiting.size());
    const std::vector<RecordTable::Field>& fields = m_table.AllFields();
    for (Number i = m_table.Records()[record].firstField; i != kNone; i = fields[i].next) {
      if (IsLink(fields[i].kind)) m_waiting.push_back(fields[i].link);
    }
    std::reverse(m_waiting.begin() + begin, m_waiting.end());
  }
  return m_reached;
}

Checksum ChecksumOf(const RecordTable& table, const std::vector<Number>& reached,
                    const std::vector<std::int64_t>& ids) {
  Checksum sum;
  const std::vector<RecordTable::Field>& fields = table.AllFields();
  for (const Number number : reached) {
    const RecordTable::Record& record = table.Records()[number];
    sum.Add(static_cast<std::uint64_t>(ids[number]));
    sum.Add(record.typeId);
    sum.Add(record.identity.prefix);
    sum.Add(record.identity.serial);
    sum.Add(static_cast<std::uint64_t>(record.collection));
    std::uint64_t count = 0;
    for (Number i = record.firstField; i != kNone; i = fields[i].next) {
      AddField(table, fields[i], ids, sum);
      ++count;
    }
    sum.Add(count);
    if (HasElements(record.collection)) AddElements(table.ElementsOf(record), sum);
  }
  return sum;
}

std::uint64_t ChecksumOfClass(std::uint32_t typeId, std::string_view name) {
  Checksum sum;
  sum.Add(typeId);
  sum.AddText(name);
  return sum.Sum();
}

} // namespace gsl_model
