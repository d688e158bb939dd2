#include "RecordShapes.h"

#include "gsl_RecordError.h"

#include <algorithm>

namespace gsl_records {

namespace {

/// A position in a store has 24 bits for a field, of which the highest number marks entries.
constexpr std::size_t kMostFields = (std::size_t{1} << 24) - 1;

} // namespace

RecordShapes::RecordShapes() {
  m_recentStarts.fill(kNone);
}

std::size_t RecordShapes::HashOfStep::operator()(const Step& step) const {
  std::uint64_t mixed = (std::uint64_t{step.parent} << 32) ^ step.name;
  mixed = (mixed ^ (mixed >> 29)) * 0x9E3779B97F4A7C15u;
  mixed ^= (static_cast<std::uint64_t>(static_cast<std::uint32_t>(step.index)) << 8) ^ step.kind;
  return static_cast<std::size_t>((mixed ^ (mixed >> 31)) * 0xBF58476D1CE4E5B9u);
}

Number RecordShapes::FindStart(std::uint32_t typeId, gsl_RecordCollection collection) {
  const Number node = FindStep({kNone, typeId, static_cast<std::int32_t>(collection), kStart}, "");
  m_recentStarts[PlaceOfRecent(typeId, collection)] = node;
  return node;
}

Number RecordShapes::FindNext(Number node, const char* name, std::int32_t index,
                              std::uint8_t kind) {
  // An entry of a list has none, so that an empty name would read as an entry.
  if (*name == '\0') throw gsl_RecordError("A field of a record must have a name");
  return NextOfNumber(node, m_names.NumberOf(name), index, kind);
}

Number RecordShapes::FindStep(const Step& step, const char* characters) {
  const auto found = m_steps.find(step);
  if (found != m_steps.end()) return found->second;
  const Number node = Counted(m_nodes.size());
  m_nodes.push_back({step.parent, step.name, step.index, step.kind, kNone, kNone, characters});
  try {
    m_steps.emplace(step, node);
  } catch (...) {
    m_nodes.pop_back();
    throw;
  }
  return node;
}

Number RecordShapes::WithCollection(Number node, gsl_RecordCollection collection) {
  std::vector<Number> path;
  for (; m_nodes[node].kind != kStart; node = m_nodes[node].parent)
    path.push_back(node);
  Number changed = Start(m_nodes[node].name, collection);
  for (std::size_t i = path.size(); i-- > 0;) {
    const Node& step = m_nodes[path[i]];
    changed = FindStep({changed, step.name, step.index, step.kind}, step.characters);
  }
  return changed;
}

Number RecordShapes::AddShape(Number node) {
  const Number shape = Counted(m_shapes.size());
  const std::size_t first = m_fields.size();
  bool mayHaveObjects = false;
  Number at = node;
  for (; m_nodes[at].kind != kStart; at = m_nodes[at].parent) {
    const Node& n = m_nodes[at];
    mayHaveObjects = mayHaveObjects || n.kind == static_cast<std::uint8_t>(gsl_RecordKind::Object);
    m_fields.push_back({m_names[n.name], n.name, n.index, n.kind});
  }
  std::reverse(m_fields.begin() + static_cast<std::ptrdiff_t>(first), m_fields.end());
  const auto collection = static_cast<gsl_RecordCollection>(m_nodes[at].index);
  const bool isList = collection == gsl_RecordCollection::Objects;
  m_fields.push_back({{}, kNone, -1, isList ? ShapeField::Entries : ShapeField::End});
  if (m_fields.size() > kMostFields) {
    m_fields.resize(first);
    throw gsl_RecordError("The record store is full: its classes have at most 16777214 fields");
  }
  m_shapes.push_back(
      {m_nodes[at].name, collection, static_cast<std::uint32_t>(first), mayHaveObjects || isList});
  m_nodes[node].shape = shape;
  return shape;
}

RecordShapes::Sizes RecordShapes::Size() const {
  return {static_cast<Number>(m_nodes.size()), static_cast<Number>(m_shapes.size()),
          static_cast<Number>(m_fields.size()), m_names.Size()};
}

void RecordShapes::Truncate(const Sizes& sizes) {
  m_names.Truncate(sizes.names);
  m_shapes.resize(std::min<std::size_t>(sizes.shapes, m_shapes.size()));
  m_fields.resize(std::min<std::size_t>(sizes.fields, m_fields.size()));
  if (sizes.nodes < m_nodes.size()) {
    for (auto step = m_steps.begin(); step != m_steps.end();)
      step = step->second >= sizes.nodes ? m_steps.erase(step) : std::next(step);
    m_nodes.resize(sizes.nodes);
    m_recentStarts.fill(kNone);
  }
  for (Node& node : m_nodes) {
    if (node.likely >= sizes.nodes) node.likely = kNone;
    if (node.shape >= sizes.shapes) node.shape = kNone;
  }
}

std::size_t RecordShapes::BytesHeld() const {
  return m_names.BytesHeld() + m_nodes.capacity() * sizeof(Node) +
         m_steps.size() * (sizeof(Step) + sizeof(Number) + 3 * sizeof(void*)) +
         m_shapes.capacity() * sizeof(Shape) + m_fields.capacity() * sizeof(ShapeField);
}

} // namespace gsl_records
