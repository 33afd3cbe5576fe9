include("${CMAKE_CURRENT_LIST_DIR}/Json.cmake" OPTIONAL)
include("${CMAKE_CURRENT_LIST_DIR}/Compression.cmake" OPTIONAL)
