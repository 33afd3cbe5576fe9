# exports.sh [--write]: the symbols that the library exports are those of Exports.list, which
# --write makes anew (`./run exports` calls it so). Constructors and destructors, of which a
# compiler makes two or three, stand there once.
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
  fail "exports have changed; if they are meant to, ./run exports writes the list anew"
say "$(wc -l <"$now") symbols, as listed"
