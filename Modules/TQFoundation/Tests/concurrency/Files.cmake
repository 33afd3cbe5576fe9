tq_add_room_tests(TQConcurrency
  ${CMAKE_CURRENT_LIST_DIR}/LockModelTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/LocksTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/LocksStressTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/PoolsTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TQCacheTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TQLazyVarTest.cpp)
