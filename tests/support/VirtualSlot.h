#ifndef VIRTUAL_SLOT_H
#define VIRTUAL_SLOT_H

#include <cstddef>
#include <cstring>

/// Returns the index of a virtual function in the table of its class, or -1 for a function that is
/// not virtual.
///
/// Reads the pointer to member in the layout of the Itanium C++ ABI. On most machines the first
/// word is the odd number 1 + byte offset. On AArch64 it is the offset, and the mark is in the
/// second word. A virtual destructor takes indices 0 and 1 where it is declared first.
template <class Member>
int VirtualSlot(Member member) {
  static_assert(sizeof member == 2 * sizeof(std::ptrdiff_t), "an Itanium pointer to member");
  std::ptrdiff_t words[2];
  std::memcpy(words, &member, sizeof words);
#if defined(__aarch64__) || defined(__arm__)
  const bool isVirtual = (words[1] & 1) != 0;
  const std::ptrdiff_t offset = words[0];
#else
  const bool isVirtual = (words[0] & 1) != 0;
  const std::ptrdiff_t offset = words[0] - 1;
#endif
  return isVirtual ? static_cast<int>(offset / static_cast<std::ptrdiff_t>(sizeof(void*))) : -1;
}

#endif
