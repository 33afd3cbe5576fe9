#include <TQFoundation/geometry/values/Length.h>

#include "geometry/Expectations.h"

namespace tq {
namespace {

TEST(Length, ConvertsAtAResolution) {
  const struct {
    Length from;
    LengthUnit to;
    double expected;
  } cases[] = {
      {{1, LengthUnit::in}, LengthUnit::px, 96},   {{48, LengthUnit::px}, LengthUnit::pt, 36},
      {{25.4, LengthUnit::mm}, LengthUnit::in, 1}, {{2.54, LengthUnit::cm}, LengthUnit::pc, 6},
      {{1, LengthUnit::pc}, LengthUnit::pt, 12},   {{0.1, LengthUnit::mm}, LengthUnit::mm, 0.1},
      {{-72, LengthUnit::pt}, LengthUnit::in, -1},
  };
  for (const auto& c : cases) {
    const Length converted = c.from.converted(c.to, 96);
    EXPECT_DOUBLE_EQ(converted.value, c.expected);
    EXPECT_EQ(converted.unit, c.to);
  }
  const auto unknown = static_cast<LengthUnit>(6);
  EXPECT_TRUE(std::isnan((Length{1, unknown}).converted(unknown, 96).value));
  EXPECT_EQ(LengthUnitSymbol(unknown), "");
}

TEST(Length, SymbolsReadBack) {
  for (int i = 0; i < 6; ++i) {
    const auto unit = static_cast<LengthUnit>(i);
    EXPECT_EQ(LengthUnitFromSymbol(LengthUnitSymbol(unit)), unit);
  }
  EXPECT_EQ(LengthUnitFromSymbol("mm"), LengthUnit::mm);
  EXPECT_EQ(LengthUnitFromSymbol("MM"), std::nullopt);
}

}  // namespace
}  // namespace tq
