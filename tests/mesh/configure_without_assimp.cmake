# GSL_ASSIMP=OFF leaves out the import program and nothing else. GSL_PICTURES=OFF leaves no program out.

foreach(choice IN ITEMS OFF ON)
  execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${BUILD}-${choice} -G ${GENERATOR}
    -D CMAKE_CXX_COMPILER=${COMPILER} -D GSL_ASSIMP=${choice} -D GSL_PICTURES=${choice}
    -D GSL_BUILD_TESTS=OFF
    OUTPUT_VARIABLE said ERROR_VARIABLE said RESULT_VARIABLE failed)
  if(failed)
    message(FATAL_ERROR "GSL_ASSIMP=${choice} does not configure:\n${said}")
  endif()
  execute_process(COMMAND ${CMAKE_COMMAND} --build ${BUILD}-${choice} --target help
    OUTPUT_VARIABLE targets COMMAND_ERROR_IS_FATAL ANY)
  if(NOT targets MATCHES "gsl-sweep:" OR (choice AND NOT targets MATCHES "gsl-mesh-import:")
     OR (NOT choice AND targets MATCHES "gsl-mesh-import:"))
    message(FATAL_ERROR "GSL_ASSIMP=${choice} has the wrong programs:\n${targets}")
  endif()
endforeach()
