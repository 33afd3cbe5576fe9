tq_add_room_tests(TQGeometry
  ${CMAKE_CURRENT_LIST_DIR}/TQAngleTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TQFloatRangeTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TQRectAxisTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TQRectEqualityTest.cpp
)
