#include <TQFoundation/geometry/rects/TQPrimitiveFunctions.h>

#include <TQFoundation/geometry/rects/detail/FixedText.h>
#include <TQFoundation/platform/log/PlainLog.h>

namespace tq {

void TQLogRect(const Rect& rect) { plainLog(detail::fixedText(rect)); }

void TQLogSize(Size size) { plainLog(detail::fixedText({{"w", size.width}, {"h", size.height}})); }

void TQLogPoint(Point point) { plainLog(detail::fixedText({{"x", point.x}, {"y", point.y}})); }

}  // namespace tq
