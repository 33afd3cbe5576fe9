#include <TQFoundation/geometry/values/Length.h>

#include <iterator>
#include <limits>

namespace tq {
namespace {

struct UnitFacts {
  std::string_view symbol;
  double perInch;  // 0 for px, which uses the resolution
};

constexpr UnitFacts kUnits[] = {{"px", 0},    {"pt", 72},   {"pc", 6},
                                {"mm", 25.4}, {"cm", 2.54}, {"in", 1}};

const UnitFacts* factsOf(LengthUnit unit) noexcept {
  const auto index = static_cast<unsigned>(unit);
  return index < std::size(kUnits) ? &kUnits[index] : nullptr;
}

double perInch(LengthUnit unit, double pixelsPerInch) noexcept {
  if (unit == LengthUnit::px) return pixelsPerInch;
  const UnitFacts* facts = factsOf(unit);
  return facts != nullptr ? facts->perInch : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace

std::string_view LengthUnitSymbol(LengthUnit unit) noexcept {
  const UnitFacts* facts = factsOf(unit);
  return facts != nullptr ? facts->symbol : std::string_view();
}

std::optional<LengthUnit> LengthUnitFromSymbol(std::string_view symbol) noexcept {
  for (std::size_t i = 0; i < std::size(kUnits); ++i) {
    if (kUnits[i].symbol == symbol) return static_cast<LengthUnit>(i);
  }
  return std::nullopt;
}

Length Length::converted(LengthUnit to, double pixelsPerInch) const noexcept {
  if (to == unit && factsOf(unit) != nullptr) return *this;
  return {value * perInch(to, pixelsPerInch) / perInch(unit, pixelsPerInch), to};
}

}  // namespace tq
