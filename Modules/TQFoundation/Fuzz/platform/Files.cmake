tq_add_fuzzer(KeyedUnarchiver "${CMAKE_CURRENT_LIST_DIR}/KeyedUnarchiverFuzz.cpp")
foreach(codec Deflate LZ4 LZ4Raw LZFSE LZMA)
  tq_add_fuzzer(${codec}Codec "${CMAKE_CURRENT_LIST_DIR}/${codec}CodecFuzz.cpp")
endforeach()
