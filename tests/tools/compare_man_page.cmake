# tools/NAME.1 is the page that scripts/man makes.
execute_process(COMMAND bash ${SOURCE}/scripts/man ${NAME} ${PROGRAM} ${MADE} COMMAND_ERROR_IS_FATAL ANY)
file(READ ${SOURCE}/tools/${NAME}.1 committed)
file(READ ${MADE} made)
if(NOT committed STREQUAL made)
  message(FATAL_ERROR "tools/${NAME}.1 is not made from the help of today; run ./scripts/man")
endif()
