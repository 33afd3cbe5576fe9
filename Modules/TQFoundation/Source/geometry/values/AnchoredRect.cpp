#include <TQFoundation/geometry/values/AnchoredRect.h>

#include <TQFoundation/geometry/rects/TQRectCorners.h>

namespace tq {

AnchoredRect AnchoredRect::hold(const Rect& rect, TQCorner anchor) noexcept {
  return {TQRectPointForCorner(rect, anchor), RectStandardize(rect).size, anchor};
}

Rect AnchoredRect::rect() const noexcept { return TQRectWithCornerAtPoint(size, position, anchor); }

AnchoredRect AnchoredRect::anchoredAt(TQCorner newAnchor) const noexcept {
  return hold(rect(), newAnchor);
}

AnchoredRect AnchoredRect::toParentOf(const GeometrySystem& system) const noexcept {
  return hold(system.rectToParent(rect()), anchor);
}

}  // namespace tq
