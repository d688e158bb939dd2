#include "support/RecordDiff.h"

#include "Printable.h"
#include "support/RecordText.h"

#include <cstdint>
#include <cstring>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace gsl_tools {

namespace {

using Kind = gsl_RecordKind;
using Fields = std::vector<gsl_RecordField>;

bool HoldsRecord(const gsl_RecordField& field) {
  return field.kind == Kind::Record || field.kind == Kind::Object;
}

bool IsOfObject(const gsl_RecordField& field) {
  return field.kind == Kind::Object || field.kind == Kind::Reference;
}

std::uint64_t BitsOf(double number) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &number, sizeof bits);
  return bits;
}

bool AreSameBits(double a, double b) {
  return BitsOf(a) == BitsOf(b);
}

Fields FieldsOf(const gsl_RecordStore& records, gsl_RecordIndex record) {
  Fields fields;
  for (const gsl_RecordField& field : records.Fields(record))
    fields.push_back(field);
  return fields;
}

std::string NameOf(const gsl_RecordField& field, std::size_t entry) {
  if (field.name.empty()) return '[' + std::to_string(entry) + ']';
  return '/' + gsl_mesh::Printable(std::string(field.name));
}

/// The fields of a record by name, the first of each name first. Entries have the empty name.
class Names {
public:
  explicit Names(const Fields& fields) : m_none(fields.size()) {
    for (std::size_t i = fields.size(); i-- > 0;)
      m_places[fields[i].name].push_back(i);
  }

  /// Returns the next field of that name, or the number of fields.
  std::size_t Take(std::string_view name) {
    const auto found = m_places.find(name);
    if (found == m_places.end() || found->second.empty()) return m_none;
    const std::size_t place = found->second.back();
    found->second.pop_back();
    return place;
  }

private:
  std::size_t m_none;
  std::unordered_map<std::string_view, std::vector<std::size_t>> m_places;
};

class Comparison {
public:
  Comparison(const gsl_RecordStore& first, const gsl_RecordStore& second)
      : m_first(first), m_second(second) {}

  std::vector<std::string> Run() {
    std::vector<bool> isMatched(m_second.RootCount(), false);
    std::size_t unnamed = 0;
    for (std::size_t i = 0; i < m_first.RootCount(); ++i) {
      const std::size_t other = Counterpart(i, unnamed);
      if (other == m_second.RootCount()) {
        Report("- " + RootLine(m_first, i));
        continue;
      }
      isMatched[other] = true;
      CompareRecords(RootText(m_first, i), m_first.Root(i), m_second.Root(other));
    }
    for (std::size_t i = 0; i < m_second.RootCount(); ++i) {
      if (!isMatched[i]) Report("+ " + RootLine(m_second, i));
    }
    return std::move(m_lines);
  }

private:
  static std::string RootLine(const gsl_RecordStore& records, std::size_t root) {
    return RootText(records, root) + ": " + ClassText(records, records.TypeId(records.Root(root)));
  }

  /// The root of the second file that a root of the first is compared with, or RootCount(). Roots
  /// without a name before `unnamed` have counterparts.
  std::size_t Counterpart(std::size_t root, std::size_t& unnamed) const {
    const std::string_view name = m_first.RootName(root);
    if (!name.empty()) return m_second.FindRoot(name);
    while (unnamed < m_second.RootCount() && !m_second.RootName(unnamed).empty())
      ++unnamed;
    return unnamed < m_second.RootCount() ? unnamed++ : unnamed;
  }

  bool IsFull() const { return m_lines.size() >= kMostDifferences; }

  void Report(std::string line) {
    if (!IsFull()) m_lines.push_back(std::move(line));
  }

  void ReportChange(const std::string& path, const std::string& before, const std::string& after) {
    Report("~ " + path + ": " + before + " -> " + after);
  }

  void CompareRecords(const std::string& path, gsl_RecordIndex a, gsl_RecordIndex b) {
    // Equal records are stored once, so that a pair may be met at many places.
    const std::uint64_t pair = (std::uint64_t{a} << 32) | b;
    if (IsFull() || m_equal.count(pair) != 0) return;
    const std::size_t before = m_lines.size();
    CompareClasses(path, m_first.TypeId(a), m_second.TypeId(b));
    if (m_first.Identity(a) != m_second.Identity(b)) {
      ReportChange(path, "identity " + IdentityText(m_first.Identity(a)),
                   "identity " + IdentityText(m_second.Identity(b)));
    }
    CompareElements(path, a, b);
    CompareFields(path, FieldsOf(m_first, a), FieldsOf(m_second, b));
    if (m_lines.size() == before) m_equal.insert(pair);
  }

  void CompareClasses(const std::string& path, std::uint32_t a, std::uint32_t b) {
    if (a == b) return;
    const std::string names[] = {ClassText(m_first, a), ClassText(m_second, b)};
    if (names[0] != names[1]) return ReportChange(path, names[0], names[1]);
    ReportChange(path, names[0] + ' ' + TypeIdText(a), names[1] + ' ' + TypeIdText(b));
  }

