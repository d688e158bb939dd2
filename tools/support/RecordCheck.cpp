#include "support/RecordCheck.h"

#include "support/RecordText.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace gsl_tools {

namespace {

using Kind = gsl_RecordKind;
using Position = gsl_RecordReader::Position;

bool HoldsRecord(Kind kind) {
  return kind == Kind::Record || kind == Kind::Object;
}

/// Walks over the records and what they hold or refer to, without a call for each level.
class CycleSearch {
public:
  explicit CycleSearch(const gsl_RecordStore& records)
      : m_records(records), m_state(records.RecordCount(), State::New) {}

  /// Returns whether a record leads to itself, and writes it.
  bool FindFrom(gsl_RecordIndex first, gsl_RecordIndex& found) {
    if (m_state[first] != State::New) return false;
    Enter(first);
    while (!m_path.empty()) {
      const auto [record, position] = m_path.back();
      if (position == gsl_RecordReader::kEnd) {
        m_state[record] = State::Done;
        m_path.pop_back();
        continue;
      }
      gsl_RecordField field;
      m_path.back().second = m_records.ReadField(position, field);
      if (!HoldsRecord(field.kind) && field.kind != Kind::Reference) continue;
      if (m_state[field.link] == State::OnPath) {
        found = field.link;
        return true;
      }
      if (m_state[field.link] == State::New) Enter(field.link);
    }
    return false;
  }

private:
  enum class State : unsigned char { New, OnPath, Done };

  void Enter(gsl_RecordIndex record) {
    m_state[record] = State::OnPath;
    m_path.emplace_back(record, m_records.FirstField(record));
  }

  const gsl_RecordStore& m_records;
  std::vector<State> m_state;
  std::vector<std::pair<gsl_RecordIndex, Position>> m_path;
};

} // namespace

std::string CheckNesting(const gsl_RecordStore& records) {
  // A record has a higher number than the records that it holds.
  std::vector<unsigned int> levels(records.RecordCount(), 0);
  for (gsl_RecordIndex record = 0; record < levels.size(); ++record) {
    for (const gsl_RecordField& field : records.Fields(record)) {
      if (HoldsRecord(field.kind)) {
        levels[record] = std::max(levels[record], levels[field.link] + 1);
      }
    }
  }
  const auto deepest = std::max_element(levels.begin(), levels.end());
  if (deepest == levels.end() || *deepest <= kMostNesting) return {};
  return "records are nested " + std::to_string(*deepest) +
         " levels deep, but the library reads at most " + std::to_string(kMostNesting);
}

std::string CheckCycles(const gsl_RecordStore& records) {
  CycleSearch search(records);
  for (std::size_t i = 0; i < records.RootCount(); ++i) {
    gsl_RecordIndex found = 0;
    if (!search.FindFrom(records.Root(i), found)) continue;
    return RootText(records, i) + " has a " + ClassText(records, records.TypeId(found)) +
           " that contains itself, which the library does not read";
  }
  return {};
}

} // namespace gsl_tools
