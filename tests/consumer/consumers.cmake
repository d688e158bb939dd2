# The programs of a host; they are the same for every way to get gsl_geometry.

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
enable_testing()
set(here ${CMAKE_CURRENT_LIST_DIR})

function(add_host_code_flags target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
                                           -Wold-style-cast -Werror)
  # The headers are ordinary headers, so that the compiler warns about them too.
  set_target_properties(${target} PROPERTIES NO_SYSTEM_FROM_IMPORTED ON)
endfunction()

# The second program uses only the stand-in host's libraries, as another module of the host would.
set(names geometry)
if(TARGET gsl::records)
  list(APPEND names host)
endif()
foreach(name IN LISTS names)
  add_executable(${name}_consumer ${here}/${name}_consumer.cpp)
  target_link_libraries(${name}_consumer PRIVATE gsl::${name})
  add_host_code_flags(${name}_consumer)
  add_test(NAME ${name}_consumer COMMAND ${name}_consumer)
endforeach()
install(TARGETS geometry_consumer)

# The sweep is built together with the tools.
if(TARGET gsl::sweep)
  add_executable(sweep_consumer ${here}/sweep_consumer.cpp)
  target_link_libraries(sweep_consumer PRIVATE gsl::sweep)
  add_host_code_flags(sweep_consumer)
  add_test(NAME sweep_consumer COMMAND sweep_consumer)
endif()

# The database needs SQLite where gsl_geometry is built, and not here.
if(TARGET gsl::model)
  add_executable(model_consumer ${here}/model_consumer.cpp)
  target_link_libraries(model_consumer PRIVATE gsl::model)
  add_host_code_flags(model_consumer)
  add_test(NAME model_consumer COMMAND model_consumer)
endif()

# An external host has another name, and no store of records.
get_target_property(host_type gsl::host TYPE)
if(host_type STREQUAL "SHARED_LIBRARY")
  add_library(loading_module MODULE ${here}/loading_module.cpp)
  target_link_libraries(loading_module PRIVATE gsl::geometry)
  add_host_code_flags(loading_module)
  add_executable(loading_consumer ${here}/loading_consumer.cpp)
  target_compile_features(loading_consumer PRIVATE cxx_std_17)
  target_link_libraries(loading_consumer PRIVATE gsl::floating_point ${CMAKE_DL_LIBS})
  add_host_code_flags(loading_consumer)
  set(loaded_files $<TARGET_FILE:loading_module> $<TARGET_SONAME_FILE:gsl::geometry>
    $<TARGET_SONAME_FILE:gsl::host> $<TARGET_SONAME_FILE:gsl::records>)
  add_test(NAME loading_consumer COMMAND loading_consumer ${loaded_files})
  add_test(NAME loading_consumer_keeping_the_host COMMAND loading_consumer ${loaded_files} --keep-host)
endif()
