# Tests of the library as others use it: installed, moved, packaged, and built inside another project.

set(tests Modules/TQFoundation/Tests/packaging)

# tq_packaging_test(<name> <script> <arguments…>)
function(tq_packaging_test name script)
  add_test(NAME packaging.${name} COMMAND sh "${PROJECT_SOURCE_DIR}/${tests}/${script}" ${ARGN})
  set_tests_properties(packaging.${name} PROPERTIES LABELS packaging TIMEOUT 300 ENVIRONMENT
    "TQ_SOURCE=${PROJECT_SOURCE_DIR};TQ_BUILD=${PROJECT_BINARY_DIR};TQ_SERIES=${TQ_SERIES};\
TQ_LIBDIR=${CMAKE_INSTALL_LIBDIR};\
TQ_WORK=${PROJECT_BINARY_DIR}/packaging/${name};CXX=${CMAKE_CXX_COMPILER};CMAKE=${CMAKE_COMMAND}")
endfunction()

tq_packaging_test(absolute prefix.sh absolute)
tq_packaging_test(relocated prefix.sh relocated)
tq_packaging_test(components components.sh)
tq_packaging_test(debian debian.sh)
tq_packaging_test(subproject subproject.sh)
tq_packaging_test(static static.sh)
tq_packaging_test(interface interface.sh)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  tq_packaging_test(layouts layouts.sh)
  if(CMAKE_BUILD_TYPE STREQUAL "Release")  # exported parts of templates depend on compiler and build type
    tq_packaging_test(exports exports.sh)
  endif()
endif()
