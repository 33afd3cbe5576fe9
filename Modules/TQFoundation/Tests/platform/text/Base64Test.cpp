#include <TQFoundation/platform/text/Base64.h>

#include <gtest/gtest.h>

#include <random>

#include "support/Bytes.h"

namespace tq {
namespace {

using test::bytesOf;

TEST(Base64, MatchesTheVectorsOfTheStandard) {
  // RFC 4648, section 10, and the characters "+" and "/".
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"", ""},
      {"f", "Zg=="},
      {"fo", "Zm8="},
      {"foo", "Zm9v"},
      {"foob", "Zm9vYg=="},
      {"fooba", "Zm9vYmE="},
      {"foobar", "Zm9vYmFy"},
      {"\xFB\xFF\xFE", "+//+"},
  };
  for (const auto& [bytes, text] : cases) {
    EXPECT_EQ(base64FromBytes(bytesOf(bytes)), text);
    const Ref<Data> decoded = dataFromBase64(text);
    ASSERT_TRUE(decoded) << text;
    EXPECT_EQ(decoded->view(), bytes);
  }
  std::string text = "before:";
  appendBase64(text, bytesOf("foo"));
  appendBase64(text, bytesOf("fo"));
  EXPECT_EQ(text, "before:Zm9vZm8=");
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

}  // namespace
}  // namespace tq
