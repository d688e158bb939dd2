#ifndef AIO_ISTREAM_H
#define AIO_ISTREAM_H

#include "aio_fwd.h"
#include "xh_Export.h"

#include <cstddef>
#include <string>

/// Hands out the characters of a text.
class XH_API aio_istream {
public:
  explicit aio_istream(const char* text);
  ~aio_istream();
  aio_istream(const aio_istream&) = delete;
  aio_istream& operator=(const aio_istream&) = delete;

  /// Returns -2 at the end.
  int get();

private:
  std::string m_text;
  std::size_t m_next;
};

#endif
