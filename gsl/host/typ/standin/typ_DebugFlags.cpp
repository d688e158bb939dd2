#include "typ_DebugFlags.h"

#include <map>
#include <mutex>

namespace {

struct Flags {
  std::mutex mutex;
  std::map<int, int> levels;
};

Flags& TheFlags() {
  static Flags flags;
  return flags;
}

} // namespace

int typ_DebugFlags::GetDebugFlags(int flag) {
  Flags& flags = TheFlags();
  const std::lock_guard<std::mutex> lock(flags.mutex);
  const auto found = flags.levels.find(flag);
  return found == flags.levels.end() ? 0 : found->second;
}

void typ_DebugFlags::SetDebugFlags(int flag, int level) {
  Flags& flags = TheFlags();
  const std::lock_guard<std::mutex> lock(flags.mutex);
  flags.levels[flag] = level;
}
