#include <TQFoundation/platform/text/CharacterCategory.h>

#include <gtest/gtest.h>

namespace tq {
namespace {

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
  const struct {
    std::string_view text, rest;
  } cases[] = {
      {"", ""},
      {" \t ", ""},
      {"\xE3\x80\x80 a\xC2\xA0 b\xE2\x80\x8A\t", "a\xC2\xA0 b"},
      {" \na\n ", "\na\n"},
      {"\xE2\x80\x8B", "\xE2\x80\x8B"},  // zero width: a format character
      {" \xA0 \xE2\x80 ", "\xA0 \xE2\x80"},
  };
  for (const auto& c : cases) EXPECT_EQ(withoutBlankEnds(c.text), c.rest);
}

}  // namespace
}  // namespace tq
