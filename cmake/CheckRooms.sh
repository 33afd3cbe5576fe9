#!/bin/sh
# CheckRooms.sh <TQFoundation module> <list of internal headers> [<list of object files> <nm>]
# Fails when a file includes, or an object file calls, what Rooms.list does not allow, and when
# docs/Dependencies.md does not name the files that include other libraries. Without object files only
# the includes are checked. The lists have one path on each line.
set -eu

module=$1
internal=$2
objects=${3:-}
nm=${4:-}

facts=$(mktemp)
trap 'rm -f "$facts"' EXIT
sed 's/^/internal /' "$internal" >"$facts"
(cd "$module/Source" && find . -name '*.h' -o -name '*.cpp') | sed 's|^\./||' | LC_ALL=C sort |
  (cd "$module/Source" && xargs grep -E '^#[ ]*include' /dev/null) |
  sed 's/:/ /; s/^/include /' >>"$facts"
if [ -n "$objects" ]; then
  tr '\n' '\0' <"$objects" | xargs -0 "$nm" -A -P |
    sed -E 's|^.*/Source/([^:]*)\.o: ([^ ]+) (.).*|symbol \1 \2 \3|' >>"$facts"
  grep -q '^symbol ' "$facts" || { echo "no symbols in the object files" >&2; exit 1; }
fi
# Dependencies.md names the files that include other libraries.
including=$(cd "$module/Source/platform" && find . -name '*.cpp' -exec grep -lE \
  '^#[ ]*include <(curl|fmt|glib|libdeflate|libsecret|lz4|lzma|mimalloc|openssl|simdjson|sqlite3|tbb|unicode|zlib)[./-]' {} + |
  sed 's,.*/,,' | LC_ALL=C sort -u)
named=$(sed -n '/^| library | for/,/^$/p' "$module/../../docs/Dependencies.md" | cut -d '|' -f 4 |
  grep -o '[A-Za-z0-9]*\.cpp' | LC_ALL=C sort -u)
[ "$including" = "$named" ] || {
  printf 'Dependencies.md does not name the files that include other libraries:\n%s\n' "$including" >&2
  exit 1
}
awk -f "$(dirname "$0")/CheckRooms.awk" "$module/Rooms.list" "$facts"
