include("${CMAKE_CURRENT_LIST_DIR}/Json.cmake")
