#include <TQFoundation/geometry/rects/TQRectConstraints.h>

#include <TQFoundation/base/Axis.h>
#include <TQFoundation/geometry/rects/TQRectAxis.h>

namespace tq {
namespace {

// One axis of a rect in its area. The length of the area is `lead + extent + trail`.
struct Parts {
  double lead, extent, trail;
  bool leadPinned, extentPinned, trailPinned;

  Parts(Axis axis, const Rect& rect, double areaLength, TQRectConstraints constraints) noexcept
      : lead(TQRectMinForAxis(axis, rect)),
        extent(TQRectSizeForAxis(axis, rect)),
        trail(areaLength - TQRectMaxForAxis(axis, rect)) {
    const unsigned bits = static_cast<unsigned>(constraints) >> (axis == Axis::horizontal ? 0 : 3);
    leadPinned = (bits & 1) != 0;
    extentPinned = (bits & 2) != 0;
    trailPinned = (bits & 4) != 0;
  }

  [[nodiscard]] double pinned() const noexcept {
    return (leadPinned ? lead : 0) + (extentPinned ? extent : 0) + (trailPinned ? trail : 0);
  }
  [[nodiscard]] int flexibleCount() const noexcept {
    return !leadPinned + !extentPinned + !trailPinned;
  }
};

double notNegative(double value) noexcept { return value < 0 ? 0 : value; }

struct Placement {
  double origin, extent;
};

Placement place(const Parts& parts, double from, double to) noexcept {
  const double pinned = parts.pinned();
  const int flexible = parts.flexibleCount();
  if (parts.leadPinned && parts.extentPinned) return {parts.lead, parts.extent};

  // Returns the length of a flexible part in the new area.
  const auto resized = [&](double length) {
    if (flexible == 1) return to - pinned;
    if (from - pinned > 0) return length * notNegative((to - pinned) / (from - pinned));
    return length + (to - from) / flexible;
  };
  const double extent = parts.extentPinned ? parts.extent : notNegative(resized(parts.extent));
  if (parts.leadPinned) return {parts.lead, extent};
  // Computed from the pinned maximum edge, so that the distance to it is exact.
  if (parts.trailPinned) return {to - parts.trail - extent, extent};
  return {resized(parts.lead), extent};
}

}  // namespace

Rect TQRectScaledRelativeToSizeWithConstraints(const Rect& rect, Size fromSize, Size toSize,
                                               TQRectConstraints constraints) noexcept {
  if (RectIsNull(rect)) return RectNull;
  const Placement x = place(Parts(Axis::horizontal, rect, fromSize.width, constraints),
                            fromSize.width, toSize.width);
  const Placement y = place(Parts(Axis::vertical, rect, fromSize.height, constraints),
                            fromSize.height, toSize.height);
  return {x.origin, y.origin, x.extent, y.extent};
}

Size TQMinumumSizeForRectWithConstraints(const Rect& rect, Size fromSize,
                                         TQRectConstraints constraints) noexcept {
  if (RectIsNull(rect)) return {};
  return {notNegative(Parts(Axis::horizontal, rect, fromSize.width, constraints).pinned()),
          notNegative(Parts(Axis::vertical, rect, fromSize.height, constraints).pinned())};
}

}  // namespace tq
