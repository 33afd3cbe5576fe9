find_path(TQ_DTL_INCLUDE_DIR dtl/dtl.hpp REQUIRED)  # headers only
add_library(TQPeerDtl INTERFACE)
target_include_directories(TQPeerDtl SYSTEM INTERFACE "${TQ_DTL_INCLUDE_DIR}")

tq_add_room_benchmarks(TQComparison
  "${CMAKE_CURRENT_LIST_DIR}/ArrayComparisonBenchmark.cpp"
  "${CMAKE_CURRENT_LIST_DIR}/TreeComparisonBenchmark.cpp"
  PEERS TQPeerDtl)
