#ifndef RANDOM_RECORDS_H
#define RANDOM_RECORDS_H

#include "RandomNumbers.h"
#include "RandomObjects.h"
#include "gsl_RecordWriter.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Writes random graphs of records: every kind of field and of collection, any values, shared
/// objects that fields of the same root and of other roots refer to, and rings of them. The same
/// seed writes the same to each writer.
class RandomRecords {
public:
  RandomRecords(std::uint64_t seed, gsl_RecordWriter& to) : m_random(seed), m_to(to) {}

  /// Writes roots until there are at least `count` records.
  void Write(long count) {
    for (std::uint32_t type = 0; type < kTypes; type += 2)
      m_to.NameClass(type, "class " + std::to_string(type));
    for (int root = 0; m_count < count; ++root) {
      // What a root reaches is bounded: roots share objects within groups.
      if (root % 10 == 0) m_shared.clear();
      const gsl_RecordIndex record = m_to.AddRoot(AnyType(), AnyIdentity());
      ++m_count;
      if (m_random.Chance(0.7)) m_to.NameRoot("root " + std::to_string(root));
      Fill(record, 0);
    }
  }

private:
  static constexpr std::uint32_t kTypes = 12;
  static constexpr int kDeepest = 5;

  std::uint32_t AnyType() { return static_cast<std::uint32_t>(m_random.Below(kTypes)); }

  gsl_RecordIdentity AnyIdentity() {
    if (m_random.Chance(0.2)) return {};
    gsl_RecordIdentity identity;
    identity.prefix = m_random.Chance(0.9) ? 7 : m_random.Next();
    identity.serial = m_random.Chance(0.9) ? m_random.Next() % 1000 : m_random.Next();
    return identity;
  }

  std::string AnyText() {
    std::string text;
    const bool isPlain = m_random.Chance(0.7);
    for (int left = m_random.Below(30); left > 0; --left)
      text += static_cast<char>(isPlain ? 'a' + m_random.Below(26) : m_random.Below(256));
    return text;
  }

  void Fill(gsl_RecordIndex record, int depth) {
    static const char* const kNames[] = {"x",     "y",    "length",     "point",
                                         "owner", "next", "caf\xc3\xa9"};
    for (int left = m_random.Below(7); left > 0; --left) {
      gsl_RecordPlace place;
      place.name = kNames[m_random.Below(7)];
      place.index = m_random.Below(4) - 1;
      AddField(record, place, depth);
    }
  }

  void AddField(gsl_RecordIndex owner, const gsl_RecordPlace& place, int depth) {
    switch (m_random.Below(depth < kDeepest ? 12 : 7)) {
    case 0:
      return m_to.AddInteger(owner, place, random_objects::AnyInt(m_random));
    case 1:
    case 2:
      return m_to.AddDouble(owner, place, random_objects::AnyDouble(m_random));
    case 3:
      return m_to.AddBoolean(owner, place, m_random.Chance(0.5));
    case 4:
      return m_to.AddString(owner, place, AnyText());
    case 5:
      return m_to.AddNull(owner, place, static_cast<std::uint32_t>(m_random.Next()));
    case 6:
      return AddReference(owner, place);
    case 7:
      return AddCollection(owner, place, depth);
    default:
      return AddRecord(owner, place, depth);
    }
  }

  void AddReference(gsl_RecordIndex owner, const gsl_RecordPlace& place) {
    if (m_shared.empty()) return;
    m_to.AddReference(owner, place, m_shared[m_random.Next() % m_shared.size()]);
  }

  gsl_RecordIndex Add(gsl_RecordIndex owner, const gsl_RecordPlace& place) {
    const bool isShared = m_random.Chance(0.5);
    const std::uint32_t type = AnyType();
    const gsl_RecordIndex record = m_to.AddRecord(owner, place, isShared, type, AnyIdentity());
    // A field of the record itself may refer to it, too.
    if (isShared) m_shared.push_back(record);
    ++m_count;
    return record;
  }

  void AddRecord(gsl_RecordIndex owner, const gsl_RecordPlace& place, int depth) {
    Fill(Add(owner, place), depth + 1);
  }

  void AddCollection(gsl_RecordIndex owner, const gsl_RecordPlace& place, int depth) {
    const gsl_RecordIndex record = Add(owner, place);
    const int what = m_random.Below(3);
    if (what == 0) {
      std::vector<std::uint32_t> values(static_cast<std::size_t>(m_random.Below(5)));
      for (std::uint32_t& value : values)
        value = static_cast<std::uint32_t>(m_random.Next());
      return m_to.SetUnsigneds(record, values.data(), values.size());
    }
    if (what == 1) {
      const auto rows = static_cast<std::size_t>(m_random.Below(4));
      const auto columns = static_cast<std::size_t>(m_random.Below(4));
      std::vector<double> values(rows * columns);
      for (double& value : values)
        value = random_objects::AnyDouble(m_random);
      return m_to.SetDoubles(record, values.data(), rows, columns);
    }
    m_to.SetCollection(record, gsl_RecordCollection::Objects);
    for (int left = m_random.Below(5); left > 0; --left) {
      if (m_random.Chance(0.2)) {
        m_to.AddNull(record, {}, AnyType());
      } else if (m_random.Chance(0.2)) {
        AddReference(record, {});
      } else {
        AddRecord(record, {}, depth + 1);
      }
    }
  }

  RandomNumbers m_random;
  gsl_RecordWriter& m_to;
  std::vector<gsl_RecordIndex> m_shared;
  long m_count = 0;
};

#endif
