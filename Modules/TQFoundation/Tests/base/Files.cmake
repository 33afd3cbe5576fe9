tq_add_room_tests(TQBase
  ${CMAKE_CURRENT_LIST_DIR}/GeometryTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/NumberTextTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TQAssertTest.cpp)
