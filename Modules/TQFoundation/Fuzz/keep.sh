#!/bin/sh
# keep.sh NAME...: keeps inputs that ./run fuzz found as seeds of the targets: as few as reach the same
# code, of at most 512 bytes each. Seeds that were named by hand stay; those that were kept before are
# chosen anew.
set -euf
cd "$(dirname "$0")/../../.."
export LSAN_OPTIONS="suppressions=$PWD/cmake/leaks.supp:print_suppressions=0"
is_hash='-regextype posix-extended -regex .*/[0-9a-f]{12,40}'
# shellcheck disable=SC2086  # a list of words
for name in "$@"; do
  seeds="$(find "$PWD/Modules" "$PWD/Tools" -path "*/corpus/$name")"
  found="$PWD/build/asan/found"
  rm -rf "$found/short"
  mkdir -p "$found/$name" "$found/short"
  find "$seeds" $is_hash -exec mv -t "$found/short" {} +
  find "$found/$name" $is_hash -size -513c -exec cp -t "$found/short" {} +
  "build/asan/Modules/TQFoundation/Fuzz/${name}Fuzz" -set_cover_merge=1 -use_counters=0 "$seeds" \
    "$found/short" >"$found/log" 2>&1 || { tail -40 "$found/log"; exit 1; }
  find "$seeds" $is_hash | while read -r file; do
    mv -n "$file" "$seeds/$(basename "$file" | cut -c 1-12)"
  done
  printf '%s: %s seeds\n' "$name" "$(find "$seeds" -type f | wc -l)"
done
