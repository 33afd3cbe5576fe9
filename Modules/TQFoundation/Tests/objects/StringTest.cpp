#include <TQFoundation/objects/String.h>

#include "support/Test.h"

namespace {

using namespace std::string_view_literals;

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
      {"abcdefgh\xFFz"sv, "abcdefgh�z"},
  };
  for (const auto& [bytes, repaired] : malformed) {
    EXPECT_FALSE(String::stringWithUTF8(bytes)) << testing::PrintToString(std::string(bytes));
    EXPECT_EQ(String::stringWithUTF8Repaired(bytes)->view(), repaired);
  }
}

TEST(String, KeepsAndReportsUnpairedSurrogates) {
  const test::Rows<std::u16string_view, std::string_view, bool, std::string_view> cases{
      {u"\U0001F600", "\xF0\x9F\x98\x80", true, "\xF0\x9F\x98\x80"},
      {u"\xD800\xDC00\xDBFF\xDFFF", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", true,
       "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
      {u"\xD7FF\xE000", "\xED\x9F\xBF\xEE\x80\x80", true, "\xED\x9F\xBF\xEE\x80\x80"},
      {u"\xD800", "\xED\xA0\x80", false, "�"},
      {u"\xDBFF", "\xED\xAF\xBF", false, "�"},
      {u"\xDC00", "\xED\xB0\x80", false, "�"},
      {u"\xDFFF", "\xED\xBF\xBF", false, "�"},
      {u"a\xD83D", "a\xED\xA0\xBD", false, "a�"},
      {u"\xDE00", "\xED\xB8\x80", false, "�"},
      {u"\xDE00\xD83D", "\xED\xB8\x80\xED\xA0\xBD", false, "��"},
      {u"\xD83D\xD83D\xDE00", "\xED\xA0\xBD\xF0\x9F\x98\x80", false, "�\xF0\x9F\x98\x80"},
  };
  for (const auto& [units, bytes, isWellFormed, shown] : cases) {
    const Ref<String> string = String::stringWithUTF16(units);
    EXPECT_EQ(string->view(), bytes);
    EXPECT_EQ(string->isWellFormed(), isWellFormed);
    EXPECT_EQ(string->description(), shown);
    EXPECT_EQ(string->utf16(), units);
    EXPECT_EQ(string->length(), units.size());
    EXPECT_TRUE(string->isEqual(*String::stringWithUTF16(units)));
  }
  for (const char* bytes :
       {"\xED\xA0\xBD\xED\xB8\x80", "\xED\xA0\xBD\xFF", "\xED\xA0\xBD\xE2\x82"}) {
    EXPECT_FALSE(String::stringWithGeneralisedUTF8(bytes)) << "not shortest, or not UTF-8";
  }
  EXPECT_TRUE(String::stringWithGeneralisedUTF8("\xED\xA0\xBD\xF0\x9F\x98\x80")
                  ->isEqual(*String::stringWithUTF16(u"\xD83D\xD83D\xDE00")));
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

TEST(LenientReading, ReadsNumbersLikeTheCLibrary) {
  for (const std::string text :
       {"", " \t\n12abc", "0x10", "3-beta", "+7", "-7", "+-7", "- 7", "1.9", "9223372036854775800",
        "9223372036854775807", "9223372036854775808", "-9223372036854775808",
        "-9223372036854775809", "１"}) {
    EXPECT_EQ(lenientInteger(text), std::strtoll(text.c_str(), nullptr, 10)) << text;
  }
  EXPECT_EQ(lenientInteger("1\0002"sv), 1);
  const auto expectSame = [](const std::string& text) {
    EXPECT_PRED2(test::sameNumber, lenientDouble(text), std::strtod(text.c_str(), nullptr)) << text;
  };
  for (const char* text :
       {"", " 0.5x", "+.5", "5.", ".", "1e", "1e+2", "1E-2", "1e400", "-1e400", "1e-400",
        "4.9e-324", "2e-324", "0.001e-400", "0.001e400", "0.00:1e400", "1.5.5", "-0", "-1e-400"}) {
    expectSame(text);
  }
  const std::string zeros(400, '0'), nines(21, '9');
  for (const std::string& text : {"0e" + nines, "1e" + nines, "1e-" + nines, "0." + zeros + "1e401",
                                  "1" + zeros + "e-400", "1" + zeros}) {
    expectSame(text);
  }
  expectSame("1.7976931348623157e308");
  for (const char* word : {"0x10", "inf", "nan"}) EXPECT_EQ(lenientDouble(word), 0) << word;
  EXPECT_EQ(lenientDouble("12345"sv.substr(0, 2)), 12);
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
