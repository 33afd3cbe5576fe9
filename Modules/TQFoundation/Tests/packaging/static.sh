# Builds and installs the static library, and links consumers to it.
. "$(dirname "$0")/support.sh"

configure_alike "$TQ_SOURCE" "$TQ_WORK/build" -DTQ_STATIC=ON -DTQ_BUILD_TOOLS=OFF
quietly "$CMAKE" --build "$TQ_WORK/build" --target TQFoundation
quietly "$CMAKE" --install "$TQ_WORK/build" --prefix "$TQ_WORK/installed"
serves "$TQ_WORK/installed"
