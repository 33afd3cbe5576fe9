# cmake -DCODE=<code> -P ExpectExitCode.cmake -- <program> <arguments…>
# Fails unless the program ends with exactly this exit code.

set(command "")
set(reading FALSE)
foreach(i RANGE ${CMAKE_ARGC})
  if(reading AND DEFINED CMAKE_ARGV${i})
    list(APPEND command "${CMAKE_ARGV${i}}")
  elseif("${CMAKE_ARGV${i}}" STREQUAL "--")
    set(reading TRUE)
  endif()
endforeach()

execute_process(COMMAND ${command} RESULT_VARIABLE code)
if(NOT code STREQUAL CODE)
  message(FATAL_ERROR "exit code ${code}, not ${CODE}")
endif()
