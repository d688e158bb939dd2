#include "RootList.h"

#include "Checksum.h"

#include <utility>

namespace gsl_model {

void RootList::Refresh(Database& database) {
  Statement model(database, "SELECT roots_sum FROM model WHERE id = 1");
  if (!model.Step()) database.FailDamaged("its table model has no row");
  const auto sum = static_cast<std::uint64_t>(model.Integer(0));
  // The version says whether another connection has changed the file; it is the version of this
  // transaction, which has begun to read.
  const std::int64_t version = database.Integer("PRAGMA data_version");
  if (m_version == version) return;
  Forget();
  m_entries.clear();
  m_ids.clear();
  m_sum = 0;
  Statement row(database, "SELECT id, name, record, class, prefix, serial, bytes, checksum "
                          "FROM roots NOT INDEXED");
  while (row.Step()) {
    const auto word = [&](int column) { return static_cast<std::uint64_t>(row.Integer(column)); };
    Entry entry{std::string(row.Bytes(1)), row.Integer(2), static_cast<std::uint32_t>(word(3)),
                {word(4), word(5)},        word(6),        word(7)};
    if (m_ids.count(entry.name) != 0) {
      database.FailDamaged("two roots have the name \"" + entry.name + "\"");
    }
    Put(row.Integer(0), std::move(entry));
  }
  if (m_sum != sum) database.FailDamaged("the checksum of the list of roots does not match");
  m_version = version;
}

const std::pair<const std::int64_t, RootList::Entry>* RootList::Find(std::string_view name) const {
  const auto id = m_ids.find(std::string(name));
  return id != m_ids.end() ? &*m_entries.find(id->second) : nullptr;
}

void RootList::Put(std::int64_t id, Entry entry) {
  Erase(id);
  m_sum += ChecksumOf(id, entry);
  if (!entry.name.empty()) m_ids.emplace(entry.name, id);
  m_entries.emplace(id, std::move(entry));
}

void RootList::Erase(std::int64_t id) {
  const auto found = m_entries.find(id);
  if (found == m_entries.end()) return;
  m_sum -= ChecksumOf(id, found->second);
  m_ids.erase(found->second.name);
  m_entries.erase(found);
}

std::uint64_t RootList::ChecksumOf(std::int64_t id, const Entry& entry) {
  Checksum sum;
  sum.Add(static_cast<std::uint64_t>(id));
  sum.AddText(entry.name);
  sum.Add(static_cast<std::uint64_t>(entry.record));
  sum.Add(entry.typeId);
  sum.Add(entry.identity.prefix);
  sum.Add(entry.identity.serial);
  sum.Add(entry.bytes);
  sum.Add(entry.checksum);
  return sum.Sum();
}

} // namespace gsl_model
