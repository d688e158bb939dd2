#ifndef XH_PAGES_H
#define XH_PAGES_H

#include "xh_Export.h"

/// Pointers in pages of 16, each a block of the recording allocator. A page never moves.
class XH_API xh_Pages {
public:
  xh_Pages();
  xh_Pages(xh_Pages&& other) noexcept;
  xh_Pages& operator=(xh_Pages&& other) noexcept;
  ~xh_Pages();

  unsigned int Count() const { return m_count; }
  void* At(unsigned int i) const;
  /// Throws std::bad_alloc, with the pages as they were.
  void Push(void* pointer);
  void* Pop();

private:
  struct Page;

  Page* m_first;
  Page* m_last;
  unsigned int m_count;
};

#endif
