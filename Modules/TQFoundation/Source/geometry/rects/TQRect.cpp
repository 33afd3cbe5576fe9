#include <TQFoundation/geometry/rects/TQRect.h>

#include <functional>

#include <TQFoundation/geometry/rects/detail/FixedText.h>

namespace tq {

Ref<TQRect> TQRect::initWithRect(const Rect& rect) { return Ref<TQRect>::adopt(new TQRect(rect)); }

Ref<TQRect> TQRect::rectWithRect(const Rect& rect) { return initWithRect(rect); }

Ref<Object> TQRect::copy() const { return initWithRect(rect_); }

bool TQRect::isEqual(const Object& other) const {
  if (this == &other) return true;
  if (&other.objectClass() != &objectClass()) return false;
  return RectEqualToRect(rect_, static_cast<const TQRect&>(other).rect_);
}

std::size_t TQRect::hash() const {
  // Hashes the standardised fields, which equality compares. std::hash is the same for both zeros.
  const auto [origin, size] = RectStandardize(rect_);
  std::size_t hash = 0;
  for (const double field : {origin.x, origin.y, size.width, size.height}) {
    hash = hash * 1000003 ^ std::hash<double>{}(field);
  }
  return hash;
}

std::string TQRect::description() const { return detail::fixedText(rect_); }

}  // namespace tq
