#include <glib.h>

#include <TQFoundation/platform/text/Base64.h>
#include <TQFoundation/platform/text/CharacterCategory.h>
#include <TQFoundation/platform/text/Collation.h>
#include <TQFoundation/platform/text/URLResolution.h>

#include "support/Bytes.h"

namespace {

TEST(Base64, MatchesTheVectorsOfTheStandard) {
  // RFC 4648, section 10, and the characters "+" and "/".
  const auto check = [](std::string_view bytes, std::string_view text) {
    EXPECT_EQ(base64FromBytes(bytesOf(bytes)), text);
    const Ref<Data> decoded = dataFromBase64(text);
    ASSERT_TRUE(decoded) << text;
    EXPECT_EQ(decoded->view(), bytes);
  };
  std::string bytes;
  for (const char* each : {"", "Zg==", "Zm8=", "Zm9v", "Zm9vYg==", "Zm9vYmE=", "Zm9vYmFy"}) {
    check(bytes, each);
    bytes = std::string_view("foobar").substr(0, bytes.size() + 1);
  }
  check("\xFB\xFF\xFE", "+//+");
  std::string text = "Zg==";
  appendBase64(text, bytesOf("fo"));
  EXPECT_EQ(text, "Zg==Zm8=");
}

TEST(Base64, RefusesAnyOtherText) {
  for (const char* text :
       {"Z",      "Zg",     "Zg=",   "Zg==Zg==", "Z===",      "====",      "=",
        "Zg==\n", "\nZg==", " Zm9v", "Zm9v ",    "Zm\n9vZm9", "Zm9v\n   ", "Zm9-",
        "Zm9_",   "Zm=v",   "Z=9v",  "=m9v",     "Zm9vZ=g=",  "Zm9\xC3"}) {
    EXPECT_FALSE(dataFromBase64(text)) << text;
  }
  EXPECT_FALSE(dataFromBase64(std::string_view("Zm\09", 4)));
  // Unused bits of the last character are ignored.
  EXPECT_EQ(dataFromBase64("Zh==")->view(), "f");
  EXPECT_EQ(dataFromBase64("Zm9=")->view(), "fo");
}

TEST(Base64, RoundTripsEveryLength) {
  std::mt19937 random(7);
  std::string bytes;
  for (int length = 0; length < 400; ++length) {
    const std::string text = base64FromBytes(bytesOf(bytes));
    EXPECT_EQ(text.size(), (bytes.size() + 2) / 3 * 4);
    EXPECT_EQ(dataFromBase64(text)->view(), bytes);
    bytes += static_cast<char>(random());
  }
}

TEST(CharacterCategory, RecognisesControlAndFormatCharacters) {
  for (char32_t c = 0; c < 0x100; ++c) {
    const bool isControl = c < 0x20 || (c >= 0x7F && c < 0xA0);
    EXPECT_EQ(isControlOrFormatCharacter(c), isControl || c == 0xAD) << std::uint32_t(c);
  }
  for (const char32_t c : {0x061Cu, 0x200Bu, 0x200Fu, 0x2060u, 0xFEFFu, 0x110BDu, 0xE007Fu}) {
    EXPECT_TRUE(isControlOrFormatCharacter(c)) << std::uint32_t(c);
  }
  for (const char32_t c : {0x2028u, 0x3000u, 0xD800u, 0xE000u, 0x1F600u, 0x110000u, 0xFFFFFFFFu}) {
    EXPECT_FALSE(isControlOrFormatCharacter(c)) << std::uint32_t(c);
  }
}

TEST(CharacterCategory, BlankEndsAreTabsAndSpacesOfEveryWidth) {
  const test::Rows<std::string_view, std::string_view> cases{
      {"", ""},
      {" \t ", ""},
      {"\xE3\x80\x80 a\xC2\xA0 b\xE2\x80\x8A\t", "a\xC2\xA0 b"},
      {" \na\n ", "\na\n"},
      {"\xE2\x80\x8B", "\xE2\x80\x8B"},  // zero width: a format character
      {" \xA0 \xE2\x80 ", "\xA0 \xE2\x80"},
  };
  for (const auto& [text, rest] : cases) EXPECT_EQ(withoutBlankEnds(text), rest);
  for (const char* inside :
       {"\xC2", "\xC0\x80", "\xE3\x80", "\xED\xA0\x80", "\xE3x\x80", "\xF0\x9F", "\xF0\x9F\x98\x80",
        "\xF0\x9F\x98", "\xF4\x90\x80\x80", "é", "\xF0x"}) {
    EXPECT_EQ(withoutBlankEnds(std::string(" \t") + inside + " "), inside);
    EXPECT_EQ(withoutBlankEnds(inside), inside);
  }
}

TEST(Collation, SortsInNaturalOrder) {
  std::vector<std::string> sorted;
  std::istringstream names(
      "| "
      "|_|-|,|(|#|~|0|1|01|\x02\u0661-1|1-1|\x01\x31-01|1a|2|10|18446744073709551616|"
      "18446744073709551617|a|A|a b|a-b|a1b2|"
      "a1b02|a01b2|ab|e\u0301|é|É|f|file2|File2|file10|File10|strasse|straße|z|z\xFF|z\xFF\xFF");
  for (std::string name; std::getline(names, name, '|');) sorted.push_back(name);
  auto shuffled = sorted;
  std::ranges::shuffle(shuffled, std::mt19937(1));
  std::ranges::sort(shuffled, [](const std::string& a, const std::string& b) {
    return localizedStandardCompare(a, b) < 0;
  });
  EXPECT_EQ(shuffled, sorted);
  for (const std::string& a : sorted) {  // each pair, or the order has a cycle
    for (const std::string& b : sorted) {
      EXPECT_EQ(localizedStandardCompare(a, b), &a < &b ? -1 : &a > &b) << a << ' ' << b;
    }
  }
}

TEST(Collation, FollowsTheLocaleThatTheHostSets) {
  const char* const accented = "\xC3\xB6";  // o with diaeresis: a letter after z in Swedish
  EXPECT_LT(localizedStandardCompare(accented, "z"), 0);
  ASSERT_TRUE(setCollationLocale("sv_SE"));
  EXPECT_GT(localizedStandardCompare(accented, "z"), 0);
  for (const char* locale : {"there is no such place", "xx", "xx_SE", "sv_SE_there_is_none@x"}) {
    EXPECT_EQ(setCollationLocale(locale), locale[0] == 's') << locale;
    EXPECT_GT(localizedStandardCompare(accented, "z"), 0);
  }
  for (const char* locale : {"en", "", "root"}) {  // "en" has the order of the root locale
    EXPECT_TRUE(setCollationLocale(locale));
    EXPECT_LT(localizedStandardCompare(accented, "z"), 0);
  }
}

std::string resolved(std::string_view base, std::string_view text) {
  const Ref<URL> url = URLWithString(text, URL::URLWithString(base).get());
  return url ? url->absoluteString() : "(null)";
}

// rfc3986.py tries the examples of the standard, and random references.
TEST(URLResolution, KeepsEscapesAndCleansUpTheRest) {
  const test::Rows<std::string_view, std::string_view, std::string_view> cases{
      {"http://a/b/c/d;p?q", "g:h", "g:h"},
      {"http://a/b/c/d;p?q", "http:g", "http:g"},
      {"file:///a/b/", "c%20d", "file:///a/b/c%20d"},
      {"/a/b", "../c", "file:///c"},
      {"/a/b%3F?", "c?q=/#f", "file:///a/c"},
      {"", "c", "file:///c"},
      {"http://h?x=/y", "c", "http://h/c"},
      {"http://h/a%2Fb/%zz", " c%2F d\té\n", "http://h/a%2Fb/c%2F%20d%C3%A9"},
      {"http://h/a", "https://g/a/../b", "https://g/b"},
      {"http://h/%41%7e", "?%5a", "http://h/A~?Z"},
      {"http://h/", "%zz/%%32f/%4%41%", "http://h/%25zz/%252f/%254A%25"},
      {"http://é.org/a", "b", "http://xn--9ca.org/b"},
      {"http://%c3%a9.or%67/a", "b", "http://xn--9ca.org/b"},
      {"http://a%2Fb/c", "d", "http://a%2Fb/d"},
      {"http://h", "//u@a%40b%3A1:80", "http://u@a%40b%3A1:80"},
      {"x://a%20b c/", "", "x://a%20b%20c/"},
      {"http://[::1]:80/a", "b", "http://[::1]:80/b"},
      {"http://u@[fe80::1%25ab]:80/a", "b", "http://u@[fe80::1%25ab]:80/b"},
      {"http://h/a", "//[::1%25eth0]/%25", "http://[::1%25eth0]/%25"},
      {"http://[::1%25]/", "", "(null)"},
      {"http://[::%25a]/", "", "(null)"},
      {"http://h/", "//u@[::1%25a%00]:8/", "(null)"},
      {"http://h/", "//[::1%25a%2Fb]/", "(null)"},
      {"http://h/", "//[::1 ]/", "(null)"},
      {"http://h/", "//[::1 %25a]/", "(null)"},
      {"http://h/", "//[::1%25a]%2Fb]/", "(null)"},
      {"http://h/", "//[::1%25é]/", "(null)"},
      {"http://h:/a", "b", "http://h/b"},
      {"http://%31.2.3.4/", "", "(null)"},
      {"http://a;b/../c", "/d", "(null)"},
      {"http://a/c", " /\t/a;b/../d", "(null)"},
      {"http://a/c", "/ /a;b/../d", "http://a/%20/d"},
      {"http://a/c", "1://h;x/d", "http://a/1://h;x/d"},
      {"http://a/c", "http://[h/p", "(null)"},
      {"http://a/c", "//h%00/p", "(null)"},
      {"http://a/c", "//h:http/p", "(null)"},
      {"http://a/c", "p%2fq", "http://a/p%2Fq"},
      {"x:/a", ".//b", "(null)"},
      {"x:/.//b", "c", "(null)"},
      {"http://u;v@a/c", "d", "http://u;v@a/d"},
      {"/a", "//elsewhere/c", "(null)"},
      {"http://h:99999/a", "b", "(null)"},
      {"http://h/a", std::string_view("b\0c", 3), "(null)"},
      {std::string_view("http://h/a\0/", 12), "b", "(null)"},
  };
  for (const auto& [base, text, expected] : cases) {
    EXPECT_EQ(resolved(base, text), expected) << base << ' ' << text;
  }
  constexpr std::string_view kUntouched = " http://h:99999/a/../b c";
  EXPECT_EQ(URLWithString(kUntouched.substr(1), nullptr)->absoluteString(), kUntouched.substr(1));
  EXPECT_TRUE(URLWithString("scheme-of-a-test:a", URL::URLWithString("http://h").get()));
  EXPECT_EQ(g_quark_try_string("scheme-of-a-test"), 0u) << "kept for ever";
}

}  // namespace
