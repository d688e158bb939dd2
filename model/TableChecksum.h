#ifndef MODEL_TABLE_CHECKSUM_H
#define MODEL_TABLE_CHECKSUM_H

#include "Checksum.h"
#include "RecordTable.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace gsl_model {

/// Visits the records that a root reaches, each once, in the order in which they are read.
class ReachedRecords {
public:
  explicit ReachedRecords(const RecordTable& table);

  /// Returns the records that the root reaches. The range is valid until the next call.
  const std::vector<Number>& From(Number root);

private:
  const RecordTable& m_table;
  /// By record: the call that visited it last.
  std::vector<Number> m_visits;
  Number m_call = 0;
  std::vector<Number> m_reached, m_waiting;
};

/// The checksum of everything that a root reaches. `ids` are the keys of the records in the
/// database.
Checksum ChecksumOf(const RecordTable& table, const std::vector<Number>& reached,
                    const std::vector<std::int64_t>& ids);

/// The checksum of a class.
std::uint64_t ChecksumOfClass(std::uint32_t typeId, std::string_view name);

} // namespace gsl_model

#endif
