// A host that loads and unloads the libraries at run time a thousand times, from two folders in
// turn. The address changes every time.
//
//   loading_consumer MODULE GEOMETRY HOST RECORDS [--keep-host]
//
// MODULE is the module of loading_module.cpp, GEOMETRY and HOST are the two libraries, and RECORDS
// is the library that the host needs. With --keep-host the host library is loaded first and never
// closed, as in an application that is itself the host.

#include "check.h"

#include <dlfcn.h>
#include <stdlib.h>
#include <sys/mman.h>

#include <cstring>
#include <filesystem>
#include <string>

namespace {

constexpr int kCycles = 1000;

using std::filesystem::path;

/// A copy of the files in its own folder.
struct Place {
  path module, geometry, host;

  Place(const path& folder, const path& moduleFile, const path& geometryFile, const path& hostFile,
        const path& recordsFile)
      : module(folder / moduleFile.filename()), geometry(folder / geometryFile.filename()),
        host(folder / hostFile.filename()) {
    std::filesystem::create_directory(folder);
    for (const path& file : {moduleFile, geometryFile, hostFile, recordsFile})
      std::filesystem::copy_file(file, folder / file.filename());
  }
};

/// A loaded library, which is closed at the end of its scope.
class Loaded {
public:
  explicit Loaded(const path& file) : handle(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    Check(handle != nullptr, handle != nullptr ? "" : dlerror());
  }
  ~Loaded() { Check(dlclose(handle) == 0, "a library closes"); }
  Loaded(const Loaded&) = delete;
  Loaded& operator=(const Loaded&) = delete;

  template <class Function>
  Function* Find(const char* name) const {
    void* const found = dlsym(handle, name);
    Check(found != nullptr, name);
    return reinterpret_cast<Function*>(found);
  }

private:
  void* handle;
};

/// Keeps the page at an address that a library has left. So the next library is loaded elsewhere,
/// and a call to the old address crashes. Nothing happens where the library is still loaded.
class Blocked {
public:
  void MoveTo(void* address) {
    if (page != MAP_FAILED) munmap(page, kSize);
    page =
        mmap(address, kSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
  }

private:
  static constexpr std::size_t kSize = 4096;
  void* page = MAP_FAILED;
};

/// Starts and stops the library without a module, which registers the classes of this copy. Returns
/// its address.
void* StartAndStop(const Loaded& geometry) {
  int count = 0;
  auto* const start = geometry.Find<void(int&)>("_Z14gsl_initializeRi");
  start(count);
  Check(count > 0, "the library starts");
  geometry.Find<void(int&)>("_Z12gsl_finalizeRi")(count);
  Check(count == 0, "the library stops");
  Dl_info about;
  Check(dladdr(reinterpret_cast<void*>(start), &about) != 0, "the library has an address");
  return about.dli_fbase;
}

/// Loads the library and the module once, and returns the address of the library. A module finds
/// symbols by name in the loaded libraries, so the order decides which copy the module uses.
void* Cycle(const Place& place) {
  const Loaded geometry(place.geometry);
  void* const address = StartAndStop(geometry);
  const Loaded module(place.module);
  const char* const wrong = module.Find<const char*()>("UseGeometry")();
  Check(wrong == nullptr, wrong);
  return address;
}

void* CycleWithHost(const Place& place) {
  const Loaded host(place.host);
  return Cycle(place);
}

bool StaysLoaded(const path& file) {
  return dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD) != nullptr;
}

} // namespace

int main(int argc, char** argv) {
  const bool isHostKept = argc == 6 && std::strcmp(argv[5], "--keep-host") == 0;
  Check(argc == 5 || isHostKept,
        "usage: loading_consumer MODULE GEOMETRY HOST RECORDS [--keep-host]");
  std::string folder =
      (std::filesystem::temp_directory_path() / "loading_consumer.XXXXXX").string();
  Check(mkdtemp(folder.data()) != nullptr, "a temporary folder is made");
  const Place places[] = {{path(folder) / "here", argv[1], argv[2], argv[3], argv[4]},
                          {path(folder) / "there", argv[1], argv[2], argv[3], argv[4]}};

  if (isHostKept) dlopen(places[0].host.c_str(), RTLD_NOW | RTLD_LOCAL);
  Blocked blocked;
  for (int i = 0; i < kCycles; ++i)
    blocked.MoveTo((isHostKept ? Cycle : CycleWithHost)(places[i % 2]));
  Check(StaysLoaded(places[0].geometry), "the library stays when it has been closed");
  Check(StaysLoaded(places[0].host), "the host library stays when it has been closed");

  std::filesystem::remove_all(folder);
  return 0;
}
