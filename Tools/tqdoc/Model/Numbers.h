#pragma once

/// @file Numbers.h
/// Numbers as an archive gives them back.

#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include <TQFoundation/TQFoundation.h>

namespace tqdoc {

/// `value` as it is after saving and reopening: 16 significant digits, within the range of single
/// precision, never NaN. The model holds nothing else, so a drawing is exactly the same before and
/// after.
[[nodiscard]] double archivable(double value) noexcept;
[[nodiscard]] tq::Point archivable(tq::Point point) noexcept;
[[nodiscard]] tq::Size archivable(tq::Size size) noexcept;
[[nodiscard]] tq::Rect archivable(const tq::Rect& rect) noexcept;
[[nodiscard]] tq::AffineTransform archivable(const tq::AffineTransform& transform) noexcept;

/// The numbers of the member `key`; none when it is absent or is not an array of numbers.
[[nodiscard]] std::optional<std::vector<double>> decodeNumbers(tq::TQJSONDecoder& decoder,
                                                               std::string_view key);

/// The numbers of an array; none when something else is in it.
[[nodiscard]] std::optional<std::vector<double>> numbersOf(const tq::Array& array);

/// The number that a style has under `key`, else `otherwise`.
[[nodiscard]] double numberIn(const tq::Dictionary& style, std::string_view key, double otherwise);

/// As six numbers, left out when it is the identity.
void encodeTransform(tq::TQJSONEncoder& encoder, const tq::AffineTransform& transform,
                     std::string_view key);
[[nodiscard]] tq::AffineTransform decodeTransform(tq::TQJSONDecoder& decoder, std::string_view key);

/// Records that an archive makes no sense. The object goes on with its default.
void refuse(tq::TQJSONDecoder& decoder, std::string_view reason);

}  // namespace tqdoc
