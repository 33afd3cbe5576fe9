# Seeds lie in corpus/; run: KeyedUnarchiverFuzz <corpus of one's own> corpus/KeyedUnarchiver
tq_add_fuzzer(KeyedUnarchiverFuzz "${CMAKE_CURRENT_LIST_DIR}/KeyedUnarchiverFuzz.cpp")
