#ifndef AIO_OSTREAM_H
#define AIO_OSTREAM_H

#include "aio_fwd.h"
#include "xh_Export.h"

#include <cstddef>
#include <string>

struct aio_FormattedDouble {
  double number;
  int style;
  int digits;
};

/// Collects text. What was flushed is delivered to the reader; the rest waits.
class XH_API aio_ostream {
public:
  aio_ostream();
  ~aio_ostream();
  aio_ostream(const aio_ostream&) = delete;
  aio_ostream& operator=(const aio_ostream&) = delete;

  aio_ostream& operator<<(const char* text);
  aio_ostream& operator<<(char character);
  aio_ostream& operator<<(const aio_FormattedDouble& number);
  void flush();

  const std::string& xh_Delivered() const { return m_delivered; }

private:
  std::string m_waiting;
  std::string m_delivered;
};

#endif
