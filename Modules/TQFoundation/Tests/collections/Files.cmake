tq_add_room_tests(TQCollections
  ${CMAKE_CURRENT_LIST_DIR}/SmallCollectionsTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TreeTraversalTest.cpp)
# A separate executable, because it replaces the allocation functions.
tq_add_room_tests(TQCollectionsFault
  ${CMAKE_CURRENT_LIST_DIR}/SmallCollectionsFaultTest.cpp)
