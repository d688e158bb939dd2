#ifndef CLS_UID_H
#define CLS_UID_H

#include "mem_Export.h"

#include <cstddef>
#include <cstdint>
#include <typeindex>

/// Persistent object identifier of 128 bits: a serial number, and a prefix that is drawn at random
/// once per process. It is trivially copyable, and copies are the same identity.
///
/// A forked child draws a prefix of its own. Only equality is meaningful; the order is the order of
/// the bits, not of age.
class GSL_HOST_API cls_Uid {
public:
  /// Makes the null identifier, which is equal only to itself.
  constexpr cls_Uid() noexcept : m_prefix(0), m_serial(0) {}

  /// Makes an identifier that was read from a record. Two zeros make the null identifier.
  constexpr cls_Uid(std::uint64_t prefixBits, std::uint64_t serialBits) noexcept
      : m_prefix(prefixBits), m_serial(serialBits) {}

  /// Returns an identifier that no other call, thread or process has returned. It is never null.
  /// The call is safe from any thread and without contention: a thread takes 2^20 serials at once.
  static cls_Uid AllocateUid() noexcept;

  /// Returns whether this is the null uid, which no object has.
  [[nodiscard]] constexpr bool IsNull() const noexcept { return m_prefix == 0 && m_serial == 0; }
  /// Returns the part that is common to the process.
  constexpr std::uint64_t Prefix() const noexcept { return m_prefix; }
  /// Returns the part that differs within the process.
  constexpr std::uint64_t Serial() const noexcept { return m_serial; }

  [[nodiscard]] friend constexpr bool operator==(const cls_Uid& a, const cls_Uid& b) noexcept {
    return a.m_prefix == b.m_prefix && a.m_serial == b.m_serial;
  }
  [[nodiscard]] friend constexpr bool operator!=(const cls_Uid& a, const cls_Uid& b) noexcept {
    return !(a == b);
  }
  [[nodiscard]] friend constexpr bool operator<(const cls_Uid& a, const cls_Uid& b) noexcept {
    return a.m_prefix != b.m_prefix ? a.m_prefix < b.m_prefix : a.m_serial < b.m_serial;
  }

private:
  /// The serials that this thread may still use: [next, end) under `prefix`.
  struct Block {
    std::uint64_t prefix, next, end;
  };

  static void TakeBlock() noexcept;
  static void DrawAfterFork() noexcept;
  static const bool kWatchesForks;

  // Exported for the inline allocation. With initial-exec, an access is one load from a fixed
  // offset. With __thread, unlike thread_local, no call checks whether the block was constructed.
  static __thread Block threadBlock __attribute__((tls_model("initial-exec")));

  std::uint64_t m_prefix;
  std::uint64_t m_serial;
};

inline cls_Uid cls_Uid::AllocateUid() noexcept {
  Block& block = threadBlock;
  if (__builtin_expect(block.next == block.end, false)) TakeBlock();
  return cls_Uid(block.prefix, block.next++);
}

// <typeindex> declares std::hash at a hundredth of the lines of <functional>.
template <>
struct std::hash<cls_Uid> {
  std::size_t operator()(const cls_Uid& uid) const noexcept {
    // The prefix is random, and most uids share it; the odd multiplier spreads the serials.
    return static_cast<std::size_t>(uid.Prefix() ^ (uid.Serial() * 0x9E3779B97F4A7C15ull));
  }
};

#endif
