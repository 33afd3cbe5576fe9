#!/bin/sh
# CheckRooms.sh <TQFoundation module> <list of internal headers> [<list of object files> <nm>]
# Fails when a file includes, or an object file calls, what Rooms.list does not allow. Without object
# files only the includes are checked. The lists have one path on each line.
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
awk -f "$(dirname "$0")/CheckRooms.awk" "$module/Rooms.list" "$facts"
