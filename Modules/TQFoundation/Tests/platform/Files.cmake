tq_add_room_tests(TQPlatform
  ${CMAKE_CURRENT_LIST_DIR}/Base64Test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FileHandleTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FileReadingTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/KeyedArchiverTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/URLTest.cpp)
