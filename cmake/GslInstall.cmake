# Rules for cmake --install, find_package(gsl_geometry CONFIG) and pkg-config.

include(CMakePackageConfigHelpers)

set(gsl_config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/gsl_geometry)

set(gsl_installed_targets gsl_geometry gsl_host gsl_floating_point)
if(GSL_BUILD_TOOLS)
  list(APPEND gsl_installed_targets gsl_sweep)
endif()
if(TARGET gsl_records)
  list(APPEND gsl_installed_targets gsl_records)
  install(DIRECTORY records/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/gsl_geometry/records
    FILES_MATCHING PATTERN "*.h")
endif()
if(TARGET gsl_model)
  list(APPEND gsl_installed_targets gsl_model)
  install(DIRECTORY model/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/gsl_geometry/model
    FILES_MATCHING PATTERN "*.h")
endif()
install(TARGETS ${gsl_installed_targets} EXPORT gsl_geometry_targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

install(DIRECTORY gsl/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/gsl_geometry
  FILES_MATCHING PATTERN "*.h")
if(GSL_BUILD_TOOLS)
  install(DIRECTORY sweep/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/gsl_geometry
    FILES_MATCHING PATTERN "*.h")
endif()
if(GSL_HOST STREQUAL "standin")
  foreach(prefix IN LISTS GSL_HOST_PREFIXES)
    install(DIRECTORY gsl/host/${prefix}/
      DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/gsl_geometry/host
      FILES_MATCHING PATTERN "*.h" PATTERN "standin" EXCLUDE)
  endforeach()
endif()

# The suite that a vendor of a host runs; a project of its own, which finds the installed library.
install(DIRECTORY tests/host_conformance/ DESTINATION ${CMAKE_INSTALL_DATADIR}/gsl_geometry/host_conformance
  COMPONENT host_conformance)

install(EXPORT gsl_geometry_targets NAMESPACE gsl:: DESTINATION ${gsl_config_dir})
configure_package_config_file(cmake/gsl_geometryConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/gsl_geometryConfig.cmake INSTALL_DESTINATION ${gsl_config_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/gsl_geometryConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/gsl_geometryConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/gsl_geometryConfigVersion.cmake
  DESTINATION ${gsl_config_dir})

# pkg-config: the same flags and libraries for a plain compiler line.
get_target_property(gsl_pc_flags gsl_floating_point INTERFACE_COMPILE_OPTIONS)
list(JOIN gsl_pc_flags " " gsl_pc_flags)
set(gsl_pc_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH gsl_pc_to_prefix ${CMAKE_INSTALL_PREFIX}/${gsl_pc_dir} ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" gsl_pc_to_prefix "${gsl_pc_to_prefix}")
set(gsl_pc_files gsl_geometry.pc)
if(GSL_BUILD_TOOLS)
  list(APPEND gsl_pc_files gsl_sweep.pc)
endif()
if(GSL_HOST STREQUAL "standin")
  list(APPEND gsl_pc_files gsl_host.pc gsl_records.pc)
  set(gsl_pc_requires "gsl_host = ${PROJECT_VERSION}")
else()
  list(TRANSFORM GSL_HOST_INCLUDE_DIRS PREPEND "-I" OUTPUT_VARIABLE gsl_pc_host_cflags)
  list(JOIN gsl_pc_host_cflags " " gsl_pc_host_cflags)
  list(JOIN GSL_HOST_LIBRARIES " " gsl_pc_host_libs)
endif()
if(TARGET gsl_model)
  list(APPEND gsl_pc_files gsl_model.pc)
endif()
foreach(file IN LISTS gsl_pc_files)
  configure_file(cmake/${file}.in ${CMAKE_CURRENT_BINARY_DIR}/${file} @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${file} DESTINATION ${gsl_pc_dir})
endforeach()

install(FILES LICENSE THIRD_PARTY_NOTICES DESTINATION ${CMAKE_INSTALL_DATADIR}/licenses/gsl_geometry)
