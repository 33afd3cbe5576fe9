# Compiler launcher: copies object files that TQ_BUILD has already compiled. configure_alike checks
# before that the commands are equal.
out=""
for word in "$@"; do
  [ "${before:-}" != -o ] || out="$word"
  before="$word"
done
made="$TQ_BUILD/Modules/${out#*Modules/}"
case "$out" in
  */TQFoundationObjects.dir/*) cp "$made" "$out" ;;
  *) exec "$@" ;;
esac
