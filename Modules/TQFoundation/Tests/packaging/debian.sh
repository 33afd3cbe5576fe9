# Builds the Debian packages, installs them below a folder that acts as the root of a system, uses
# them there, and removes them. dpkg sees this machine's packages as installed and checks all
# dependencies. It needs no privileges or chroot and changes nothing outside the folder.
. "$(dirname "$0")/support.sh"

debs="$TQ_WORK/debs"
root="$TQ_WORK/root"
say "packages"
quietly "${CMAKE%cmake}cpack" --config "$TQ_BUILD/CPackConfig.cmake" -B "$debs"
rm -rf "$debs/_CPack_Packages"
(cd "$debs" && ls)
quietly lintian --fail-on error,warning --allow-root "$debs"/*.deb

mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates" "$root/var/lib/dpkg/triggers"
awk 'BEGIN { RS = ""; ORS = "\n\n" } !/^Package: (libtqfoundation|tqdoc)/' /var/lib/dpkg/status \
  >"$root/var/lib/dpkg/status"

# in_root ARGUMENTS...: runs dpkg on that root.
in_root() {
  PATH="$PATH:/usr/sbin:/sbin" dpkg --root="$root" --log="$TQ_WORK/dpkg.log" \
    --no-triggers --force-not-root --force-script-chrootless "$@"
}

say "dependencies"
version="$(dpkg-deb -f "$debs/libtqfoundation${TQ_SERIES}"_*.deb Version)"
for deb in "$debs"/libtqfoundation-dev_*.deb "$debs"/tqdoc_*.deb; do
  [ ! -e "$deb" ] || dpkg-deb -f "$deb" Depends | grep -qF "libtqfoundation$TQ_SERIES (= $version)" ||
    fail "$deb does not depend on this version of the library"
done
for library in libc6 libstdc++6 libicu libsimdjson libsqlite3 libglib2.0 libcurl4 libsecret-1-0 libssl3; do
  dpkg-deb -f "$debs/libtqfoundation${TQ_SERIES}"_*.deb Depends | grep -qF "$library" ||
    fail "the library's package does not depend on $library"
done
! in_root -i "$debs"/libtqfoundation-dev_*.deb >/dev/null 2>&1 ||
  fail "the development package was installed without the library"
quietly in_root --purge libtqfoundation-dev

say "installed"
quietly in_root -i "$debs"/*.deb
serves "$root/usr"
if [ -e "$root/usr/bin/tqdoc" ]; then
  runs_with "$root/usr" "$root/usr/bin/tqdoc" --help >/dev/null
  [ -e "$root/usr/share/zsh/vendor-completions/_tqdoc" ] || fail "zsh does not find the completion"
fi

say "removed"
# shellcheck disable=SC2046  # a list of words
quietly in_root --purge $(for deb in "$debs"/*.deb; do dpkg-deb -f "$deb" Package; done)
left="$(find "$root" -path "$root/var/lib/dpkg" -prune -o ! -type d -print)"
[ -z "$left" ] || fail "these files remain: $left"
