#include <TQFoundation/geometry/values/TQRounder.h>

namespace tq {

TQRounder::~TQRounder() = default;

Ref<TQRounder> TQRounder::init() { return Ref<TQRounder>::adopt(new TQRounder); }

Ref<TQRounder> TQRounder::initWithRoundingIncrement(double roundingIncrement) {
  Ref<TQRounder> rounder = init();
  rounder->setRoundingIncrement(roundingIncrement);
  return rounder;
}

double TQRounder::roundValue(double value) const noexcept { return rounder_.round(value); }

double TQRounder::alignValue(double value, double toBase) const noexcept {
  return rounder_.align(value, toBase);
}

double TQRounder::alignValue(double value, double toBase, double minimumMagnitude) const noexcept {
  return rounder_.align(value, toBase, minimumMagnitude);
}

Point TQRounder::roundPoint(Point point, AxisMask mask) const noexcept {
  return rounder_.round(point, mask);
}

Size TQRounder::roundSize(Size size, AxisMask mask) const noexcept {
  return rounder_.round(size, mask);
}

Vector TQRounder::roundVector(Vector vector, AxisMask mask) const noexcept {
  return rounder_.round(vector, mask);
}

}  // namespace tq
