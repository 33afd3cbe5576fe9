#pragma once

/// @file Numbers.h
/// Numbers rounded as in an archive, and numbers and other members of archives and styles.

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <TQFoundation/TQFoundation.h>

namespace tqdoc {

/// Returns `value` as it is after saving and reopening: 16 significant digits, within the range of
/// single precision, never NaN. The model holds only such numbers, so saving changes nothing.
[[nodiscard]] double archivable(double value) noexcept;
[[nodiscard]] tq::Point archivable(tq::Point point) noexcept;
[[nodiscard]] tq::Size archivable(tq::Size size) noexcept;
[[nodiscard]] tq::Rect archivable(const tq::Rect& rect) noexcept;
[[nodiscard]] tq::AffineTransform archivable(const tq::AffineTransform& transform) noexcept;

/// Returns the numbers of the member `key`, or no value if it is absent or not an array of numbers.
[[nodiscard]] std::optional<std::vector<double>> decodeNumbers(tq::TQJSONDecoder& decoder,
                                                               std::string_view key);

/// Returns the numbers of an array, or no value if it contains anything else.
[[nodiscard]] std::optional<std::vector<double>> numbersOf(const tq::Array& array);

/// Returns the number that a style has for `key`, or `otherwise`.
[[nodiscard]] double numberIn(const tq::Dictionary& style, std::string_view key, double otherwise);

/// Returns the text that a dictionary has for `key`, or an empty text.
[[nodiscard]] std::string_view textIn(const tq::Dictionary& dictionary, std::string_view key);

/// Encodes a transform as six numbers; the identity is omitted.
void encodeTransform(tq::TQJSONEncoder& encoder, const tq::AffineTransform& transform,
                     std::string_view key);
[[nodiscard]] tq::AffineTransform decodeTransform(tq::TQJSONDecoder& decoder, std::string_view key);

/// Reports an invalid archive to the decoder. The object continues with its default value.
void refuse(tq::TQJSONDecoder& decoder, std::string_view reason);

/// Decodes the member `key`. Returns `otherwise` if it is absent or, with an error, not a T. An
/// object of an unknown class is an error too: it would be lost when the drawing is saved.
template <class T>
[[nodiscard]] tq::Ref<T> decodeAs(tq::TQJSONDecoder& decoder, std::string_view key,
                                  tq::Ref<T> otherwise) {
  if (auto object = decoder.decodeObjectForKey<T>(key)) return object;
  if (decoder.containsValueForKey(key)) {
    refuse(decoder, "the member \"" + std::string(key) + "\" is of the wrong kind");
  }
  return otherwise;
}

}  // namespace tqdoc
