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
