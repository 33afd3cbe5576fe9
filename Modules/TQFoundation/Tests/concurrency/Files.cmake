tq_add_room_tests(TQConcurrency
  ${CMAKE_CURRENT_LIST_DIR}/caches/CachesTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/locks/LazyValuesTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/locks/LockModelTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/locks/LocksTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/work/ConcurrentMapTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/work/DebouncerTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/work/TQOperationTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/work/TQRateLimiterTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/../support/HandMovedClock.cpp)
# These tests misuse locks on purpose, which the thread safety analysis rejects.
target_compile_options(TQConcurrencyTests PRIVATE
  $<$<CXX_COMPILER_ID:Clang>:-Wno-thread-safety-analysis>)
tq_add_internal_tests(TQConcurrency
  ${CMAKE_CURRENT_LIST_DIR}/caches/FairSharedLockTest.cpp)
# A separate executable, because it replaces the allocation functions.
tq_add_room_tests(TQConcurrencyFault
  ${CMAKE_CURRENT_LIST_DIR}/ConcurrencyFaultTest.cpp)
