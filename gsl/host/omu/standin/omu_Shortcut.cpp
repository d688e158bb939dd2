#include "omu_Shortcut.h"

#include <atomic>

struct omu_Shortcut::State {
  explicit State(const cow_String& p) : path(p) {}

  const cow_String path;
  std::atomic<bool> expired{false};
};

omu_Shortcut::omu_Shortcut(const cow_String& path) : state(std::make_shared<State>(path)) {}

cow_String omu_Shortcut::Path() const {
  return state != nullptr ? state->path : cow_String();
}

void omu_Shortcut::Expire() noexcept {
  if (state != nullptr) state->expired.store(true, std::memory_order_release);
}

bool omu_Shortcut::IsExpired() const noexcept {
  return state != nullptr && state->expired.load(std::memory_order_acquire);
}
