#pragma once

/// @file GeometryText.h
/// Points, sizes and rects as text, in the form that archives use.

#include <string>
#include <string_view>

#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// `{x, y}` with 17 significant digits, which read back as the same doubles. Infinities and NaN are
/// written as words, which are no numbers to the reading below.
[[nodiscard]] TQ_EXPORT std::string textFromPoint(Point point);
/// `{width, height}`
[[nodiscard]] TQ_EXPORT std::string textFromSize(Size size);
/// `{{x, y}, {width, height}}`, raw fields
[[nodiscard]] TQ_EXPORT std::string textFromRect(const Rect& rect);

/// The numbers of `text` in order, whatever stands between them; missing ones are 0. Each is a
/// whole decimal: the exponent of `1e+20` belongs to it. `{{1, 2}, {3, 4}}` and `{1, 2, 3, 4}` are
/// one rect. Never by locale, no error, no allocation.
[[nodiscard]] TQ_EXPORT Point pointFromText(std::string_view text) noexcept;
[[nodiscard]] TQ_EXPORT Size sizeFromText(std::string_view text) noexcept;
[[nodiscard]] TQ_EXPORT Rect rectFromText(std::string_view text) noexcept;

}  // namespace tq
