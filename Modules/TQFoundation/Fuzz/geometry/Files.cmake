tq_add_fuzzer(TQBezierSegmentFuzz "${CMAKE_CURRENT_LIST_DIR}/TQBezierSegmentFuzz.cpp")
