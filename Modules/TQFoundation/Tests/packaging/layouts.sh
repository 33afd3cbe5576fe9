# The layout of every public class must not depend on compiler options, so that a debug build of a
# host works with a release build of the library. Compares sizes, member offsets and virtual tables
# in the debug information.
. "$(dirname "$0")/support.sh"

# measure NAME FLAGS...: writes the layouts with these flags to NAME.txt.
measure() {
  to="$TQ_WORK/$1"; shift
  quietly "$CXX" -std=c++20 "$@" -g -femit-class-debug-always \
    -fno-eliminate-unused-debug-types -I"$TQ_SOURCE/Modules/TQFoundation/Include" \
    -c "$tests/layouts.cpp" -o "$to.o"
  readelf --debug-dump=info "$to.o" 2>/dev/null | awk -f "$tests/layouts.awk" | LC_ALL=C sort -u \
    >"$to.txt"
}

measure debug -O0
measure release -O3 -DNDEBUG
diff -u --label debug --label release "$TQ_WORK/debug.txt" "$TQ_WORK/release.txt" ||
  fail "layouts depend on compiler options"

# The comparison covers a plain class, a private member, a template and a virtual slot.
for line in 'tq::Rect byte_size 32' 'tq::Dictionary::keys_ data_member_location' \
  'tq::RTree<int> byte_size' 'tq::Object::description vtable_elem_location'; do
  grep -q "^$line" "$TQ_WORK/debug.txt" || fail "no layout of $line"
done
say "$(grep -c byte_size "$TQ_WORK/debug.txt") types, $(wc -l <"$TQ_WORK/debug.txt") equal facts"
