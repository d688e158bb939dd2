# Runs PROGRAM, and fails unless it exits with 0 and prints exactly what the file EXPECTED holds.

execute_process(COMMAND ${PROGRAM} OUTPUT_VARIABLE actual RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "${PROGRAM} ended with ${status}")
endif()
file(READ ${EXPECTED} expected)
if(NOT actual STREQUAL expected)
  message(FATAL_ERROR "${PROGRAM} printed\n${actual}\ninstead of\n${expected}")
endif()
