# exports.sh [--write]: checks that the library exports the symbols of Exports.list, and of
# tq::detail only what DetailExports.list gives a reason for. With --write, as `./run exports` calls
# it, Exports.list is rewritten. A constructor or destructor is listed once, although a compiler
# makes two or three symbols of it. No exported class may have its vtable in each program.
. "$(dirname "$0")/support.sh"

list="$TQ_SOURCE/Modules/TQFoundation/Exports.list"
now="$TQ_WORK/exports.txt"
nm -D -C --defined-only "$TQ_BUILD/Modules/TQFoundation/libTQFoundation.so" | cut -d ' ' -f 3- |
  LC_ALL=C sort -u >"$now"
[ -s "$now" ] || fail "the library exports nothing"

details="$TQ_SOURCE/Modules/TQFoundation/DetailExports.list"
sed -n 's/^\(\(vtable\|typeinfo\|typeinfo name\) for \)\?tq::detail::\([A-Za-z0-9_]*\).*/\3/p' "$now" |
  LC_ALL=C sort -u >"$TQ_WORK/detail.txt"
sed -n 's/^\([A-Za-z0-9_]\{1,\}\) .*/\1/p' "$details" | LC_ALL=C sort -u >"$TQ_WORK/reasons.txt"
diff -u --label DetailExports.list --label "the library" "$TQ_WORK/reasons.txt" \
  "$TQ_WORK/detail.txt" || fail "what tq::detail exports has changed; see DetailExports.list"

# clang compares the addresses of vtables when it casts to a final class, libc++ those of type_infos.
weak="$(nm -D -C --defined-only "$TQ_BUILD/Modules/TQFoundation/libTQFoundation.so" |
  sed -n 's/.* [Vu] vtable for \(tq::[^<]*\)$/\1/p')"
[ -z "$weak" ] || fail "programs have vtables of their own for these classes, because all virtual" \
  "functions are in the header; define the destructor in the .cpp:" $weak

if [ "${1:-}" = --write ]; then
  cp "$now" "$list"
fi
diff -u --label Exports.list --label "the library" "$list" "$now" ||
  fail "the exports changed; if this is intended, update the list with ./run exports"
say "$(wc -l <"$now") symbols, as listed"
