# The output of gdb with Debugging/tqfoundation_gdb.py, for a program built without optimisation.

find_program(TQ_GDB gdb)
if(NOT TQ_GDB)
  message(STATUS "gdb is not installed: the pretty printers are not tested")
elseif(NOT TQ_SANITIZE)
  add_executable(TQPrinted ${CMAKE_CURRENT_LIST_DIR}/Printed.cpp)
  tq_own_target(TQPrinted)
  # Only gdb reads the variables.
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
