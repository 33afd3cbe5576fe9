tq_add_room_tests(TQEnvironment
  ${CMAKE_CURRENT_LIST_DIR}/PreferenceTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TQLoggingTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TQStringUniquerTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TQVersionTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/VariantsTest.cpp)
# Linked with the object files, because it replaces the tick clock.
tq_add_internal_tests(TQEnvironment
  ${CMAKE_CURRENT_LIST_DIR}/TQPerformanceTimerTest.cpp)
