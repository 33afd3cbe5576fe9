#include "Snapping.h"

#include <optional>

namespace sketch {
namespace {

/// Returns the offset that puts a handle of `bounds` onto a crossing.
[[nodiscard]] std::optional<tq::Vector> ontoCrossing(tq::Vector offset, const tq::Rect& bounds,
                                                     const SnapTargets& targets) {
  std::optional<tq::Vector> best;
  double reach = targets.reach;
  for (int corner = 0; corner <= static_cast<int>(tq::TQCorner::center); ++corner) {
    const tq::Point handle = tq::TQRectPointForCorner(bounds, static_cast<tq::TQCorner>(corner));
    const auto distance = [&](tq::Point p) { return tq::VectorGetLength(p - (handle + offset)); };
    const auto nearest = tq::nearestNeighbour(targets.crossings, distance, reach);
    if (nearest == targets.crossings.end()) continue;
    best = *nearest - handle;
    reach = distance(*nearest);
  }
  return best;
}

}  // namespace

tq::Vector snapped(tq::Vector offset, const tq::Rect& bounds, const SnapTargets& targets) {
  if (const auto found = ontoCrossing(offset, bounds, targets)) return *found;
  if (targets.gridStep == 0) return offset;
  const tq::Rounder<double> grid(targets.gridStep);
  return grid.round(bounds.origin + offset) - bounds.origin;
}

}  // namespace sketch
