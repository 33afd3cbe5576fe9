#include <TQFoundation/environment/TQVersion.h>

#include "support/Test.h"

namespace {

TEST(Version, ComparesThreeComponentsAsNumbers) {
  const test::Rows<const char*, const char*, int> cases{
      {"1.10", "1.9", 1},
      {"2", "2.0.0", 0},
      {"1.2.3.4", "1.2.3.9", 0},
      {"1.2.3-beta", "1.2.3", 0},
      {"99999999999999999999", "9223372036854775807", 0},
      {"1..3", "1.0.2", 1},
      {" +1.2.4", "1.2.3", 1},
      {".x.1", "", 1},
      {"1. 2", "1.-2", 1},
      {"1.2.3", "1.2.4", -1},
  };
  for (const auto& [first, second, order] : cases) {
    EXPECT_EQ(TQCompareVersions(first, second), order) << first << " : " << second;
    EXPECT_EQ(TQCompareVersions(second, first), -order) << second << " : " << first;
  }
}

TEST(Version, HighestIsTheFirstOfEqualsAndNeverZero) {
  using List = std::vector<std::string_view>;
  const test::Rows<List, std::optional<std::string_view>> cases{
      {{"1.2", "1.10", "1.9"}, "1.10"},
      {{"1.2", "1.2.0"}, "1.2"},
      {{"0.0", "0"}, {}},
      {{}, {}},
      {{"-1", "-2"}, {}},
      {{"0", "0.0.1", "0.0.1.9"}, "0.0.1"},
  };
  for (const auto& [versions, highest] : cases) {
    EXPECT_EQ(TQHighestVersionNumber(versions), highest);
    const std::vector<std::string> owned(versions.begin(), versions.end());
    EXPECT_EQ(TQHighestVersionNumber(owned), highest);
  }
}

}  // namespace
