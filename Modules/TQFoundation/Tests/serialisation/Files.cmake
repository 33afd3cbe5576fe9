# Independent readers and writers of JSON and of property lists, to compare with.
find_program(TQ_PYTHON python3 REQUIRED)
add_executable(TQPythonPeer ${CMAKE_CURRENT_LIST_DIR}/PythonPeer.cpp)
tq_own_target(TQPythonPeer)
target_link_libraries(TQPythonPeer PRIVATE TQFoundation)
add_test(NAME serialisation.python
  COMMAND "${TQ_PYTHON}" "${CMAKE_CURRENT_LIST_DIR}/python.py" "$<TARGET_FILE:TQPythonPeer>")
set_tests_properties(serialisation.python PROPERTIES LABELS quick TIMEOUT 120)
include("${CMAKE_CURRENT_LIST_DIR}/Json.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/Compression.cmake")
