#include <TQFoundation/geometry/rects/TQSize.h>

#include <cmath>

namespace tq {

double TQSizeGetMagnitude(Size size) noexcept {
  return std::sqrt(size.width * size.width + size.height * size.height);
}

Size TQSizeNormalise(Size size) noexcept {
  const double magnitude = TQSizeGetMagnitude(size);
  if (!(magnitude >= 1e-09)) return size;
  return {size.width / magnitude, size.height / magnitude};
}

}  // namespace tq
