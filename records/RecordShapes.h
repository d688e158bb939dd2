#ifndef RECORDS_RECORD_SHAPES_H
#define RECORDS_RECORD_SHAPES_H

#include "RecordTables.h"
#include "gsl_RecordField.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace gsl_records {

/// A field as the records of one shape have it, or the mark after the last field.
struct ShapeField {
  enum Mark : std::uint8_t {
    Entries = 0xFE, ///< the entries of a list follow
    End = 0xFF
  };

  std::string_view name;
  Number nameNumber;
  std::int32_t index;
  /// A gsl_RecordKind, of which Reference counts as Object; or a Mark.
  std::uint8_t kind;
};

/// The class and the fields of records that have the same fields in the same order.
struct Shape {
  std::uint32_t typeId;
  gsl_RecordCollection collection;
  std::uint32_t firstField;
  /// Whether a value or an entry may be a shared object.
  bool mayHaveObjects;
};

/// The shapes of a store, and the way to the shape of a record whose fields come one by one.
///
/// A node is a class and the fields so far. A field leads from a node to the next one; the field
/// that led on last is tried first.
class RecordShapes {
public:
  struct Sizes {
    Number nodes, shapes, fields, names;

    [[nodiscard]] bool operator==(const Sizes& o) const {
      return nodes == o.nodes && shapes == o.shapes && fields == o.fields && names == o.names;
    }
  };

  RecordShapes();
  RecordShapes(const RecordShapes&) = delete;
  RecordShapes& operator=(const RecordShapes&) = delete;

  /// The node of a record without fields.
  Number Start(std::uint32_t typeId, gsl_RecordCollection collection) {
    const Number recent = m_recentStarts[PlaceOfRecent(typeId, collection)];
    if (recent != kNone && m_nodes[recent].name == typeId &&
        m_nodes[recent].index == static_cast<std::int32_t>(collection)) {
      return recent;
    }
    return FindStart(typeId, collection);
  }
  /// The node after a field. Throws gsl_RecordError for an empty name.
  Number Next(Number node, const char* name, std::int32_t index, std::uint8_t kind) {
    const Number likely = m_nodes[node].likely;
    if (likely != kNone) {
      const Node& next = m_nodes[likely];
      if (next.kind == kind && next.index == index && AreEqual(next.characters, name)) {
        return likely;
      }
    }
    return FindNext(node, name, index, kind);
  }
  /// The node after a field whose name has that number.
  Number NextOfNumber(Number node, Number name, std::int32_t index, std::uint8_t kind) {
    const Number next = FindStep({node, name, index, kind}, m_names[name].data());
    m_nodes[node].likely = next;
    return next;
  }
  /// The node with the same fields as another collection.
  Number WithCollection(Number node, gsl_RecordCollection collection);

  /// The shape of a record that ends in a node.
  Number ShapeOf(Number node) {
    const Number shape = m_nodes[node].shape;
    return shape != kNone ? shape : AddShape(node);
  }

  const std::vector<Shape>& Shapes() const { return m_shapes; }
  const std::vector<ShapeField>& Fields() const { return m_fields; }
  TextTable& Names() { return m_names; }
  const TextTable& Names() const { return m_names; }

  Sizes Size() const;
  void Truncate(const Sizes& sizes);
  std::size_t BytesHeld() const;

private:
  static constexpr std::size_t kRecent = 64;
  static constexpr std::uint8_t kStart = 0xFF;

  struct Node {
    Number parent;
    /// The number of the name of the field that led here; the type id of a node without fields.
    Number name;
    /// The index of that field; the collection of a node without fields.
    std::int32_t index;
    std::uint8_t kind;
    Number likely;
    Number shape;
    const char* characters;
  };
  struct Step {
    Number parent, name;
    std::int32_t index;
    std::uint8_t kind;
    [[nodiscard]] bool operator==(const Step& o) const {
      return parent == o.parent && name == o.name && index == o.index && kind == o.kind;
    }
  };
  struct HashOfStep {
    std::size_t operator()(const Step& step) const;
  };

  /// Lists are often of one class, as plain records and then as collections. Classes of two modules
  /// differ in the upper bits of their type ids.
  static std::size_t PlaceOfRecent(std::uint32_t typeId, gsl_RecordCollection collection) {
    return ((typeId ^ typeId >> 12) + 5 * static_cast<std::uint32_t>(collection)) % kRecent;
  }

  /// Names are short, so that a call of a library would cost more than the comparison.
  [[nodiscard]] static bool AreEqual(const char* a, const char* b) {
    while (*a == *b && *a != '\0') {
      ++a;
      ++b;
    }
    return *a == *b;
  }

  Number FindStart(std::uint32_t typeId, gsl_RecordCollection collection);
  Number FindNext(Number node, const char* name, std::int32_t index, std::uint8_t kind);
  Number FindStep(const Step& step, const char* characters);
  Number AddShape(Number node);

  TextTable m_names;
  std::vector<Node> m_nodes;
  std::unordered_map<Step, Number, HashOfStep> m_steps;
  std::array<Number, kRecent> m_recentStarts;
  std::vector<Shape> m_shapes;
  std::vector<ShapeField> m_fields;
};

} // namespace gsl_records

#endif
