find_package(PkgConfig REQUIRED)
pkg_check_modules(2geom REQUIRED IMPORTED_TARGET 2geom)
pkg_check_modules(gsl REQUIRED IMPORTED_TARGET gsl)
pkg_check_modules(cairo REQUIRED IMPORTED_TARGET cairo)

tq_add_room_benchmarks(TQGeometry
  "${CMAKE_CURRENT_LIST_DIR}/TQBezierSegmentBenchmark.cpp"
  "${CMAKE_CURRENT_LIST_DIR}/TQLineBenchmark.cpp"
  "${CMAKE_CURRENT_LIST_DIR}/TQPolynomialBenchmark.cpp"
  "${CMAKE_CURRENT_LIST_DIR}/TQRectBenchmark.cpp"
  PEERS PkgConfig::2geom PkgConfig::gsl PkgConfig::cairo)
