tq_add_room_tests(TQSpatial
  ${CMAKE_CURRENT_LIST_DIR}/RTreeTest.cpp)
