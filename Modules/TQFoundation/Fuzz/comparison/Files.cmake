tq_add_fuzzer(TQArrayComparisonFuzz "${CMAKE_CURRENT_LIST_DIR}/TQArrayComparisonFuzz.cpp")
