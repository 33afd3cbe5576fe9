tq_add_room_tests(TQSerialisation
  ${CMAKE_CURRENT_LIST_DIR}/JSONLimitsTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/JSONRoundTripTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/JSONUnreadTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TQJSONCodingTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TQJSONDecoderTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TQJSONEncoderTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TQJSONFileEncoderTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/../support/FailingSystemCalls.cpp)
# A separate executable, because it replaces the allocation functions.
tq_add_room_tests(TQSerialisationFault
  ${CMAKE_CURRENT_LIST_DIR}/JSONFaultTest.cpp)
# What services of several rooms do on a sick machine. An executable of its own, for the same reason.
tq_add_room_tests(TQSickMachine
  ${CMAKE_CURRENT_LIST_DIR}/SickMachineFaultTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/../support/FailingSystemCalls.cpp
  ${CMAKE_CURRENT_LIST_DIR}/../support/HandMovedClock.cpp)
target_compile_definitions(TQSickMachineTests PRIVATE
  "TQ_FAULTS_PAGE=\"${PROJECT_SOURCE_DIR}/docs/Faults.md\"")
