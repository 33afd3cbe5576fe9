tq_add_room_tests(TQCompression
  ${CMAKE_CURRENT_LIST_DIR}/TQCompressionTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TQDigestsTest.cpp)
