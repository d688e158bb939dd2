#ifndef COW_MAP_H
#define COW_MAP_H

#include "cow_Body.h"

#include <cstddef>
#include <unordered_map>
#include <utility>
#include <vector>

/// Copy-on-write map that iterates in the order of insertion. Lookups take constant time.
///
/// Threads  copies are independent; one map follows the rules of the standard containers.
template <class K, class V>
class cow_Map {
public:
  /// A key and its value.
  using Entry = std::pair<K, V>;

  std::size_t Count() const { return static_cast<std::size_t>(End() - Begin()); }
  [[nodiscard]] bool IsEmpty() const { return Count() == 0; }

  /// Returns false, and keeps the entry as it is, for a key that is there already. After an
  /// exception the map is as it was.
  bool Insert(const K& key, const V& value) {
    if (Find(key) != nullptr) return false;
    if (m_body.Read() != nullptr && !m_body.IsShared()) {
      m_body.Write().Add(key, value);
    } else {
      Contents own = m_body.Read() != nullptr ? *m_body.Read() : Contents();
      own.Add(key, value);
      m_body = cow_Body<Contents>(std::move(own));
    }
    return true;
  }

  /// Returns null for a key that is not there. The value is valid until this map changes.
  const V* Find(const K& key) const {
    const Contents* const contents = m_body.Read();
    if (contents == nullptr) return nullptr;
    const auto found = contents->positions.find(key);
    return found == contents->positions.end() ? nullptr : &contents->entries[found->second].second;
  }

  const Entry* begin() const { return Begin(); }
  const Entry* end() const { return End(); }

  [[nodiscard]] bool SharesWith(const cow_Map& other) const noexcept {
    return m_body.SharesWith(other.m_body);
  }

private:
  struct Contents {
    std::vector<Entry> entries;
    std::unordered_map<K, std::size_t> positions;

    void Add(const K& key, const V& value) {
      entries.emplace_back(key, value);
      try {
        positions.emplace(key, entries.size() - 1);
      } catch (...) {
        entries.pop_back();
        throw;
      }
    }
  };

  const Entry* Begin() const {
    const Contents* const contents = m_body.Read();
    return contents != nullptr ? contents->entries.data() : nullptr;
  }
  const Entry* End() const {
    const Contents* const contents = m_body.Read();
    return contents != nullptr ? contents->entries.data() + contents->entries.size() : nullptr;
  }

  cow_Body<Contents> m_body;
};

#endif
