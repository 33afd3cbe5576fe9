find_package(Boost 1.81 REQUIRED)
find_package(nlohmann_json REQUIRED)

tq_add_room_benchmarks(TQJSON
  ${CMAKE_CURRENT_LIST_DIR}/BoostJSON.cpp
  ${CMAKE_CURRENT_LIST_DIR}/JSONModelBenchmarks.cpp
  ${CMAKE_CURRENT_LIST_DIR}/JSONTreeBenchmarks.cpp
  ${CMAKE_CURRENT_LIST_DIR}/NumberTextBenchmarks.cpp
  PEERS Boost::headers nlohmann_json::nlohmann_json PkgConfig::TQ_simdjson)

add_executable(TQJSONMemoryBenchmarks
  ${CMAKE_CURRENT_LIST_DIR}/BoostJSON.cpp
  ${CMAKE_CURRENT_LIST_DIR}/JSONHeldMemory.cpp)
tq_own_target(TQJSONMemoryBenchmarks)
target_include_directories(TQJSONMemoryBenchmarks PRIVATE
  "${PROJECT_SOURCE_DIR}/Modules/TQFoundation/Benchmarks")
target_link_libraries(TQJSONMemoryBenchmarks PRIVATE
  TQFoundation Boost::headers nlohmann_json::nlohmann_json)

# The project's warnings do not apply to the peers' headers.
foreach(target TQJSONBenchmarks TQJSONMemoryBenchmarks)
  target_compile_options(${target} PRIVATE -w)
endforeach()
