# Compares the binary interface of the headers with Interface.list, and checks that the comparison
# finds each kind of break: breaks are planted in a copy of the headers.
. "$(dirname "$0")/support.sh"

compare() { "$TQ_SOURCE/cmake/interface.py" "$@" >"$TQ_WORK/report.txt"; }

if ! compare; then
  cat "$TQ_WORK/report.txt"
  fail "the interface changed; docs/Hacking.md says what is permitted within a series"
fi
tail -n 1 "$TQ_WORK/report.txt"

headers="$TQ_WORK/include/TQFoundation"
mkdir "$TQ_WORK/include"
cp -R "$TQ_SOURCE/Modules/TQFoundation/Source" "$headers"

# plant FILE COMMAND: changes a header with sed.
plant() {
  sed -i.before "$2" "$headers/$1"
  ! cmp -s "$headers/$1" "$headers/$1.before" || fail "nothing to change in $1"
}
plant objects/Null.h '/~Null() override/d'
! compare --include "$TQ_WORK/include" 2>"$TQ_WORK/vtable.txt" &&
  grep -q "class Null has a vtable in each program" "$TQ_WORK/vtable.txt" ||
  fail "a class without a virtual function outside of its header is accepted"
mv "$headers/objects/Null.h.before" "$headers/objects/Null.h"
plant geometry/values/AnchoredRect.h 's/^  TQCorner anchor .*/&\n  bool planted = false;/'
plant base/Axis.h 's/minX = 0, minY = 1/minY = 0, minX = 1/'
plant objects/Object.h 's/^.*virtual bool isEqual(/  virtual void planted() const;\n&/'
plant geometry/values/AnchoredRect.h 's/TQ_EXPORT Rect rect()/TQ_EXPORT Size rect()/'
plant serialisation/TQJSONFormat.h 's/\(TQJSONClassKey = "\)/\1planted/'
! compare --include "$TQ_WORK/include" || fail "the comparison accepts the planted breaks"

while read -r fact; do
  grep -qF -- "$fact" "$TQ_WORK/report.txt" || { cat "$TQ_WORK/report.txt"; fail "not reported: $fact"; }
done <<'END'
+ class AnchoredRect: at 36 planted bool
- enum Edge : int: minX = 0
+ class Object: virtual planted() const -> void, number 3
- class AnchoredRect: function rect() const -> Rect
- free: variable TQJSONClassKey
END
say "the planted breaks are reported"
