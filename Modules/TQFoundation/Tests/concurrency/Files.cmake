tq_add_room_tests(TQConcurrency
  ${CMAKE_CURRENT_LIST_DIR}/work/ConcurrentMapTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/work/DebouncerTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/locks/LockModelTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/locks/LocksTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/locks/LocksStressTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/caches/PoolsTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/caches/TQCacheTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/work/TQConcurrentMapOperationTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/locks/TQLazyVarTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/work/TQOperationTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/work/TQRateLimiterTest.cpp)
# They misuse locks on purpose, which the analysis would not let through.
target_compile_options(TQConcurrencyTests PRIVATE
  $<$<CXX_COMPILER_ID:Clang>:-Wno-thread-safety-analysis>)
# An executable of its own, for it replaces the allocation functions.
tq_add_room_tests(TQConcurrencyFault
  ${CMAKE_CURRENT_LIST_DIR}/ConcurrencyFaultTest.cpp)
