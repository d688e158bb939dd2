# The program must end with 1 and name the case. It runs behind the library PRELOAD, which replaces functions.
execute_process(COMMAND ${CMAKE_COMMAND} -E env LD_PRELOAD=${PRELOAD} ${PROGRAM} ${CASE}
  RESULT_VARIABLE status OUTPUT_VARIABLE said ERROR_VARIABLE said)
if(NOT status EQUAL 1 OR NOT said MATCHES "FAIL  ${CASE}: ")
  message(FATAL_ERROR "The case ${CASE} ended with ${status} and does not notice the fault:\n${said}")
endif()
message(STATUS "${said}")
