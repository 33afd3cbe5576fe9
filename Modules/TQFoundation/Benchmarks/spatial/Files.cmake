find_package(Boost 1.74 REQUIRED)  # Geometry's R-tree; headers only

tq_add_room_benchmarks(TQSpatial
  "${CMAKE_CURRENT_LIST_DIR}/RTreeBenchmark.cpp"
  PEERS Boost::headers)
