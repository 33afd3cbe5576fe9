# What gdb prints with Debugging/tqfoundation_gdb.py, in a program that is built to be debugged.

find_program(TQ_GDB gdb)
if(NOT TQ_GDB)
  message(STATUS "gdb is not there: what it prints of the library's types is not tested")
elseif(NOT TQ_SANITIZE)
  add_executable(TQPrinted ${CMAKE_CURRENT_LIST_DIR}/Printed.cpp)
  tq_own_target(TQPrinted)
  # Nobody but gdb looks at its variables.
  target_compile_options(TQPrinted PRIVATE -O0 -g -Wno-unused-variable -Wno-unused-but-set-variable)
  target_link_libraries(TQPrinted PRIVATE TQFoundation)
  add_test(NAME debugging.printers
    COMMAND "${CMAKE_COMMAND}" "-DGDB=${TQ_GDB}" "-DPROGRAM=$<TARGET_FILE:TQPrinted>"
            "-DPRINTERS=${CMAKE_CURRENT_SOURCE_DIR}/Debugging/tqfoundation_gdb.py"
            "-DCOMMANDS=${CMAKE_CURRENT_LIST_DIR}/printed.gdb"
            "-DEXPECTED=${CMAKE_CURRENT_LIST_DIR}/printed.txt"
            -P "${CMAKE_CURRENT_LIST_DIR}/ExpectPrinted.cmake")
  set_tests_properties(debugging.printers PROPERTIES LABELS quick TIMEOUT 60)
endif()
