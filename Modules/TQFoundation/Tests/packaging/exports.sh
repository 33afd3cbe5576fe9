# exports.sh [--write]: checks that the library exports the symbols of Exports.list, and of
# tq::detail only what DetailExports.list gives a reason for. With --write, as `./run exports` calls
# it, Exports.list is rewritten. A constructor or destructor is listed once, although a compiler
# makes two or three symbols of it.
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

if [ "${1:-}" = --write ]; then
  cp "$now" "$list"
fi
diff -u --label Exports.list --label "the library" "$list" "$now" ||
  fail "the exports changed; if this is intended, update the list with ./run exports"
say "$(wc -l <"$now") symbols, as listed"
