tq_add_room_tests(TQCompression
  ${CMAKE_CURRENT_LIST_DIR}/CompressionContainerTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/CompressionDamageTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/CompressionStressTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/CompressionToolsTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TQDigestsTest.cpp)
