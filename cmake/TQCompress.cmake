# tq_compress(<file> <result>): compresses a file when CMake runs. The result depends on the contents
# alone.

find_program(TQ_GZIP gzip REQUIRED)

function(tq_compress file result)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
  execute_process(COMMAND "${TQ_GZIP}" -9nc "${file}" OUTPUT_FILE "${result}"
    COMMAND_ERROR_IS_FATAL ANY)
endfunction()
