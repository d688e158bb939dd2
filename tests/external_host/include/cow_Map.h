#ifndef COW_MAP_H
#define COW_MAP_H

#include <deque>
#include <utility>

/// Pairs in the order of insertion, found by comparing one after the other.
template <class K, class V>
class cow_Map {
public:
  void Insert(const K& key, const V& value) {
    for (const std::pair<K, V>& pair : m_pairs) {
      if (pair.first == key) return;
    }
    m_pairs.emplace_back(key, value);
  }

  const std::deque<std::pair<K, V>>& xh_Pairs() const { return m_pairs; }

private:
  std::deque<std::pair<K, V>> m_pairs;
};

#endif
