#ifndef MODEL_ROOT_LIST_H
#define MODEL_ROOT_LIST_H

#include "Database.h"
#include "gsl_RecordField.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace gsl_model {

/// The roots of a database in memory, with the checksum of the list.
class RootList {
public:
  struct Entry {
    std::string name; ///< empty for a root without a name
    std::int64_t record = 0;
    std::uint32_t typeId = 0;
    gsl_RecordIdentity identity;
    std::uint64_t bytes = 0;
    std::uint64_t checksum = 0;
  };

  /// Reads the list, unless nobody changed it since. Requires a transaction. Throws where the
  /// checksum of the list does not match.
  void Refresh(Database& database);
  /// Has the list read again.
  void Forget() { m_version.reset(); }

  /// By key, which grows.
  const std::map<std::int64_t, Entry>& Entries() const { return m_entries; }
  /// Returns null for a name that no root has.
  const std::pair<const std::int64_t, Entry>* Find(std::string_view name) const;
  /// Adds an entry, or replaces the entry of that key and name.
  void Put(std::int64_t id, Entry entry);
  void Erase(std::int64_t id);

  /// The sum of the checksums of the entries.
  std::uint64_t Sum() const { return m_sum; }
  static std::uint64_t ChecksumOf(std::int64_t id, const Entry& entry);

private:
  std::optional<std::int64_t> m_version;
  std::map<std::int64_t, Entry> m_entries;
  std::unordered_map<std::string, std::int64_t> m_ids;
  std::uint64_t m_sum = 0;
};

} // namespace gsl_model

#endif
