#include <TQFoundation/geometry/values/Rounder.h>

#include <cmath>

namespace tq {

template <std::floating_point Value>
Value Rounder<Value>::align(Value value, Value to) const noexcept {
  const Value distance = round(value - to);
  return distance + to;
}

template <std::floating_point Value>
Value Rounder<Value>::align(Value value, Value to, Value minimumMagnitude) const noexcept {
  Value result = align(value, to);
  if (!(minimumMagnitude > std::fabs(result))) return result;
  const Value step = value >= 0 ? increment_ : -increment_;
  const Value bound = value >= 0 ? minimumMagnitude : -minimumMagnitude;
  if (increment_ == 0) return bound + increment_;
  for (int steps = 0; minimumMagnitude > std::fabs(result); ++steps) {
    if (steps == kStepLimit) {
      // With a negative increment the bound is on the other side.
      const Value ahead = increment_ < 0 ? -bound : bound;
      if (ahead + step == ahead) return ahead;
      const Value landing = result + std::ceil((ahead - result) / step) * step;
      const bool reached = std::isfinite(landing) && !(minimumMagnitude > std::fabs(landing));
      return reached ? landing : ahead;
    }
    result += step;
  }
  return result;
}

template class Rounder<float>;
template class Rounder<double>;
template class Rounder<long double>;

}  // namespace tq
