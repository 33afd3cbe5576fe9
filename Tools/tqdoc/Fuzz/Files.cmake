tq_add_fuzzer(SvgReader "${CMAKE_CURRENT_LIST_DIR}/SvgReaderFuzz.cpp" TQDrawing)
tq_add_fuzzer(Document "${CMAKE_CURRENT_LIST_DIR}/DocumentFuzz.cpp" TQDrawing)
