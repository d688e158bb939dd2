#ifndef CLS_UID_H
#define CLS_UID_H

#include "xh_Export.h"

#include <cstdint>

/// An identity of 8 bytes: a number of the process and a serial number. Copies are made by
/// functions of this host, not as bytes.
class XH_API cls_Uid {
public:
  cls_Uid() noexcept;
  cls_Uid(const cls_Uid& other) noexcept;
  cls_Uid& operator=(const cls_Uid& other) noexcept;
  ~cls_Uid();

  static cls_Uid AllocateUid() noexcept;

  friend XH_API bool operator==(const cls_Uid& a, const cls_Uid& b) noexcept;

private:
  std::uint64_t m_number;
};

XH_API bool operator==(const cls_Uid& a, const cls_Uid& b) noexcept;

#endif
