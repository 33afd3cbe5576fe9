# Seeds lie in corpus/; run: KeyedUnarchiverFuzz <corpus of one's own> corpus/KeyedUnarchiver
tq_add_fuzzer(KeyedUnarchiverFuzz "${CMAKE_CURRENT_LIST_DIR}/KeyedUnarchiverFuzz.cpp")
foreach(codec Deflate LZ4 LZ4Raw LZFSE LZMA)
  tq_add_fuzzer(${codec}CodecFuzz "${CMAKE_CURRENT_LIST_DIR}/${codec}CodecFuzz.cpp")
endforeach()
