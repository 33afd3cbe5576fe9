#!/bin/sh
# clean-root.sh BUILD: builds the Debian packages, installs them in a new system that has nothing but
# their dependencies, uses them there, and removes them. The system is deleted at the end.
set -eu
source="$(cd "$(dirname "$0")/../../../.." && pwd)"
work="$1/clean-root"
rm -rf "$work"
mkdir -p "$work/packages"
cpack --config "$1/CPackConfig.cmake" -B "$work/packages" >"$work/log"
rm -rf "$work/packages/_CPack_Packages"
cp -R "$source/Modules/TQFoundation/Tests/packaging/consumer" "$work/packages/app"
cp "$source"/Tools/tqdoc/Compare/features/*.svg "$work/packages"

cat >"$work/packages/try.sh" <<'END'
set -eu
cd /packages
export DEBIAN_FRONTEND=noninteractive
say() { printf '== %s\n' "$*"; }
fail() { printf 'FAILED: %s\n' "$*" >&2; exit 1; }

# add PACKAGE...: installs with dpkg, and what the packages depend on from the mirrors.
add() {
  dpkg -i "$@" >/dev/null 2>&1 || apt-get install -qq -f --no-install-recommends >/dev/null
  dpkg -i "$@" >/dev/null
}

say "tqdoc and the library"
add ./libtqfoundation[0-9]*.deb ./tqdoc_*.deb
library="$(ldd /usr/bin/tqdoc | sed -n 's/.*libTQFoundation.* => \(.*\) (.*/\1/p')"
case "$(readlink -f "$library")" in /usr/lib/*) ;; *) fail "tqdoc loads ${library:-no library}" ;; esac
tqdoc check --draw ./*.svg
tqdoc show ./clip-rule.svg >/dev/null  # computes digests, with a library loaded at its first use
tqdoc diff "$(ls ./*.svg | head -n 1)" "$(ls ./*.svg | tail -n 1)" >/dev/null && fail "no differences"
[ $? = 1 ] || fail "tqdoc diff failed"

say "development"
apt-get install -qq --no-install-recommends g++ cmake ninja-build pkg-config >/dev/null
add ./libtqfoundation-dev_*.deb
cmake -S app -B app/build -G Ninja >/dev/null
cmake --build app/build >/dev/null
app/build/app
# shellcheck disable=SC2046  # a list of words
c++ -std=c++20 app/main.cpp -o app/app $(pkg-config --cflags --libs TQFoundation)
app/app

say "removed"
dpkg --purge tqdoc libtqfoundation-dev $(dpkg-query -W -f '${Package}\n' 'libtqfoundation[0-9]*') >/dev/null
left="$(find / -xdev -iname '*tqfoundation*' ! -path '/packages/*' ! -path '/proc/*')"
[ -z "$left" ] || fail "these files remain: $left"
END

"$source/cmake/new-root.sh" /dev/null --format=null --variant=apt \
  --customize-hook="mkdir \"\$1/packages\"" --customize-hook="sync-in $work/packages /packages" \
  --customize-hook='chroot "$1" sh /packages/try.sh'
