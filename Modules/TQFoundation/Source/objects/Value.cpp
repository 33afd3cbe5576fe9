#include <TQFoundation/objects/Value.h>

#include <cstring>

#include <TQFoundation/objects/GeometryText.h>
#include <TQFoundation/objects/Hash.h>

namespace tq {

Value::Value(std::string_view type, std::span<const std::byte> bytes)
    : Subclass(ObjectKind::value), type_(type), bytes_(bytes.begin(), bytes.end()) {}

Ref<Value> Value::valueWithBytes(std::string_view typeSignature, std::span<const std::byte> bytes) {
  return Ref<Value>::adopt(new Value(typeSignature, bytes));
}

Ref<Value> Value::valueWithPoint(Point point) { return valueWith(kPointType, point); }
Ref<Value> Value::valueWithSize(Size size) { return valueWith(kSizeType, size); }
Ref<Value> Value::valueWithRect(const Rect& rect) { return valueWith(kRectType, rect); }
Ref<Value> Value::valueWithRange(Range range) { return valueWith(kRangeType, range); }

bool Value::read(std::string_view typeSignature, std::span<std::byte> into) const noexcept {
  if (type_ != typeSignature || bytes_.size() != into.size()) return false;
  std::memcpy(into.data(), bytes_.data(), into.size());
  return true;
}

bool Value::isEqual(const Object& other) const {
  if (other.kind() != ObjectKind::value) return false;
  const auto& value = static_cast<const Value&>(other);
  return type_ == value.type_ && bytes_ == value.bytes_;
}

std::size_t Value::hash() const {
  const std::string_view content(reinterpret_cast<const char*>(bytes_.data()), bytes_.size());
  return detail::hashJoined(detail::hashOfBytes(type_), detail::hashOfBytes(content));
}

std::string Value::description() const {
  if (const auto point = pointValue()) return textFromPoint(*point);
  if (const auto size = sizeValue()) return textFromSize(*size);
  if (const auto rect = rectValue()) return textFromRect(*rect);
  return "<" + type_ + ", " + std::to_string(bytes_.size()) + " bytes>";
}

}  // namespace tq
