#!/bin/sh
# Compiles a program that uses the names of std and of tq without qualification. It fails for each
# public name that both have, unless both are functions.
#   Names.sh <compiler> <folder of the headers>
set -eu
compiler=$1
include=$2
headers=$(sed -n 's/^#include <\(.*\)>/\1/p' "$include/TQFoundation/TQFoundation.h")

# Prints the names that are declared in namespace tq itself. Such declarations start a line.
names() {
  (cd "$include" && cat $headers) | awk '
    /^namespace / { inside = ($2 == "tq"); start = NR }
    /^}$/ && NR == start + 2 { inside = 1 }  # a namespace of one line has no comment at its end
    /^}  \/\/ namespace / { inside = ($4 != "tq"); next }
    !inside { next }
    { gsub(/TQ_[A-Z_]+(\("[^"]*"\))? |\[\[[^]]*\]\] /, ""); sub(/^decltype\(auto\)/, "auto") }
    /^(template|friend|requires|namespace|static_assert)/ { next }
    /^[A-Za-z_0-9]+\(/ { sub(/\(.*/, ""); print; next }  # below its type
    /^(class|struct|enum|using) / { sub(/^enum class /, "enum "); print $2; next }
    /^[A-Za-z][^({=;]* [*&]*[A-Za-z_0-9]+[({=; ]/ {
      sub(/ *[({=;].*/, ""); sub(/.*[ *&>]/, ""); print
    }' | grep -xE '[A-Za-z][A-Za-z_0-9]*' | grep -vx operator | sort -u
}

{
  for standard in algorithm any array atomic bit bitset charconv chrono cmath compare complex \
    concepts condition_variable deque exception filesystem forward_list fstream functional future \
    iostream iterator limits list locale map memory memory_resource mutex numbers numeric optional \
    ostream queue random ranges ratio regex scoped_allocator set shared_mutex span sstream stack \
    stdexcept streambuf string string_view system_error thread tuple type_traits typeindex \
    unordered_map unordered_set utility valarray variant vector; do
    echo "#include <$standard>"
  done
  echo '#include <TQFoundation/TQFoundation.h>'
  echo 'using namespace std;'
  echo 'using namespace tq;'
  names | while read -r name; do echo "namespace names_$name { using ::$name; }"; done
} | "$compiler" -std=c++20 -fsyntax-only "-I$include" -x c++ -
echo "$(names | wc -l) names"
