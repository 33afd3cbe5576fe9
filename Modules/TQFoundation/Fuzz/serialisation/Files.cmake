tq_add_fuzzer(JSONArchive "${CMAKE_CURRENT_LIST_DIR}/JSONArchiveFuzz.cpp")
tq_add_fuzzer(Compression "${CMAKE_CURRENT_LIST_DIR}/CompressionFuzz.cpp")
