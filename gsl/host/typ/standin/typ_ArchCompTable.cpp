#include "typ_ArchCompTable.h"

#include <map>
#include <mutex>

namespace {

struct Tables {
  std::mutex mutex;
  std::map<unsigned int, typ_ArchCompEntry> byModule;
};

Tables& TheTables() {
  static Tables tables;
  return tables;
}

} // namespace

void typ_ArchCompTable::InsertEntry(unsigned int module, const typ_ArchCompEntry& entry) {
  Tables& tables = TheTables();
  const std::lock_guard<std::mutex> lock(tables.mutex);
  tables.byModule.insert_or_assign(module, entry);
}

typ_ArchCompEntry typ_ArchCompTable::FindEntry(unsigned int module) {
  Tables& tables = TheTables();
  const std::lock_guard<std::mutex> lock(tables.mutex);
  const auto found = tables.byModule.find(module);
  return found != tables.byModule.end() ? found->second : typ_ArchCompEntry(nullptr, 0);
}

const typ_Entry* typ_ArchCompTable::FindType(unsigned int typeId) {
  const typ_ArchCompEntry table = FindEntry(typeId >> 16);
  const unsigned int row = typeId & 0xFFFFu;
  if (row >= table.RowCount() || table.Row(row).className == nullptr) return nullptr;
  return &table.Row(row);
}
