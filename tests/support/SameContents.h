#ifndef SAME_CONTENTS_H
#define SAME_CONTENTS_H

#include "Records.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

/// Compares what two readers have, whatever numbers their records have: roots, names, classes,
/// identities, fields in their order, values bit for bit, and which fields share an object.
class ContentsComparison {
public:
  /// Which of the fields that share an object holds it, and which refer to it.
  enum class Holders { Same, Any };

  ContentsComparison(const gsl_RecordReader& a, const gsl_RecordReader& b, Holders holders)
      : m_a(a), m_b(b), m_holders(holders) {}

  [[nodiscard]] bool AreSame() {
    if (m_a.RootCount() != m_b.RootCount()) return false;
    for (std::size_t i = 0; i < m_a.RootCount(); ++i) {
      if (m_a.RootName(i) != m_b.RootName(i)) return false;
      m_waiting.emplace_back(m_a.Root(i), m_b.Root(i));
      while (!m_waiting.empty()) {
        const auto [a, b] = m_waiting.back();
        m_waiting.pop_back();
        if (!SameRecord(a, b)) return false;
      }
    }
    return std::all_of(m_references.begin(), m_references.end(), [&](const auto& reference) {
      const auto found = m_inB.find(reference.first);
      return found != m_inB.end() && found->second == reference.second;
    });
  }

private:
  [[nodiscard]] bool SameRecord(gsl_RecordIndex a, gsl_RecordIndex b) {
    const gsl_RecordReader::Header first = m_a.ReadHeader(a);
    const gsl_RecordReader::Header second = m_b.ReadHeader(b);
    if (first.typeId != second.typeId || first.collection != second.collection ||
        first.identity != second.identity ||
        m_a.ClassName(first.typeId) != m_b.ClassName(first.typeId) || !SameElements(a, b)) {
      return false;
    }
    const auto begin = static_cast<std::ptrdiff_t>(m_waiting.size());
    gsl_RecordReader::Position i = first.firstField;
    gsl_RecordReader::Position j = second.firstField;
    gsl_RecordField f;
    gsl_RecordField g;
    while (i != gsl_RecordReader::kEnd && j != gsl_RecordReader::kEnd) {
      i = m_a.ReadField(i, f);
      j = m_b.ReadField(j, g);
      if (!SameField(f, g)) return false;
    }
    std::reverse(m_waiting.begin() + begin, m_waiting.end());
    return i == j;
  }

  [[nodiscard]] bool SameElements(gsl_RecordIndex a, gsl_RecordIndex b) const {
    std::vector<std::uint32_t> u, v;
    m_a.ReadUnsigneds(a, u);
    m_b.ReadUnsigneds(b, v);
    std::vector<double> d, e;
    std::size_t rows[2] = {};
    std::size_t columns[2] = {};
    m_a.ReadDoubles(a, d, rows[0], columns[0]);
    m_b.ReadDoubles(b, e, rows[1], columns[1]);
    return u == v && rows[0] == rows[1] && columns[0] == columns[1] &&
           std::equal(d.begin(), d.end(), e.begin(), e.end(), SameBits);
  }

  [[nodiscard]] static bool IsShared(const gsl_RecordField& field) {
    return field.kind == gsl_RecordKind::Object || field.kind == gsl_RecordKind::Reference;
  }

  /// Whether the objects are those that were seen together before, or both are new.
  [[nodiscard]] bool SameObject(const gsl_RecordField& f, const gsl_RecordField& g) {
    const auto [inB, isNew] = m_inB.emplace(f.object, g.object);
    const auto [inA, isNewToo] = m_inA.emplace(g.object, f.object);
    if (isNew && isNewToo) m_waiting.emplace_back(f.link, g.link);
    return isNew == isNewToo && inB->second == g.object && inA->second == f.object;
  }

  [[nodiscard]] bool SameField(const gsl_RecordField& f, const gsl_RecordField& g) {
    if (f.name != g.name || f.index != g.index) return false;
    if (m_holders == Holders::Any && IsShared(f) && IsShared(g)) return SameObject(f, g);
    if (f.kind != g.kind) return false;
    switch (f.kind) {
    case gsl_RecordKind::Integer:
      return f.integer == g.integer;
    case gsl_RecordKind::Double:
      return SameBits(f.real, g.real);
    case gsl_RecordKind::Boolean:
      return f.boolean == g.boolean;
    case gsl_RecordKind::String:
      return f.text == g.text;
    case gsl_RecordKind::Null:
      return f.link == g.link;
    case gsl_RecordKind::Record:
      m_waiting.emplace_back(f.link, g.link);
      return true;
    case gsl_RecordKind::Object:
      m_waiting.emplace_back(f.link, g.link);
      return m_inB.emplace(f.object, g.object).second && m_inA.emplace(g.object, f.object).second;
    case gsl_RecordKind::Reference:
      // The field that holds the object may be in a record that is still waiting.
      m_references.emplace_back(f.object, g.object);
      return true;
    }
    return false;
  }

  const gsl_RecordReader& m_a;
  const gsl_RecordReader& m_b;
  const Holders m_holders;
  std::vector<std::pair<gsl_RecordIndex, gsl_RecordIndex>> m_waiting;
  std::vector<std::pair<std::uint32_t, std::uint32_t>> m_references;
  /// The number that an object has in the other reader.
  std::unordered_map<std::uint32_t, std::uint32_t> m_inB, m_inA;
};

[[nodiscard]] inline bool SameContents(const gsl_RecordReader& a, const gsl_RecordReader& b) {
  return ContentsComparison(a, b, ContentsComparison::Holders::Same).AreSame();
}

/// As SameContents, whichever field holds a shared object: a store keeps records that are equal but
/// for this once.
[[nodiscard]] inline bool SameObjects(const gsl_RecordReader& a, const gsl_RecordReader& b) {
  return ContentsComparison(a, b, ContentsComparison::Holders::Any).AreSame();
}

#endif
