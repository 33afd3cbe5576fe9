# Third-party libraries that the library loads at their first use, and therefore does not link.

foreach(module IN ITEMS libcrypto libcurl libsecret-1)
  string(REGEX REPLACE "-[0-9.]+$" "" name "${module}")
  pkg_check_modules(TQ_${name} REQUIRED IMPORTED_TARGET ${module})
endforeach()

# tq_use_lazily(<target> <names…>) lets a target include the headers of such libraries, and defines
# TQ_<NAME> as the file that the loader searches for, such as "libcurl.so.4". The property
# TQ_LAZY_LIBRARIES collects the paths of these files and the versions of the headers.
set_property(GLOBAL PROPERTY TQ_LAZY_LIBRARIES "")
function(tq_use_lazily target)
  foreach(name IN LISTS ARGN)
    target_include_directories(${target} SYSTEM PRIVATE ${TQ_${name}_INCLUDE_DIRS})
    list(GET TQ_${name}_LINK_LIBRARIES 0 path)
    execute_process(COMMAND "${CMAKE_OBJDUMP}" -p "${path}" OUTPUT_VARIABLE headers
      COMMAND_ERROR_IS_FATAL ANY)
    if(NOT headers MATCHES "SONAME +([^ \n]+)")
      message(FATAL_ERROR "${path} is not a shared library")
    endif()
    string(TOUPPER "TQ_${name}" definition)
    target_compile_definitions(${target} PRIVATE "${definition}=\"${CMAKE_MATCH_1}\"")
    cmake_path(REPLACE_FILENAME path "${CMAKE_MATCH_1}")
    set_property(GLOBAL APPEND PROPERTY TQ_LAZY_LIBRARIES "${path}|${TQ_${name}_VERSION}")
  endforeach()
endfunction()
