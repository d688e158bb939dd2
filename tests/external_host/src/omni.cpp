#include "omi_gettimecounter.h"
#include "xh_Registry.h"

#include <chrono>
#include <cstring>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>

namespace {

struct Registered {
  std::shared_mutex mutex;
  std::unordered_map<std::string, void*> objects;
};

Registered& TheRegistry() {
  static Registered& registry = *new Registered;
  return registry;
}

} // namespace

void* xh_Registry::Find(const char* typeName) noexcept {
  Registered& registry = TheRegistry();
  const std::shared_lock<std::shared_mutex> lock(registry.mutex);
  // Comparing takes no memory, unlike a key for the map.
  for (const auto& [name, object] : registry.objects) {
    if (std::strcmp(name.c_str(), typeName) == 0) return object;
  }
  return nullptr;
}

void xh_Registry::Set(const char* typeName, void* object) {
  Registered& registry = TheRegistry();
  const std::unique_lock<std::shared_mutex> lock(registry.mutex);
  if (object != nullptr) {
    registry.objects[typeName] = object;
    return;
  }
  // Taking an object out must not need memory.
  for (auto& [name, kept] : registry.objects) {
    if (std::strcmp(name.c_str(), typeName) == 0) kept = nullptr;
  }
}

double omi_gettimecounter() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration<double, std::milli>(now).count();
}
