tq_add_room_tests(TQObjects
  ${CMAKE_CURRENT_LIST_DIR}/ArrayTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ClassTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/DictionaryTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/NumberTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ObjectTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/SharedContainersTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/StringTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ValueTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/WeakTest.cpp)
# A separate executable, because it replaces the allocation functions.
tq_add_room_tests(TQObjectsFault
  ${CMAKE_CURRENT_LIST_DIR}/CollectionsFaultTest.cpp)
include("${CMAKE_CURRENT_LIST_DIR}/Mistakes.cmake")
