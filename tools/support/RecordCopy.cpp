#include "support/RecordCopy.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace gsl_tools {

namespace {

using Kind = gsl_RecordKind;
using Position = gsl_RecordReader::Position;

class Copy {
public:
  Copy(const gsl_RecordReader& from, gsl_RecordWriter& to) : m_from(from), m_to(to) {}

  void Root(std::size_t root) {
    const gsl_RecordIndex record = m_from.Root(root);
    const gsl_RecordReader::Header header = m_from.ReadHeader(record);
    const gsl_RecordIndex copy = m_to.AddRoot(header.typeId, header.identity);
    if (!m_from.RootName(root).empty()) m_to.NameRoot(m_from.RootName(root));
    Enter(record, header, copy);
    while (!m_open.empty())
      NextField();
    m_to.Finish();
  }

private:
  /// A record whose fields are being copied.
  struct Level {
    gsl_RecordIndex copy;
    Position next;
  };

  void Enter(gsl_RecordIndex record, const gsl_RecordReader::Header& header, gsl_RecordIndex copy) {
    const std::string_view name = m_from.ClassName(header.typeId);
    if (m_classes.insert(header.typeId).second && !name.empty()) {
      m_to.NameClass(header.typeId, name);
    }
    if (header.collection == gsl_RecordCollection::Unsigneds) {
      m_from.ReadUnsigneds(record, m_unsigneds);
      m_to.SetUnsigneds(copy, m_unsigneds.data(), m_unsigneds.size());
    } else if (header.collection == gsl_RecordCollection::Doubles) {
      std::size_t rows = 0;
      std::size_t columns = 0;
      m_from.ReadDoubles(record, m_doubles, rows, columns);
      m_to.SetDoubles(copy, m_doubles.data(), rows, columns);
    } else if (header.collection == gsl_RecordCollection::Objects) {
      m_to.SetCollection(copy, header.collection);
    }
    m_open.push_back({copy, header.firstField});
  }

  void NextField() {
    Level& level = m_open.back();
    if (level.next == gsl_RecordReader::kEnd) {
      m_open.pop_back();
      return;
    }
    gsl_RecordField field;
    level.next = m_from.ReadField(level.next, field);
    m_name = field.name;
    const gsl_RecordPlace place{field.name.empty() ? nullptr : m_name.c_str(), field.index};
    Add(field, level.copy, place);
  }

  void Add(const gsl_RecordField& field, gsl_RecordIndex owner, const gsl_RecordPlace& place) {
    switch (field.kind) {
    case Kind::Integer:
      return m_to.AddInteger(owner, place, field.integer);
    case Kind::Double:
      return m_to.AddDouble(owner, place, field.real);
    case Kind::Boolean:
      return m_to.AddBoolean(owner, place, field.boolean);
    case Kind::String:
      return m_to.AddString(owner, place, field.text);
    case Kind::Null:
      return m_to.AddNull(owner, place, field.link);
    case Kind::Record:
      static_cast<void>(AddRecord(field.link, owner, place, false));
      return;
    case Kind::Object:
    case Kind::Reference:
      return AddObject(field, owner, place);
    }
  }

  void AddObject(const gsl_RecordField& field, gsl_RecordIndex owner,
                 const gsl_RecordPlace& place) {
    const auto known = m_objects.find(field.object);
    if (known != m_objects.end()) return m_to.AddReference(owner, place, known->second);
    m_objects.emplace(field.object, AddRecord(field.link, owner, place, true));
  }

  gsl_RecordIndex AddRecord(gsl_RecordIndex record, gsl_RecordIndex owner,
                            const gsl_RecordPlace& place, bool isShared) {
    const gsl_RecordReader::Header header = m_from.ReadHeader(record);
    const gsl_RecordIndex copy =
        m_to.AddRecord(owner, place, isShared, header.typeId, header.identity);
    Enter(record, header, copy);
    return copy;
  }

  const gsl_RecordReader& m_from;
  gsl_RecordWriter& m_to;
  std::vector<Level> m_open;
  /// By the number of an object: its copy.
  std::unordered_map<std::uint32_t, gsl_RecordIndex> m_objects;
  std::unordered_set<std::uint32_t> m_classes;
  std::vector<std::uint32_t> m_unsigneds;
  std::vector<double> m_doubles;
  std::string m_name;
};

} // namespace

void CopyRecords(const gsl_RecordReader& from, gsl_RecordWriter& to) {
  Copy copy(from, to);
  for (std::size_t i = 0; i < from.RootCount(); ++i)
    copy.Root(i);
}

} // namespace gsl_tools
