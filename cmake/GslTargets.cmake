# Build rules that every target of this project shares.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
# Installed programs and libraries find the libraries beside them, wherever the prefix is moved.
set(CMAKE_INSTALL_RPATH "$ORIGIN" "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
  if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
  endif()
endif()

# The host's prefixes, in their order.
file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/../gsl/host/prefixes.txt GSL_HOST_PREFIXES REGEX "^[^#]")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS gsl/host/prefixes.txt)

# Contraction of a*b+c would change results. Consumers inline our arithmetic, so they get the flag too.
add_library(gsl_floating_point INTERFACE)
add_library(gsl::floating_point ALIAS gsl_floating_point)
set_target_properties(gsl_floating_point PROPERTIES EXPORT_NAME floating_point)
target_compile_options(gsl_floating_point INTERFACE -ffp-contract=off)

# These two change no result; they let loops with a square root vectorise.
add_library(gsl_private_flags INTERFACE)
target_compile_options(gsl_private_flags INTERFACE -fno-math-errno -fno-trapping-math)
target_compile_options(gsl_private_flags INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
                                                   -Wold-style-cast)
# Value classes have a virtual operation and no virtual destructor; clang warns about any standard
# container of them. (SHELL keeps the flag after -Wall, which would switch the warning on again.)
target_compile_options(gsl_private_flags INTERFACE
  "$<$<CXX_COMPILER_ID:Clang,AppleClang>:SHELL:-Wno-delete-non-abstract-non-virtual-dtor>")
if(GSL_WERROR)
  target_compile_options(gsl_private_flags INTERFACE -Werror)
endif()
target_link_libraries(gsl_private_flags INTERFACE gsl_floating_point)

if(GSL_SANITIZE)
  add_compile_options(-fsanitize=${GSL_SANITIZE} -fno-omit-frame-pointer
                      -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${GSL_SANITIZE})
endif()
# Instrumented sources take long to compile where each line has many pointers: lanes of vectors, tests, documents in JSON.
# AddressSanitizer sees most of what these checks see, and all other code keeps them.
set(GSL_WITHOUT_CHECKS_OF_POINTERS -fno-sanitize=null,alignment,vptr,pointer-overflow)
# For code that no fuzz target runs.
set(GSL_LIGHTLY_INSTRUMENTED ${GSL_WITHOUT_CHECKS_OF_POINTERS})
if(GSL_SANITIZE MATCHES "fuzzer-no-link")
  string(APPEND GSL_LIGHTLY_INSTRUMENTED ",fuzzer-no-link")
endif()
if(GSL_COVERAGE)
  # The counters are relocated so that a program can count in a file that it maps (scripts/coverage).
  add_compile_options(-fprofile-instr-generate -fcoverage-mapping -fprofile-update=atomic
                      "SHELL:-mllvm -runtime-counter-relocation")
  add_link_options(-fprofile-instr-generate)
endif()

# The host's registrar keeps adapters, and the process keeps handlers, whose code is in these libraries,
# so they stay loaded after any caller closes them.
function(gsl_stay_loaded target)
  target_link_options(${target} PRIVATE LINKER:-z,nodelete)
endfunction()

# The program that loads the library provides the symbols of a sanitizer.
function(gsl_refuse_undefined_symbols target)
  if(NOT GSL_SANITIZE)
    target_link_options(${target} PRIVATE -Wl,--no-undefined)
  endif()
endfunction()

# The library calls and inlines its own exported functions directly, as clang does by default.
function(gsl_call_own_functions_directly target)
  target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fno-semantic-interposition>)
endfunction()

# gsl_export(TARGET): the library exports the names that abi/lib<TARGET>.map lists, each with the version of that
# script, so that the loader refuses a program that was linked against another version. The names of gsl_geometry
# contain the types of the host, and a 32-bit processor has other names; there every name that is declared for export
# gets the version. Instrumented builds export names of their instrumentation.
include(CheckLinkerFlag)
function(gsl_export target)
  if(GSL_DESCRIBE_TYPES)
    foreach(compiled IN ITEMS ${target} ${target}_objects)
      if(TARGET ${compiled})
        target_compile_options(${compiled} PRIVATE -g)
      endif()
    endforeach()
  endif()
  if(GSL_SANITIZE OR GSL_COVERAGE)
    return()
  endif()
  set(script ${PROJECT_SOURCE_DIR}/abi/lib${target}.map)
  if(GSL_HOST STREQUAL "external" OR NOT CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(script ${CMAKE_CURRENT_BINARY_DIR}/lib${target}.map)
    file(CONFIGURE OUTPUT ${script}
      CONTENT "GSL_${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR} { global: *; };\n")
  endif()
  target_link_options(${target} PRIVATE LINKER:--version-script=${script})
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${script})
  # Another compiler emits fewer variants of a constructor, and lld refuses names that nothing defines.
  check_linker_flag(CXX LINKER:--undefined-version GSL_LINKER_KNOWS_UNDEFINED_VERSION)
  if(GSL_LINKER_KNOWS_UNDEFINED_VERSION)
    target_link_options(${target} PRIVATE LINKER:--undefined-version)
  endif()
endfunction()
