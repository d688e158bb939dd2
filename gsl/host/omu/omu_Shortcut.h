#ifndef OMU_SHORTCUT_H
#define OMU_SHORTCUT_H

#include "cow_String.h"

#include <cstddef>
#include <memory>

/// Handle on the place in the model where a script found an object. It holds the command path to
/// the place, and whether the path still leads there. Copies share one state, which is counted
/// atomically.
class GSL_HOST_API omu_Shortcut {
public:
  /// Makes a shortcut that leads nowhere. It has no path and never expires.
  omu_Shortcut() noexcept = default;
  /// Leads to the place of that command path.
  explicit omu_Shortcut(const cow_String& path);

  /// Returns the command path as a script writes it, or an empty text for a shortcut that leads
  /// nowhere.
  cow_String Path() const;
  [[nodiscard]] bool IsEmpty() const noexcept { return m_state == nullptr; }

  /// Reports to every copy of this shortcut that the object at the path is gone for ever. The call
  /// is safe from any thread.
  void Expire() noexcept;
  /// Returns whether Expire was called for any copy.
  [[nodiscard]] bool IsExpired() const noexcept;

  /// Returns whether both are copies of one shortcut. Two shortcuts that lead nowhere share
  /// nothing.
  [[nodiscard]] bool SharesWith(const omu_Shortcut& other) const noexcept {
    return m_state != nullptr && m_state == other.m_state;
  }
  /// Returns the number of copies, or 0 for a shortcut that leads nowhere.
  std::size_t Owners() const noexcept { return static_cast<std::size_t>(m_state.use_count()); }

private:
  struct State;
  std::shared_ptr<State> m_state;
};

#endif
