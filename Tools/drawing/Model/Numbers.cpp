#include "Model/Numbers.h"

#include <array>

namespace tqdoc {

double archivable(double value) noexcept {
  std::array<char, tq::kNumberTextCapacity> text;
  const char* const end = tq::writeDouble16(text.data(), tq::TQJSONClampedDouble(value));
  return tq::scanDouble(text.data(), end).value;
}

tq::Point archivable(tq::Point point) noexcept {
  return {archivable(point.x), archivable(point.y)};
}

tq::Size archivable(tq::Size size) noexcept {
  return {archivable(size.width), archivable(size.height)};
}

tq::Rect archivable(const tq::Rect& rect) noexcept {
  return {archivable(rect.origin), archivable(rect.size)};
}

tq::AffineTransform archivable(const tq::AffineTransform& t) noexcept {
  return {archivable(t.a), archivable(t.b),  archivable(t.c),
          archivable(t.d), archivable(t.tx), archivable(t.ty)};
}

std::optional<std::vector<double>> numbersOf(const tq::Array& array) {
  std::vector<double> numbers;
  numbers.reserve(array.count());
  for (std::size_t i = 0; i < array.count(); ++i) {
    if (array.isPacked()) {
      numbers.push_back(array.numberAtIndex(i).doubleValue());
    } else if (const auto* number = tq::objectCast<tq::Number>(&array.objectAtIndex(i))) {
      numbers.push_back(number->doubleValue());
    } else {
      return std::nullopt;
    }
  }
  return numbers;
}

std::optional<std::vector<double>> decodeNumbers(tq::TQJSONDecoder& decoder, std::string_view key) {
  const auto array = tq::refCast<tq::Array>(decoder.decodeObjectForKey(key));
  if (!array) return std::nullopt;
  return numbersOf(*array);
}

double numberIn(const tq::Dictionary& style, std::string_view key, double otherwise) {
  const auto* number = tq::objectCast<tq::Number>(style.objectForKey(key));
  return number != nullptr ? number->doubleValue() : otherwise;
}

std::string_view textIn(const tq::Dictionary& dictionary, std::string_view key) {
  const auto* text = tq::objectCast<tq::String>(dictionary.objectForKey(key));
  return text != nullptr ? text->view() : std::string_view();
}

void encodeTransform(tq::TQJSONEncoder& encoder, const tq::AffineTransform& t,
                     std::string_view key) {
  if (t == tq::AffineTransformIdentity) return;
  const std::array numbers{t.a, t.b, t.c, t.d, t.tx, t.ty};
  encoder.encodeObject(tq::Array::arrayWithNumbers(std::span<const double>(numbers)), key);
}

tq::AffineTransform decodeTransform(tq::TQJSONDecoder& decoder, std::string_view key) {
  if (!decoder.containsValueForKey(key)) return {};
  const auto n = decodeNumbers(decoder, key);
  if (!n || n->size() != 6) {
    refuse(decoder, "a transform does not have six numbers");
    return {};
  }
  return {(*n)[0], (*n)[1], (*n)[2], (*n)[3], (*n)[4], (*n)[5]};
}

void refuse(tq::TQJSONDecoder& decoder, std::string_view reason) {
  decoder.setError(tq::Error::errorWithDomain("com.korvan.tqdoc", 1, reason));
}

}  // namespace tqdoc
