tq_add_fuzzer(SvgReader "${CMAKE_CURRENT_LIST_DIR}/SvgReaderFuzz.cpp" TQDrawing)