  void CompareElements(const std::string& path, gsl_RecordIndex a, gsl_RecordIndex b) {
    const gsl_RecordCollection kind = m_first.Collection(a);
    if (kind != m_second.Collection(b)) {
      return ReportChange(path, CollectionText(kind), CollectionText(m_second.Collection(b)));
    }
    if (kind == gsl_RecordCollection::Unsigneds) CompareUnsigneds(path, a, b);
    if (kind == gsl_RecordCollection::Doubles) CompareDoubles(path, a, b);
  }

  void CompareUnsigneds(const std::string& path, gsl_RecordIndex a, gsl_RecordIndex b) {
    std::vector<std::uint32_t> x, y;
    m_first.ReadUnsigneds(a, x);
    m_second.ReadUnsigneds(b, y);
    if (x.size() != y.size()) {
      return ReportChange(path, std::to_string(x.size()) + " elements",
                          std::to_string(y.size()) + " elements");
    }
    for (std::size_t i = 0; i < x.size(); ++i) {
      if (x[i] == y[i]) continue;
      ReportChange(path + '[' + std::to_string(i) + ']', std::to_string(x[i]),
                   std::to_string(y[i]));
    }
  }

  void CompareDoubles(const std::string& path, gsl_RecordIndex a, gsl_RecordIndex b) {
    struct Matrix {
      std::vector<double> values;
      std::size_t rows = 0, columns = 0;
      std::string Size() const { return std::to_string(rows) + " by " + std::to_string(columns); }
    };
    Matrix x, y;
    m_first.ReadDoubles(a, x.values, x.rows, x.columns);
    m_second.ReadDoubles(b, y.values, y.rows, y.columns);
    if (x.rows != y.rows || x.columns != y.columns) return ReportChange(path, x.Size(), y.Size());
    for (std::size_t i = 0; i < x.values.size(); ++i) {
      if (AreSameBits(x.values[i], y.values[i])) continue;
      ReportChange(path + '[' + std::to_string(i / x.columns) + "][" +
                       std::to_string(i % x.columns) + ']',
                   RealText(x.values[i]), RealText(y.values[i]));
    }
  }

  static std::string CollectionText(gsl_RecordCollection collection) {
    switch (collection) {
    case gsl_RecordCollection::None:
      return "no list";
    case gsl_RecordCollection::Objects:
      return "a list of objects";
    case gsl_RecordCollection::Unsigneds:
      return "a list of unsigned integers";
    case gsl_RecordCollection::Doubles:
      return "a matrix of doubles";
    }
    return {};
  }

  /// Compares named fields by their names, and entries by their positions.
  void CompareFields(const std::string& path, const Fields& first, const Fields& second) {
    Names names(second);
    std::vector<bool> isMatched(second.size(), false);
    std::size_t entry = 0;
    for (const gsl_RecordField& field : first) {
      const std::string place = path + NameOf(field, entry);
      if (field.name.empty()) ++entry;
      const std::size_t i = names.Take(field.name);
      if (i == second.size()) {
        Report("- " + place + ": " + ValueText(m_first, field));
        continue;
      }
      isMatched[i] = true;
      CompareValues(place, field, second[i]);
    }
    entry = 0;
    for (std::size_t i = 0; i < second.size(); ++i) {
      const std::string place = path + NameOf(second[i], entry);
      if (second[i].name.empty()) ++entry;
      if (!isMatched[i]) Report("+ " + place + ": " + ValueText(m_second, second[i]));
    }
  }

  void CompareValues(const std::string& path, const gsl_RecordField& a, const gsl_RecordField& b) {
    if (a.kind != b.kind || !HaveSameValue(a, b)) {
      return ReportChange(path, ValueText(m_first, a), ValueText(m_second, b));
    }
    if (IsOfObject(a) && !IsPair(a.object, b.object)) {
      Report("~ " + path + ": shares its object with other fields");
    }
    if (HoldsRecord(a)) {
      CompareRecords(path, a.link, b.link);
    }
  }

  static bool HaveSameValue(const gsl_RecordField& a, const gsl_RecordField& b) {
    switch (a.kind) {
    case Kind::Double:
      return AreSameBits(a.real, b.real);
    case Kind::Integer:
      return a.integer == b.integer;
    case Kind::Boolean:
      return a.boolean == b.boolean;
    case Kind::String:
      return a.text == b.text;
    case Kind::Null:
      return a.link == b.link;
    default:
      return true;
    }
  }

  /// Whether the objects have met only each other.
  bool IsPair(std::uint32_t a, std::uint32_t b) {
    return m_ofFirst.emplace(a, b).first->second == b &&
           m_ofSecond.emplace(b, a).first->second == a;
  }

  const gsl_RecordStore& m_first;
  const gsl_RecordStore& m_second;
  std::unordered_set<std::uint64_t> m_equal;
  std::unordered_map<std::uint32_t, std::uint32_t> m_ofFirst, m_ofSecond;
  std::vector<std::string> m_lines;
};

} // namespace

std::vector<std::string> DifferencesOf(const gsl_RecordStore& first,
                                       const gsl_RecordStore& second) {
  return Comparison(first, second).Run();
}

} // namespace gsl_tools
