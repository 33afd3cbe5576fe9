#!/bin/sh
# abi.sh TAG: compares the binary interface of this tree with that of a release. Builds both with
# debug information and runs abidiff. The exit code is 1 if a change may break programs built against
# the release and the version does not allow it: before 1.0 a new minor version allows it, later a
# new major version.
set -eu
cd "$(dirname "$0")/.."

say() { printf '== %s\n' "$*"; }

tag="${1:?the tag of a release}"

# series SOURCE: prints the part of its version within which the interface must stay compatible.
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
say "building this tree"
make "$PWD" "$work/now"

# compare OPTIONS...: prints abidiff's report and returns its exit code.
compare() {
  abidiff "$@" --headers-dir1 "$old/installed/include" --headers-dir2 "$work/now/installed/include" \
    "$(find "$old/installed" -name libTQFoundation.so)" \
    "$(find "$work/now/installed" -name libTQFoundation.so)"
}

say "abidiff: $tag and this tree"
status=0
compare || status=$?
[ $((status & 3)) = 0 ] || { say "abidiff failed"; exit 2; }

status=0
compare --no-added-syms >/dev/null || status=$?  # additions are compatible
before="$(series "$old/source")"
now="$(series .)"
if [ $status = 0 ]; then
  say "programs built against $tag run with this tree"
elif [ "$before" != "$now" ]; then
  say "programs built against $tag must be rebuilt; the version changes from $before to $now"
else
  say "programs built against $tag may break, but the series is still $now"
  exit 1
fi
