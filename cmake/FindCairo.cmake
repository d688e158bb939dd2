# Finds Cairo with its SVG and PDF surfaces: the target Cairo::Cairo.

find_path(Cairo_INCLUDE_DIR cairo-svg.h PATH_SUFFIXES cairo)
find_library(Cairo_LIBRARY cairo)
mark_as_advanced(Cairo_INCLUDE_DIR Cairo_LIBRARY)
if(Cairo_INCLUDE_DIR)
  file(STRINGS "${Cairo_INCLUDE_DIR}/cairo-version.h" Cairo_VERSION
    REGEX "^#define CAIRO_VERSION_(MAJOR|MINOR|MICRO) [0-9]+$")
  list(TRANSFORM Cairo_VERSION REPLACE "^#define CAIRO_VERSION_[A-Z]+ " "")
  list(JOIN Cairo_VERSION "." Cairo_VERSION)
endif()
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Cairo
  REQUIRED_VARS Cairo_LIBRARY Cairo_INCLUDE_DIR VERSION_VAR Cairo_VERSION)
if(Cairo_FOUND AND NOT TARGET Cairo::Cairo)
  add_library(Cairo::Cairo UNKNOWN IMPORTED GLOBAL)
  set_target_properties(Cairo::Cairo PROPERTIES
    IMPORTED_LOCATION "${Cairo_LIBRARY}" INTERFACE_INCLUDE_DIRECTORIES "${Cairo_INCLUDE_DIR}")
endif()
