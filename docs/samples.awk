# awk -v page=docs/Objects.md -f samples.awk docs/Objects.md
# Prints the ```cpp blocks of a page as one program, in order. A block that defines a class, a name or
# a function is put at namespace scope, so that later blocks can use it. Any other block is the body
# of a function, which is called. An `int main()` is called, too, and must return 0.

function finish() {
  place = "#line " start " \"" page "\"\n"
  if (isAtNamespaceScope) {
    code = code place body
  } else {
    code = code "static void sample" blocks "() {\n" place body "}\n"
    calls = calls "  sample" blocks "();\n"
  }
}

/^```cpp$/ {
  inBlock = 1
  blocks++
  body = ""
  isAtNamespaceScope = 0
  start = NR + 1
  next
}
/^```$/ {
  if (inBlock) finish()
  inBlock = 0
  next
}
!inBlock { next }
/^#include/ {
  includes = includes $0 "\n"
  $0 = ""
}
/^(struct|class|enum|template|namespace|using|extern) / ||
    (/^[A-Za-z].*\)( const)?( noexcept)? [{]/ && !/^(if|for|while|switch) / && !/\[.*\]\(/) {
  isAtNamespaceScope = 1
}
/^int main\(\)/ {
  sub(/main/, "program" blocks)
  calls = calls "  if (program" blocks "() != 0) return 1;\n"
}
{ body = body $0 "\n" }

END {
  print includes "#include <TQFoundation/TQFoundation.h>\nusing namespace tq;\n"
  print code
  print "int main() {\n" calls "  return 0;\n}"
}
