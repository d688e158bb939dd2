#ifndef MEM_MODULES_H
#define MEM_MODULES_H

#include "xh_Export.h"

XH_API void mem_initialize(int& count);
XH_API void mem_finalize(int& count);
XH_API void typ_initialize(int& count);
XH_API void typ_finalize(int& count);
XH_API void pnt_initialize(int& count);
XH_API void pnt_finalize(int& count);
XH_API void omni_initialize(int& count);
XH_API void omni_finalize(int& count);
XH_API void atr_initialize(int& count);
XH_API void atr_finalize(int& count);
XH_API void cow_initialize(int& count);
XH_API void cow_finalize(int& count);
XH_API void nex_initialize(int& count);
XH_API void nex_finalize(int& count);
XH_API void g3d_initialize(int& count);
XH_API void g3d_finalize(int& count);
XH_API void omu_initialize(int& count);
XH_API void omu_finalize(int& count);

#endif
