#include "mem_Modules.h"

#include "mem_LifeCycle.h"

#include <cstddef>
#include <string_view>

namespace {

/// The libraries that start and stop. `cls` starts with `nex`, and `ftr` has nothing to start.
enum Library : std::size_t { kMem, kTyp, kPnt, kOmni, kAtr, kCow, kNex, kG3d, kOmu, kLibraryCount };

mem_LifeCycle lifeCycles[] = {mem_LifeCycle("mem"),  mem_LifeCycle("typ"), mem_LifeCycle("pnt"),
                              mem_LifeCycle("omni"), mem_LifeCycle("atr"), mem_LifeCycle("cow"),
                              mem_LifeCycle("nex"),  mem_LifeCycle("g3d"), mem_LifeCycle("omu")};
static_assert(sizeof lifeCycles / sizeof lifeCycles[0] == kLibraryCount);

template <Library kLibrary>
void Initialize(int count) {
  lifeCycles[kLibrary].Initialize(count);
}

template <Library kLibrary>
void Finalize(int count) {
  lifeCycles[kLibrary].Finalize(count);
}

} // namespace

// clang-format off
void mem_initialize(int& count)  { Initialize<kMem>(count); }
void mem_finalize(int& count)    { Finalize<kMem>(count); }
void typ_initialize(int& count)  { Initialize<kTyp>(count); }
void typ_finalize(int& count)    { Finalize<kTyp>(count); }
void pnt_initialize(int& count)  { Initialize<kPnt>(count); }
void pnt_finalize(int& count)    { Finalize<kPnt>(count); }
void omni_initialize(int& count) { Initialize<kOmni>(count); }
void omni_finalize(int& count)   { Finalize<kOmni>(count); }
void atr_initialize(int& count)  { Initialize<kAtr>(count); }
void atr_finalize(int& count)    { Finalize<kAtr>(count); }
void cow_initialize(int& count)  { Initialize<kCow>(count); }
void cow_finalize(int& count)    { Finalize<kCow>(count); }
void nex_initialize(int& count)  { Initialize<kNex>(count); }
void nex_finalize(int& count)    { Finalize<kNex>(count); }
void g3d_initialize(int& count)  { Initialize<kG3d>(count); }
void g3d_finalize(int& count)    { Finalize<kG3d>(count); }
void omu_initialize(int& count)  { Initialize<kOmu>(count); }
void omu_finalize(int& count)    { Finalize<kOmu>(count); }
// clang-format on

bool mem_IsInitialized(const char* prefix) {
  for (const mem_LifeCycle& lifeCycle : lifeCycles) {
    if (std::string_view(prefix) == lifeCycle.Prefix()) return lifeCycle.IsInitialized();
  }
  return false;
}
