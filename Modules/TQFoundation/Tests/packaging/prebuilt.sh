# Stands before the compiler while a parent project builds the library: what TQ_BUILD has compiled
# already is copied from there. subproject.sh has seen to it that the commands are the same.
out=""
for word in "$@"; do
  [ "${before:-}" != -o ] || out="$word"
  before="$word"
done
made="$TQ_BUILD/Modules/${out#*/Modules/}"
case "$out" in
  */TQFoundationObjects.dir/*) cp "$made" "$out" ;;
  *) exec "$@" ;;
esac
