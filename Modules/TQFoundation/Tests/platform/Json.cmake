tq_add_room_tests(TQPlatformJSON
  ${CMAKE_CURRENT_LIST_DIR}/text/CharacterCategoryTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/json/JSONDocumentTest.cpp)
tq_add_internal_tests(TQPlatformJSON
  ${CMAKE_CURRENT_LIST_DIR}/json/JSONShapeTest.cpp)
