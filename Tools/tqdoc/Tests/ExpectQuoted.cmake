# cmake -DREADME=<file> -DEXAMPLE=<file> -P ExpectQuoted.cmake
# Fails unless the first file quotes the second one word for word.

file(READ "${README}" readme)
file(READ "${EXAMPLE}" example)
string(FIND "${readme}" "${example}" at)
if(at EQUAL -1)
  message(FATAL_ERROR "README.md does not quote docs/example.cpp as it stands")
endif()
