# One executable per room, one CTest entry per test case. The suite's name gives the label: stress
# for *Stress, fault for *Fault, quick for everything else.

find_package(GTest REQUIRED)
include(GoogleTest)

add_library(TQTestSupport INTERFACE)
target_include_directories(TQTestSupport INTERFACE "${PROJECT_SOURCE_DIR}/Modules/TQFoundation/Tests")
target_link_libraries(TQTestSupport INTERFACE GTest::gmock_main)

function(tq_register_tests target)
  if(TQ_SANITIZE MATCHES address)
    target_compile_options(${target} PRIVATE -O0)  # compiles in half the time
  endif()
  set(prefix "${target}.")
  gtest_discover_tests(${target} TEST_PREFIX "${prefix}" TEST_LIST ${target}Quick
    TEST_FILTER "-*Stress*:*Fault*" DISCOVERY_TIMEOUT 60
    PROPERTIES LABELS quick TIMEOUT 300)
  gtest_discover_tests(${target} TEST_PREFIX "${prefix}" TEST_LIST ${target}Stress
    TEST_FILTER "*Stress*" DISCOVERY_TIMEOUT 60
    PROPERTIES LABELS stress TIMEOUT 900)
  gtest_discover_tests(${target} TEST_PREFIX "${prefix}" TEST_LIST ${target}Fault
    TEST_FILTER "*Fault*" DISCOVERY_TIMEOUT 60
    PROPERTIES LABELS fault TIMEOUT 900)
endfunction()

# Tests of a room's public behaviour, through the shared library.
function(tq_add_room_tests room)
  set(target ${room}Tests)
  add_executable(${target} ${ARGN})
  tq_own_target(${target})
  target_link_libraries(${target} PRIVATE TQFoundation TQTestSupport)
  tq_register_tests(${target})
endfunction()

# Tests of a room's internals, linked with the library's own object files.
function(tq_add_internal_tests room)
  set(target ${room}InternalTests)
  add_executable(${target} ${ARGN})
  tq_own_target(${target})
  target_link_libraries(${target} PRIVATE TQFoundationObjects TQTestSupport)
  tq_register_tests(${target})
endfunction()
