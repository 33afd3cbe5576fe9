tq_add_fuzzer(RTree "${CMAKE_CURRENT_LIST_DIR}/RTreeFuzz.cpp")
