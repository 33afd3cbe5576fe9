tq_add_fuzzer(GeometryText "${CMAKE_CURRENT_LIST_DIR}/GeometryTextFuzz.cpp")
