find_package(Boost 1.81 REQUIRED)

tq_add_room_benchmarks(TQConcurrency
  ${CMAKE_CURRENT_LIST_DIR}/CachesBenchmark.cpp
  ${CMAKE_CURRENT_LIST_DIR}/LocksBenchmark.cpp
  ${CMAKE_CURRENT_LIST_DIR}/MapsBenchmark.cpp
  ${CMAKE_CURRENT_LIST_DIR}/RunLoopBenchmark.cpp
  ${CMAKE_CURRENT_LIST_DIR}/URLSessionBenchmark.cpp
  PEERS Boost::headers PkgConfig::TQ_glib PkgConfig::TQ_libcurl TBB::tbb)
