#include <TQFoundation/objects/Number.h>

#include <cmath>

#include <TQFoundation/base/NumberText.h>
#include <TQFoundation/objects/Hash.h>

namespace tq {

bool NumberValue::isEqual(NumberValue other) const noexcept {
  if (isFloating() || other.isFloating()) {
    const double a = doubleValue();
    const double b = other.doubleValue();
    return a == b || (std::isnan(a) && std::isnan(b));
  }
  // Equal bits with different signedness are different values: uint64 is used only above 2^63 - 1.
  return bits_ == other.bits_ &&
         (kind_ == NumberKind::uint64) == (other.kind_ == NumberKind::uint64);
}

std::size_t NumberValue::hash() const noexcept {
  return detail::hashOfDouble(doubleValue());  // numbers of different kinds are compared as doubles
}

std::string NumberValue::text() const {
  char buffer[kNumberTextCapacity];
  return {buffer, writeText(buffer)};
}

char* NumberValue::writeText(char* to) const noexcept {
  switch (kind_) {
    case NumberKind::float32:
      return writeFloat7(to, static_cast<float>(floating()));
    case NumberKind::float64:
      return writeDouble16(to, floating());
    case NumberKind::uint64:
      return writeUnsigned(to, bits_);
    default:
      return writeInteger(to, static_cast<std::int64_t>(bits_));
  }
}

Ref<Number> Number::numberWith(NumberValue value) { return Ref<Number>::adopt(new Number(value)); }

bool Number::isEqual(const Object& other) const {
  return other.kind() == ObjectKind::number &&
         value().isEqual(static_cast<const Number&>(other).value());
}

}  // namespace tq
