tq_add_room_tests(TQSpatial
  ${CMAKE_CURRENT_LIST_DIR}/BreakpointTableTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/LazyPruneTreeTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/RTreeIndexTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/RTreeTest.cpp)
# A separate executable, because it replaces the allocation functions.
tq_add_room_tests(TQSpatialFault
  ${CMAKE_CURRENT_LIST_DIR}/RTreeFaultTest.cpp)
