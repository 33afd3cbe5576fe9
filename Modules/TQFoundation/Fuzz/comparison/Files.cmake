tq_add_fuzzer(TQArrayComparison "${CMAKE_CURRENT_LIST_DIR}/TQArrayComparisonFuzz.cpp")
