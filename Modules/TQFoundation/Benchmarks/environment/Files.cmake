find_package(spdlog REQUIRED)

tq_add_room_benchmarks(TQEnvironment
  ${CMAKE_CURRENT_LIST_DIR}/LoggingBenchmark.cpp
  ${CMAKE_CURRENT_LIST_DIR}/PreferencesBenchmark.cpp
  PEERS PkgConfig::TQ_sqlite3 spdlog::spdlog)
