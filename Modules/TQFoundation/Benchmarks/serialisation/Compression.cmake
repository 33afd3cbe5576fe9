tq_add_room_benchmarks(TQCompression
  ${CMAKE_CURRENT_LIST_DIR}/CompressionBenchmarks.cpp
  ${CMAKE_CURRENT_LIST_DIR}/DigestBenchmarks.cpp
  PEERS PkgConfig::TQ_libdeflate PkgConfig::TQ_zlib PkgConfig::TQ_liblz4 PkgConfig::TQ_libcrypto)
