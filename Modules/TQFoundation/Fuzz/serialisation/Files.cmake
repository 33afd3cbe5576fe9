tq_add_fuzzer(JSONArchiveFuzzer ${CMAKE_CURRENT_LIST_DIR}/JSONArchiveFuzzer.cpp)
