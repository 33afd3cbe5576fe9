#include <TQFoundation/base/NumberText.h>

#include <bit>
#include <cstdio>

#include "support/Test.h"

namespace {

template <auto write>
std::string text(auto value) {
  char buffer[kNumberTextCapacity];
  return {buffer, write(buffer, value)};
}

std::string printed(const char* format, double value) {
  char buffer[64];
  const int length = std::snprintf(buffer, sizeof buffer, format, value);
  return {buffer, static_cast<std::size_t>(length)};
}

void expectAsPrinted(double value) {
  if (std::isnan(value)) return;  // printf shows the sign of a NaN
  ASSERT_EQ(text<writeDouble16>(value), printed("%.16g", value));
  ASSERT_EQ(text<writeDouble17>(value), printed("%.17g", value));
}

TEST(NumberTextStress, AgreesWithTheCLibraryOnMillionsOfRandomDoubles) {
  constexpr unsigned kSeed = 20260;
  SCOPED_TRACE(kSeed);
  std::mt19937_64 random(kSeed);
  for (int i = 0; i < 400'000 && !testing::Test::HasFatalFailure(); ++i) {
    const std::uint64_t bits = random();
    expectAsPrinted(std::bit_cast<double>(bits));                                   // any pattern
    expectAsPrinted(std::ldexp(static_cast<double>(bits >> 11), -int(bits % 90)));  // any fraction
    expectAsPrinted(static_cast<double>(bits % 2'000'000'000) / 1000 - 1e6);        // documents
    expectAsPrinted(static_cast<double>(bits % 100'000) / (1 << (bits >> 60)));     // many are ties
    expectAsPrinted(std::pow(10, static_cast<double>(bits % 30'000) / 1000 - 12));
  }
}

TEST(NumberText, AgreesWithTheCLibraryAroundPowersOfTenAndTwo) {
  for (int e = -30; e < 30; ++e) {
    double value = std::pow(10, e);
    for (int i = 0; i < 3; ++i) value = std::nextafter(value, 0);
    for (int i = 0; i < 7; ++i, value = std::nextafter(value, 1e300)) expectAsPrinted(value);
  }
  for (int e = -1074; e < 1024; ++e) expectAsPrinted(std::ldexp(1, e));
  for (int e = -60; e < 60; ++e) {
    for (int m = 1; m < 1000; m += 2) expectAsPrinted(std::ldexp(m, e));  // exact ties
  }
}

TEST(NumberText, WritesTheSpecialValues) {
  EXPECT_EQ(text<writeDouble16>(-0.0), "-0");
  EXPECT_EQ(text<writeDouble16>(test::kInf), "inf");
  EXPECT_EQ(text<writeDouble17>(-test::kInf), "-inf");
  EXPECT_EQ(text<writeDouble16>(-test::kNaN), "nan");
  EXPECT_EQ(text<writeFloat7>(0.1f), "0.1");
  EXPECT_EQ(text<writeFloat7>(16777216.f), "1.677722e+07");
  EXPECT_EQ(text<writeInteger>(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
}

}  // namespace
