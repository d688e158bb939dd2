# cmake --install and find_package(gsl_geometry CONFIG).

include(CMakePackageConfigHelpers)

set(gsl_config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/gsl_geometry)

set(gsl_installed_targets gsl_geometry gsl_host gsl_floating_point)
install(TARGETS ${gsl_installed_targets} EXPORT gsl_geometry_targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

install(DIRECTORY gsl/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/gsl_geometry
  FILES_MATCHING PATTERN "*.h")
if(GSL_HOST STREQUAL "standin")
  foreach(prefix IN LISTS GSL_HOST_PREFIXES)
    install(DIRECTORY gsl/host/${prefix}/
      DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/gsl_geometry/host
      FILES_MATCHING PATTERN "*.h" PATTERN "standin" EXCLUDE)
  endforeach()
endif()

install(EXPORT gsl_geometry_targets NAMESPACE gsl:: DESTINATION ${gsl_config_dir})
configure_package_config_file(cmake/gsl_geometryConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/gsl_geometryConfig.cmake INSTALL_DESTINATION ${gsl_config_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/gsl_geometryConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/gsl_geometryConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/gsl_geometryConfigVersion.cmake
  DESTINATION ${gsl_config_dir})
