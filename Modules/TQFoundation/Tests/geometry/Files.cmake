tq_add_room_tests(TQGeometry
  ${CMAKE_CURRENT_LIST_DIR}/curves/PathTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/curves/TQBezierSegmentIntersectionsTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/curves/TQBezierSegmentTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/curves/TQPolynomialTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/lines/TQLineTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/rects/TQPrimitiveFunctionsTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/rects/TQRectConstructionTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/rects/TQRectTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/values/GeometryValuesTest.cpp)
# A separate executable, because it replaces the allocation functions.
tq_add_room_tests(TQGeometryFault
  ${CMAKE_CURRENT_LIST_DIR}/curves/PathFaultTest.cpp)
