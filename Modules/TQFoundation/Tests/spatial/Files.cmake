tq_add_room_tests(TQSpatial
  ${CMAKE_CURRENT_LIST_DIR}/BreakpointTableTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/LazyPruneTreeTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/RTreeTest.cpp)
