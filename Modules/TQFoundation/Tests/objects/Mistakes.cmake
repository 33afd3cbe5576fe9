# Programs that must not compile. Each test compiles Mistakes.cpp with one mistake and passes if the
# compiler prints the sentence.

function(tq_mistake_test name mistake sentence)
  add_test(NAME mistakes.${name} COMMAND "${CMAKE_CXX_COMPILER}" -std=c++20 -fsyntax-only
    "-I${TQ_INCLUDE_DIR}" -DTQ_MISTAKE=${mistake} ${ARGN} "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/Mistakes.cpp")
  set_tests_properties(mistakes.${name} PROPERTIES LABELS quick)
  if(sentence)
    set_tests_properties(mistakes.${name} PROPERTIES PASS_REGULAR_EXPRESSION "error: .*${sentence}")
  endif()
endfunction()

tq_mistake_test(none 0 "")
tq_mistake_test(const-hides-parent 1 "declare it public and const: void encodeAsJSON")
tq_mistake_test(const-forgotten 2 "declare it public and const: void encodeAsKey")
tq_mistake_test(private-step 3 "declare it public and const: void encodeAsJSON")
tq_mistake_test(const-keyed 4 "declare it public and const: void encodeWithCoder")
tq_mistake_test(subclass-made 5 "derive the class from Subclass")
tq_mistake_test(subclass-registered 5 "derive the class from Subclass" -DTQ_REGISTER_ONLY)
tq_mistake_test(class-name 6 "className must be plain")
tq_mistake_test(coding-name 7 "codingName must be plain")

# Programs may use the names of std and of tq without qualification.
add_test(NAME mistakes.names-of-std COMMAND "${CMAKE_CURRENT_LIST_DIR}/Names.sh"
  "${CMAKE_CXX_COMPILER}" "${TQ_INCLUDE_DIR}")
set_tests_properties(mistakes.names-of-std PROPERTIES LABELS quick)
