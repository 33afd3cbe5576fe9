tq_add_room_benchmarks(TQCompression
  ${CMAKE_CURRENT_LIST_DIR}/CompressionBenchmarks.cpp
  ${CMAKE_CURRENT_LIST_DIR}/DigestBenchmarks.cpp
  PEERS PkgConfig::libdeflate PkgConfig::zlib PkgConfig::liblz4 PkgConfig::libcrypto)
