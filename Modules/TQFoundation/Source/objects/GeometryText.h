#pragma once

/// @file GeometryText.h
/// Text of points, sizes and rects, in the form that archives use.

#include <string>
#include <string_view>

#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Returns `{x, y}` with 17 significant digits. Reading it returns the same doubles. Infinities and
/// NaN are written as words, which the functions below do not read as numbers.
[[nodiscard]] TQ_EXPORT std::string textFromPoint(Point point);
/// Returns `{width, height}`.
[[nodiscard]] TQ_EXPORT std::string textFromSize(Size size);
/// Returns `{{x, y}, {width, height}}` of the raw fields.
[[nodiscard]] TQ_EXPORT std::string textFromRect(const Rect& rect);

/// Reads the numbers of `text` in order and ignores all other characters. Missing numbers are 0.
/// Numbers may have an exponent, such as `1e+20`. `{{1, 2}, {3, 4}}` and `{1, 2, 3, 4}` are the
/// same rect. Independent of the locale; no errors, no allocation.
[[nodiscard]] TQ_EXPORT Point pointFromText(std::string_view text) noexcept;
[[nodiscard]] TQ_EXPORT Size sizeFromText(std::string_view text) noexcept;
[[nodiscard]] TQ_EXPORT Rect rectFromText(std::string_view text) noexcept;

}  // namespace tq
