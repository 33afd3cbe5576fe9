#include <TQFoundation/environment/TQVersion.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tq {
namespace {

TEST(Version, ComparesThreeComponentsAsNumbers) {
  const struct {
    const char* first;
    const char* second;
    int order;
  } cases[] = {
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
  for (const auto& c : cases) {
    EXPECT_EQ(TQCompareVersions(c.first, c.second), c.order) << c.first << " : " << c.second;
    EXPECT_EQ(TQCompareVersions(c.second, c.first), -c.order) << c.second << " : " << c.first;
  }
}

TEST(Version, HighestIsTheFirstOfEqualsAndNeverZero) {
  using List = std::vector<std::string_view>;
  const struct {
    List versions;
    std::optional<std::string_view> highest;
  } cases[] = {
      {{"1.2", "1.10", "1.9"}, "1.10"},
      {{"1.2", "1.2.0"}, "1.2"},
      {{"0.0", "0"}, {}},
      {{}, {}},
      {{"-1", "-2"}, {}},
      {{"0", "0.0.1", "0.0.1.9"}, "0.0.1"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(TQHighestVersionNumber(c.versions), c.highest);
    const std::vector<std::string> owned(c.versions.begin(), c.versions.end());
    EXPECT_EQ(TQHighestVersionNumber(owned), c.highest);
  }
}

}  // namespace
}  // namespace tq
