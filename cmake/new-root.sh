#!/bin/sh
# new-root.sh TARGET OPTION...: makes a new root of this machine's release of Debian with mmdebstrap,
# from the mirrors that apt uses here.
set -eu
target="$1"
shift
. /etc/os-release
apt-get indextargets --format 'deb $(REPO_URI) $(RELEASE) $(COMPONENT)' \
  'Created-By: Packages' 'Origin: Debian' | LC_ALL=C sort -u |
  mmdebstrap --quiet "$@" "$VERSION_CODENAME" "$target" -
