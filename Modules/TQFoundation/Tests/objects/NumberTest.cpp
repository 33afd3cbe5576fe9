#include <TQFoundation/objects/Number.h>

#include "support/Test.h"

namespace {

constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();
constexpr std::uint64_t kBeyond = std::uint64_t{1} << 63;

TEST(Number, KeepsTheKindItIsMadeFrom) {
  const test::Rows<char, std::vector<NumberValue>> cases{
      {'c', {true, static_cast<signed char>(-1)}},
      {'s', {static_cast<unsigned char>(255), short{-1}}},
      {'i', {static_cast<unsigned short>(65535), -1}},
      {'q', {4294967295u, -1L, std::uint64_t{kLargest}}},
      {'Q', {kBeyond}},
      {'f', {1.0f}},
      {'d', {1.0}},
  };
  for (const auto& [code, values] : cases) {
    for (const NumberValue value : values) {
      EXPECT_EQ(value.typeCode(), code) << value.text();
      EXPECT_EQ(Number::numberWith(value)->value().typeCode(), code);
      EXPECT_EQ(value.isBoolean(), value.kind() == NumberKind::boolean);
    }
  }
}

TEST(Number, IsEqualByValueAcrossKinds) {
  const std::vector<NumberValue> classes[] = {
      {true, 1, 1L, 1.0f, 1.0, std::int8_t{1}},
      {false, 0, 0.0, -0.0, 0.0f},
      {-1, -1.0, std::int8_t{-1}},
      {kNaN, -kNaN, std::nanf("1")},
      {kInf},
      {0.1},
      {0.1f},  // not the double 0.1
      {kBeyond, 0x1p63},
      {kSmallest, -0x1p63},
  };
  for (const auto& a : classes) {
    for (const auto& b : classes) {
      for (const NumberValue x : a) {
        for (const NumberValue y : b) {
          EXPECT_EQ(x.isEqual(y), &a == &b) << x.text() << " and " << y.text();
          EXPECT_TRUE(&a != &b || x.hash() == y.hash()) << x.text();
        }
      }
    }
  }
  // Integers beyond 2^53 differ although their doubles are equal; compared with a double they are
  // doubles.
  const std::int64_t large = std::int64_t{1} << 53;
  EXPECT_FALSE(NumberValue(large).isEqual(large + 1));
  EXPECT_TRUE(NumberValue(large + 1).isEqual(static_cast<double>(large)));
  EXPECT_EQ(NumberValue(large).hash(), NumberValue(large + 1).hash());
  EXPECT_FALSE(NumberValue(-1).isEqual(std::numeric_limits<std::uint64_t>::max()));
}

TEST(Number, TextIsDecimalWithTheDigitsOfItsKind) {
  const std::pair<NumberValue, const char*> cases[] = {
      {true, "1"},
      {false, "0"},
      {std::int8_t{-3}, "-3"},
      {kSmallest, "-9223372036854775808"},
      {std::numeric_limits<std::uint64_t>::max(), "18446744073709551615"},
      {0.1f, "0.1"},
      {0.56, "0.5600000000000001"},
      {-kInf, "-inf"},
  };
  for (const auto& [value, text] : cases) EXPECT_EQ(value.text(), text);
}

TEST(Number, ConvertsWithoutUndefinedBehaviour) {
  const test::Rows<NumberValue, std::int64_t, double, bool> cases{
      {2.9, 2, 2.9, true},
      {-2.9, -2, -2.9, true},
      {0.5, 0, 0.5, true},
      {kInf, kLargest, kInf, true},
      {-kInf, kSmallest, -kInf, true},
      {0x1p63, kLargest, 0x1p63, true},
      {-0x1p63, kSmallest, -0x1p63, true},
      {kBeyond, kLargest, 0x1p63, true},
      {-1, -1, -1, true},
      {-0.0, 0, -0.0, false},
  };
  for (const auto& [value, integer, real, boolean] : cases) {
    EXPECT_EQ(value.integerValue(), integer) << value.text();
    EXPECT_EQ(value.doubleValue(), real);
    EXPECT_EQ(value.boolValue(), boolean);
  }
  EXPECT_EQ(NumberValue(kNaN).integerValue(), 0);
  EXPECT_TRUE(NumberValue(kNaN).boolValue());
}

}  // namespace
