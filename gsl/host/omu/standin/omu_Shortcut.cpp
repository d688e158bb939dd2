#include "omu_Shortcut.h"

#include <atomic>

struct omu_Shortcut::State {
  explicit State(const cow_String& p) : path(p) {}

  const cow_String path;
  std::atomic<bool> expired{false};
};

omu_Shortcut::omu_Shortcut(const cow_String& path) : m_state(std::make_shared<State>(path)) {}

cow_String omu_Shortcut::Path() const {
  return m_state != nullptr ? m_state->path : cow_String();
}

void omu_Shortcut::Expire() noexcept {
  if (m_state != nullptr) m_state->expired.store(true, std::memory_order_release);
}

bool omu_Shortcut::IsExpired() const noexcept {
  return m_state != nullptr && m_state->expired.load(std::memory_order_acquire);
}
