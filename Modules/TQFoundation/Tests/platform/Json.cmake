tq_add_internal_tests(TQPlatformJSON
  ${CMAKE_CURRENT_LIST_DIR}/json/JSONDocumentTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/json/JSONShapeTest.cpp)
