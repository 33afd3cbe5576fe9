# Callbacks that release everything in reach of the function that calls them.
tq_add_room_tests(TQCallbacks
  ${CMAKE_CURRENT_LIST_DIR}/ObjectCallbacksTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/WorkCallbacksTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/../support/HandMovedClock.cpp)

# No function is forgotten: Callbacks.list names those that call no host's code.
find_program(TQ_DOXYGEN doxygen)
if(TQ_DOXYGEN AND NOT TQ_SANITIZE)
  add_test(NAME callbacks.entry_points COMMAND sh "${CMAKE_CURRENT_LIST_DIR}/entry-points.sh"
    "${CMAKE_CURRENT_SOURCE_DIR}" "${CMAKE_CURRENT_BINARY_DIR}/InternalHeaders.txt" "${TQ_DOXYGEN}"
    "${CMAKE_CURRENT_BINARY_DIR}/EntryPoints")
  set_tests_properties(callbacks.entry_points PROPERTIES LABELS quick)
endif()
