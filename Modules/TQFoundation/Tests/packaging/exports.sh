# exports.sh [--write]: compares the exported symbols with Exports.list; --write updates the list
# (`./run exports`). Constructors and destructors, which exist two or three times, are listed once.
. "$(dirname "$0")/support.sh"

list="$TQ_SOURCE/Modules/TQFoundation/Exports.list"
now="$TQ_WORK/exports.txt"
nm -D -C --defined-only "$TQ_BUILD/Modules/TQFoundation/libTQFoundation.so" | cut -d ' ' -f 3- |
  LC_ALL=C sort -u >"$now"
[ -s "$now" ] || fail "the library exports nothing"
if [ "${1:-}" = --write ]; then
  cp "$now" "$list"
fi
diff -u --label Exports.list --label "the library" "$list" "$now" ||
  fail "the exports changed; if this is intended, update the list with ./run exports"
say "$(wc -l <"$now") symbols, as listed"
