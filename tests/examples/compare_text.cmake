# Fails unless the file TEXT holds the file PROGRAM, line by line, as one block.

file(READ ${TEXT} text)
file(READ ${PROGRAM} program)
string(FIND "${text}" "```cpp\n${program}```" position)
if(position EQUAL -1)
  message(FATAL_ERROR "${TEXT} does not show ${PROGRAM} as it is")
endif()
