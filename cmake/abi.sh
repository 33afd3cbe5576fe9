#!/bin/sh
# abi.sh [TAG]: what hosts built against the last release find changed in the library of today.
# Builds both with debug information and has abidiff compare them. Leaves with 1 when a change may
# break such a host and the version does not say so: before 1.0 a new minor version does, later a
# new major one.
set -eu
cd "$(dirname "$0")/.."

say() { printf '== %s\n' "$*"; }

tag="${1:-$(git describe --tags --abbrev=0 --match 'v[0-9]*' 2>/dev/null || true)}"
if [ -z "$tag" ]; then
  say "no release is tagged yet (v1.2.3): there is nothing to compare with"
  exit 0
fi

# series SOURCE: the part of its version within which nothing may break.
series() {
  sed -n 's/^project(TQFoundation VERSION \([0-9]*\)\.\([0-9]*\).*/\1 \2/p' "$1/CMakeLists.txt" |
    awk '{ print $1 == 0 ? $1 "." $2 : $1 }'
}

# make SOURCE FOLDER: builds the library and installs it and its headers in FOLDER/installed.
make() {
  cmake -S "$1" -B "$2" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTQ_BUILD_TESTS=OFF \
    -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -g -DNDEBUG" -DTQ_BUILD_TOOLS=OFF >/dev/null
  cmake --build "$2" --target TQFoundation
  cmake --install "$2" --prefix "$2/installed" >/dev/null
}

work="$PWD/build/abi"
commit="$(git rev-parse --verify --quiet "$tag^{commit}")" || { say "there is no tag $tag"; exit 2; }
old="$work/$commit"
if [ ! -d "$old/source" ]; then
  mkdir -p "$old/source.part"
  git archive "$tag" | tar -x -C "$old/source.part"
  mv "$old/source.part" "$old/source"
fi
say "building $tag"
make "$old/source" "$old"
say "building what is here"
make "$PWD" "$work/now"

# compare OPTIONS...: abidiff's report and exit code.
compare() {
  abidiff "$@" --headers-dir1 "$old/installed/include" --headers-dir2 "$work/now/installed/include" \
    "$old/installed/lib/libTQFoundation.so" "$work/now/installed/lib/libTQFoundation.so"
}

say "abidiff: $tag, and what is here"
status=0
compare || status=$?
[ $((status & 3)) = 0 ] || { say "abidiff could not compare them"; exit 2; }

status=0
compare --no-added-syms >/dev/null || status=$?  # additions break nobody
before="$(series "$old/source")"
now="$(series .)"
if [ $status = 0 ]; then
  say "hosts built against $tag run with what is here"
elif [ "$before" != "$now" ]; then
  say "hosts built against $tag must be built again, as the step from $before to $now says"
else
  say "hosts built against $tag may break, and the version is still of the series $now"
  exit 1
fi
