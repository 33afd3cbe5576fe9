#include <TQFoundation/objects/GeometryText.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <string>
#include <string_view>

#include "../support/Bytes.h"

// Reads arbitrary bytes as the text of a point, a size and a rect. All three must read the same
// numbers. Finite numbers must be unchanged after they are written and read again.

namespace {

using namespace tq;
using fuzz::require;

bool isSame(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const Point point = pointFromText(text);
  const Size extent = sizeFromText(text);
  const Rect rect = rectFromText(text);
  require(isSame(point.x, extent.width) && isSame(point.y, extent.height));
  require(isSame(point.x, rect.origin.x) && isSame(point.y, rect.origin.y));
  const double numbers[] = {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
  if (!std::ranges::all_of(numbers, [](double x) { return std::isfinite(x); })) return 0;
  const Rect again = rectFromText(textFromRect(rect));
  require(isSame(again.origin.x, rect.origin.x) && isSame(again.origin.y, rect.origin.y));
  require(isSame(again.size.width, rect.size.width));
  require(isSame(again.size.height, rect.size.height));
  return 0;
}
