#include <TQFoundation/objects/Number.h>

#include <charconv>
#include <cmath>
#include <functional>

namespace tq {

bool NumberValue::isEqual(NumberValue other) const noexcept {
  if (isFloating() || other.isFloating()) {
    const double a = doubleValue();
    const double b = other.doubleValue();
    return a == b || (std::isnan(a) && std::isnan(b));
  }
  // A value above 2^63 - 1 has the kind uint64 and no other, so equal bits of unequal signedness
  // never meet.
  return bits_ == other.bits_ &&
         (kind_ == NumberKind::uint64) == (other.kind_ == NumberKind::uint64);
}

std::size_t NumberValue::hash() const noexcept {
  const double value = doubleValue();  // what numbers of different kinds are compared by
  if (std::isnan(value)) return 0x7FF8;
  return std::hash<double>{}(value);  // +0 and -0 hash alike
}

std::string NumberValue::text() const {
  char buffer[40];
  std::to_chars_result end{};
  if (isFloating()) {
    const double value = floating();
    if (std::isnan(value)) return "nan";
    end = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general,
                        kind_ == NumberKind::float32 ? 7 : 16);
  } else if (kind_ == NumberKind::uint64) {
    end = std::to_chars(buffer, buffer + sizeof buffer, bits_);
  } else {
    end = std::to_chars(buffer, buffer + sizeof buffer, static_cast<std::int64_t>(bits_));
  }
  return {buffer, end.ptr};
}

Ref<Number> Number::numberWith(NumberValue value) { return Ref<Number>::adopt(new Number(value)); }

bool Number::isEqual(const Object& other) const {
  return other.kind() == ObjectKind::number &&
         value().isEqual(static_cast<const Number&>(other).value());
}

}  // namespace tq
