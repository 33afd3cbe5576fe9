#include <TQFoundation/objects/String.h>

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace tq {
namespace {

using namespace std::string_view_literals;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(String, AcceptsOnlyWellFormedUTF8) {
  for (const std::string_view text :
       {""sv, "plain"sv, "a\0b"sv, "\x7F"sv, "\xC2\x80"sv, "\xDF\xBF"sv, "\xE0\xA0\x80"sv,
        "\xED\x9F\xBF"sv, "\xEE\x80\x80"sv, "\xEF\xBF\xBF"sv, "\xF0\x90\x80\x80"sv,
        "\xF4\x8F\xBF\xBF"sv, "eight by\xC3\xA9"sv}) {
    const Ref<String> string = String::stringWithUTF8(text);
    ASSERT_TRUE(string) << testing::PrintToString(std::string(text));
    EXPECT_EQ(string->view(), text);
    EXPECT_TRUE(string->isWellFormed());
    EXPECT_TRUE(String::stringWithUTF16(string->utf16())->isEqual(*string));
    EXPECT_EQ(string->length(), string->utf16().size());
  }
  const std::pair<std::string_view, std::string_view> malformed[] = {
      {"\x80"sv, "�"},
      {"a\xC0\xAF"sv, "a��"},          // overlong
      {"\xC3"sv, "�"},                 // cut short
      {"\xE2\x82"sv, "��"},            // cut short
      {"\xE0\x9F\xBF"sv, "���"},       // overlong
      {"\xED\xA0\x80z"sv, "���z"},     // a surrogate
      {"\xF0\x8F\xBF\xBF"sv, "����"},  // overlong
      {"\xF4\x90\x80\x80"sv, "����"},  // above U+10FFFF
      {"\xF5\x80\x80\x80"sv, "����"},
      {"12345678\xFF"
       "9"sv,
       "12345678�9"},
  };
  for (const auto& [bytes, repaired] : malformed) {
    EXPECT_FALSE(String::stringWithUTF8(bytes)) << testing::PrintToString(std::string(bytes));
    EXPECT_EQ(String::stringWithUTF8Repaired(bytes)->view(), repaired);
  }
}

TEST(String, KeepsAndReportsUnpairedSurrogates) {
  const struct {
    std::u16string_view units;
    std::string_view bytes;
    bool isWellFormed;
    std::string_view shown;
  } cases[] = {
      {u"\U0001F600", "\xF0\x9F\x98\x80", true, "\xF0\x9F\x98\x80"},
      {u"a\xD83D", "a\xED\xA0\xBD", false, "a�"},
      {u"\xDE00", "\xED\xB8\x80", false, "�"},
      {u"\xDE00\xD83D", "\xED\xB8\x80\xED\xA0\xBD", false, "��"},
      {u"\xD83D\xD83D\xDE00", "\xED\xA0\xBD\xF0\x9F\x98\x80", false, "�\xF0\x9F\x98\x80"},
  };
  for (const auto& c : cases) {
    const Ref<String> string = String::stringWithUTF16(c.units);
    EXPECT_EQ(string->view(), c.bytes);
    EXPECT_EQ(string->isWellFormed(), c.isWellFormed);
    EXPECT_EQ(string->description(), c.shown);
    EXPECT_EQ(string->utf16(), c.units);
    EXPECT_EQ(string->length(), c.units.size());
    EXPECT_TRUE(string->isEqual(*String::stringWithUTF16(c.units)));
  }
  std::mt19937 random(3);
  for (int i = 0; i < 2'000; ++i) {
    std::u16string units(random() % 8, u'\0');
    // Mostly surrogates, some of them in pairs.
    for (char16_t& unit : units) unit = static_cast<char16_t>(0xD600 + random() % 0xC00);
    EXPECT_EQ(String::stringWithUTF16(units)->utf16(), units);
  }
}

TEST(String, IsEqualByCodeUnitsAndRefusesMalformedLiterals) {
  EXPECT_FALSE(String::of("é")->isEqual(*String::of("e\u0301")));  // nothing is normalised
  EXPECT_FALSE(String::of("a")->isEqual(*String::of("A")));
  EXPECT_FALSE(String::of("a"sv)->isEqual(*String::of("a\0"sv)));
  EXPECT_EQ(String::of("key")->hash(), String::hashOf("key"));
  EXPECT_DEATH((void)String::of("\xFF"), "Assertion failed");
}

TEST(LenientReading, ReadsTheIntegerAtTheStart) {
  constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
  constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();
  const std::pair<std::string_view, std::int64_t> cases[] = {
      {"", 0},
      {" \t\n12abc", 12},
      {"0x10", 0},
      {"3-beta", 3},
      {"+7", 7},
      {"-7", -7},
      {"+-7", 0},
      {"- 7", 0},
      {"1.9", 1},
      {"9223372036854775807", kLargest},
      {"9223372036854775808", kLargest},
      {"-9223372036854775808", kSmallest},
      {"-9223372036854775809", kSmallest},
      {"1\0002"sv, 1},
      {"１", 0},
  };
  for (const auto& [text, value] : cases) EXPECT_EQ(lenientInteger(text), value) << text;
}

TEST(LenientReading, ReadsTheDoubleAtTheStart) {
  const std::pair<std::string, double> cases[] = {
      {"", 0},
      {" 0.5x", 0.5},
      {"+.5", 0.5},
      {"5.", 5},
      {".", 0},
      {"1e", 1},
      {"1e+2", 100},
      {"1E-2", 0.01},
      {"0x10", 0},
      {"inf", 0},
      {"nan", 0},
      {"1e400", kInfinity},
      {"-1e400", -kInfinity},
      {"1e-400", 0},
      {"0e999999999999999999999", 0},
      {"1e999999999999999999999", kInfinity},
      {"1e-999999999999999999999", 0},
      {"0." + std::string(400, '0') + "1e401", 1},
      {"1" + std::string(400, '0') + "e-400", 1},
      {"1" + std::string(400, '0'), kInfinity},
      {"1.7976931348623157e308", std::numeric_limits<double>::max()},
      {"4.9e-324", 5e-324},
      {"2e-324", 0},
      {"1.5.5", 1.5},
  };
  for (const auto& [text, value] : cases) EXPECT_EQ(lenientDouble(text), value) << text;
  EXPECT_EQ(lenientDouble("12345"sv.substr(0, 2)), 12);
  EXPECT_TRUE(std::signbit(lenientDouble("-0")));
  EXPECT_TRUE(std::signbit(lenientDouble("-1e-400")));
}

TEST(LenientReading, ReadsABoolean) {
  for (const char* text :
       {"t", "TRUE", "tRuE", "yes", "Y", "1", "+000009", "-1", " \t7x", "true"}) {
    EXPECT_TRUE(lenientBool(text)) << text;
  }
  for (const char* text :
       {"", "no", "0", "-00000", "+t", "++", "+-1", "0t", "_true", "<true>", "f", "00a1", " "}) {
    EXPECT_FALSE(lenientBool(text)) << text;
  }
}

}  // namespace
}  // namespace tq
