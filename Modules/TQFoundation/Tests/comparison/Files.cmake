tq_add_room_tests(TQComparison
  ${CMAKE_CURRENT_LIST_DIR}/ArrayComparisonTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ArrayConsolidationTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ComparisonItemTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TQRangeMapTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TQSortableTreeItemTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TQTreeComparisonTest.cpp)
# A separate executable, because it replaces the allocation functions.
tq_add_room_tests(TQComparisonFault
  ${CMAKE_CURRENT_LIST_DIR}/ComparisonFaultTest.cpp)
