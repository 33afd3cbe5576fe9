tq_add_fuzzer(JSONArchiveFuzzer ${CMAKE_CURRENT_LIST_DIR}/JSONArchiveFuzzer.cpp)
tq_add_fuzzer(CompressionFuzz "${CMAKE_CURRENT_LIST_DIR}/CompressionFuzz.cpp")
