#ifndef OMU_SHORTCUT_H
#define OMU_SHORTCUT_H

#include "cow_String.h"

/// The place of an object, as text.
class XH_API omu_Shortcut {
public:
  explicit omu_Shortcut(const cow_String& path);
  ~omu_Shortcut();
  omu_Shortcut(const omu_Shortcut&);
  omu_Shortcut& operator=(const omu_Shortcut&);

  const cow_String& xh_Path() const { return m_path; }

private:
  cow_String m_path;
};

#endif
