# The library requests memory from the host alone: it needs no function of the system's allocator.
execute_process(COMMAND nm --dynamic --undefined-only ${LIBRARY} OUTPUT_VARIABLE needed COMMAND_ERROR_IS_FATAL ANY)
if(NOT needed MATCHES "_Znwm")
  message(FATAL_ERROR "${LIBRARY} does not need operator new, so this test asks the wrong question:\n${needed}")
endif()
string(REGEX MATCHALL
  " (malloc|calloc|realloc|reallocarray|free|posix_memalign|aligned_alloc|memalign|valloc|strdup|strndup|mmap|sbrk)[@\n]"
  found "${needed}")
if(found)
  message(FATAL_ERROR "${LIBRARY} requests memory past the host:${found}")
endif()
