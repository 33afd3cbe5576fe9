# Compiler settings of this project's own targets. Consumers do not inherit them.

find_program(TQ_CCACHE ccache)
if(TQ_CCACHE AND PROJECT_IS_TOP_LEVEL AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${TQ_CCACHE}")
endif()

# Sources include each other by the installed path. Include/TQFoundation is a link to Source.
set(TQ_INCLUDE_DIR "${PROJECT_SOURCE_DIR}/Modules/TQFoundation/Include")

# Compiles the sources of a folder as one, in half the time. Two kinds are compiled alone: generated
# sources, and those that tq_compile_alone names, because two sources of a folder use the same name.
function(tq_unite_folders target)
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
  # GCC takes an included source for a header.
  target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
  get_target_property(sources ${target} SOURCES)
  foreach(source IN LISTS sources)
    get_filename_component(folder "${source}" DIRECTORY)
    if(NOT folder MATCHES "^${CMAKE_BINARY_DIR}")
      string(MAKE_C_IDENTIFIER "folder${folder}" group)
      set_source_files_properties("${source}" PROPERTIES UNITY_GROUP "${group}")
    endif()
  endforeach()
endfunction()

function(tq_compile_alone)
  set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()

function(tq_own_target target)
  if(TQ_UNITE_FOLDERS STREQUAL "ALL" OR
     (TQ_UNITE_FOLDERS STREQUAL "HOSTS" AND NOT target STREQUAL "TQFoundationObjects"))
    # Deferred until the target has all its sources.
    cmake_language(EVAL CODE "cmake_language(DEFER CALL tq_unite_folders ${target})")
  endif()
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion
    $<$<BOOL:${TQ_WARNINGS_AS_ERRORS}>:-Werror>
    $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>
    # clang 19 reports a function that libstdc++ 12 deprecates and uses itself in stable_partition().
    $<$<CXX_COMPILER_ID:Clang>:-Wno-deprecated-declarations>
    # GCC 12 reports overlapping copies inside std::string (its bug 105329).
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
    -ffp-contract=off
    # No code reads errno after a square root. Without errno a root is a single instruction.
    -fno-math-errno
    "-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=")
  if(TQ_SANITIZE)
    target_compile_options(${target} PRIVATE
      "-fsanitize=${TQ_SANITIZE}" -fno-sanitize-recover=all -fno-omit-frame-pointer)
    if(TQ_SANITIZE MATCHES undefined)
      target_compile_options(${target} PRIVATE -fsanitize=float-cast-overflow)
    endif()
    target_link_options(${target} PRIVATE "-fsanitize=${TQ_SANITIZE}")
    target_compile_definitions(${target} PRIVATE TQ_SANITIZED)
  endif()
  if(TQ_BUILD_FUZZERS)
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
  if(TQ_COVERAGE)
    # Many threads count at the same time; the counts are in mapped files, so that killed processes count.
    target_compile_options(${target} PRIVATE -fprofile-instr-generate -fcoverage-mapping
      -fprofile-update=atomic "SHELL:-mllvm -runtime-counter-relocation")
    target_link_options(${target} PRIVATE -fprofile-instr-generate)
  endif()
endfunction()
