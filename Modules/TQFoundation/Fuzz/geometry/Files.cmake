tq_add_fuzzer(TQBezierSegment "${CMAKE_CURRENT_LIST_DIR}/TQBezierSegmentFuzz.cpp")
