#ifndef GUARDED_MEMORY_H
#define GUARDED_MEMORY_H

#include <cstddef>
#include <cstdlib>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

/// An array of two T. The first is at the end of one page, and the second at the start of the next
/// page. Each can be closed or made readable only. A call that accesses a closed T ends the
/// program.
template <class T>
class GuardedPair {
public:
  GuardedPair(const T& first, const T& second)
      : m_page(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))),
        m_pages(static_cast<char*>(mmap(nullptr, 2 * m_page, PROT_READ | PROT_WRITE,
                                        MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
    if (static_cast<void*>(m_pages) == MAP_FAILED) std::abort();
    new (Get()) T(first);
    new (Get() + 1) T(second);
  }
  ~GuardedPair() {
    Open(0);
    Open(1);
    Get()[0].~T();
    Get()[1].~T();
    munmap(m_pages, 2 * m_page);
  }
  GuardedPair(const GuardedPair&) = delete;
  GuardedPair& operator=(const GuardedPair&) = delete;

  T* Get() { return reinterpret_cast<T*>(m_pages + m_page) - 1; }

  /// Closes entry k to reading and writing.
  void Close(int k) { Protect(k, PROT_NONE); }
  void CloseBoth() {
    Close(0);
    Close(1);
  }
  /// Opens entry k to reading only.
  void KeepAsItIs(int k) { Protect(k, PROT_READ); }
  void Open(int k) { Protect(k, PROT_READ | PROT_WRITE); }

private:
  std::size_t m_page;
  char* m_pages;

  void Protect(int k, int access) {
    if (mprotect(m_pages + static_cast<std::size_t>(k) * m_page, m_page, access) != 0) std::abort();
  }
};

#endif
