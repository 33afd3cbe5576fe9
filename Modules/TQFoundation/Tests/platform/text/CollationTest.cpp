#include <TQFoundation/platform/text/Collation.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace tq {
namespace {

TEST(Collation, SortsInNaturalOrder) {
  std::vector<std::string> sorted;
  std::istringstream names(
      "| |_|-|,|(|#|~|0|1|01|1a|2|10|18446744073709551616|18446744073709551617|a|A|a b|a-b|a1b2|"
      "a1b02|a01b2|ab|é|É|f|file2|File2|file10|File10|strasse|straße|z|z\xFF|z\xFF\xFF");
  for (std::string name; std::getline(names, name, '|');) sorted.push_back(name);
  auto shuffled = sorted;
  std::ranges::shuffle(shuffled, std::mt19937(1));
  std::ranges::sort(shuffled, [](const std::string& a, const std::string& b) {
    return localizedStandardCompare(a, b) < 0;
  });
  EXPECT_EQ(shuffled, sorted);
  for (const std::string& a : sorted) {
    for (const std::string& b : sorted) {
      EXPECT_EQ(localizedStandardCompare(a, b), -localizedStandardCompare(b, a)) << a << ' ' << b;
      EXPECT_EQ(localizedStandardCompare(a, b) == 0, a == b) << a << ' ' << b;
    }
  }
}

TEST(Collation, FollowsTheLocaleThatTheHostSets) {
  const char* const accented = "\xC3\xB6";  // o with diaeresis: a letter after z in Swedish
  EXPECT_LT(localizedStandardCompare(accented, "z"), 0);
  ASSERT_TRUE(setCollationLocale("sv_SE"));
  EXPECT_GT(localizedStandardCompare(accented, "z"), 0);
  EXPECT_FALSE(setCollationLocale("there is no such place"));
  EXPECT_GT(localizedStandardCompare(accented, "z"), 0);
  EXPECT_TRUE(setCollationLocale("en"));  // same order as the root locale
  EXPECT_LT(localizedStandardCompare(accented, "z"), 0);
  EXPECT_TRUE(setCollationLocale(""));
  EXPECT_LT(localizedStandardCompare("file9", "file10"), 0);
}

}  // namespace
}  // namespace tq
