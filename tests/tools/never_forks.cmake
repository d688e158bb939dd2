# The program calls posix_spawn, and nothing that copies the process.
execute_process(COMMAND ${NM} -D --undefined-only ${PROGRAM}
  OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
if(NOT symbols MATCHES " posix_spawn@")
  message(FATAL_ERROR "posix_spawn is not called, so this test does not see what is:\n${symbols}")
endif()
foreach(name fork vfork _Fork clone popen system)
  if(symbols MATCHES " ${name}@")
    message(FATAL_ERROR "${PROGRAM} calls ${name}")
  endif()
endforeach()
