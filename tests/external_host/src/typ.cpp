#include "typ_ArchCompTable.h"
#include "typ_DebugFlags.h"

#include <map>
#include <mutex>

namespace {

std::mutex mutex;

std::map<unsigned int, typ_ArchCompEntry>& Tables() {
  static std::map<unsigned int, typ_ArchCompEntry>& tables =
      *new std::map<unsigned int, typ_ArchCompEntry>;
  return tables;
}

std::map<int, int>& Levels() {
  static std::map<int, int>& levels = *new std::map<int, int>;
  return levels;
}

} // namespace

typ_ArchCompEntry::typ_ArchCompEntry(const typ_Entry* rows, unsigned int count)
    : m_first(rows), m_last(rows + count - 1) {}

void typ_ArchCompTable::InsertEntry(unsigned int module, const typ_ArchCompEntry& entry) {
  const std::lock_guard<std::mutex> lock(mutex);
  Tables().insert_or_assign(module, entry);
}

const typ_ArchCompEntry* typ_ArchCompTable::xh_Lookup(unsigned int module) {
  const std::lock_guard<std::mutex> lock(mutex);
  const auto found = Tables().find(module);
  return found != Tables().end() ? &found->second : nullptr;
}

int typ_DebugFlags::GetDebugFlags(int flag) {
  const std::lock_guard<std::mutex> lock(mutex);
  const auto found = Levels().find(flag);
  return found != Levels().end() ? found->second : 0;
}

void typ_DebugFlags::xh_Raise(int flag, int level) {
  const std::lock_guard<std::mutex> lock(mutex);
  Levels()[flag] = level;
}
