#include <TQFoundation/environment/TQVersion.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace tq {
namespace {

TEST(Version, ComparesThreeComponentsByNumber) {
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
  };
  for (const auto& c : cases) {
    EXPECT_EQ(TQCompareVersions(c.first, c.second), c.order) << c.first << " : " << c.second;
    EXPECT_EQ(TQCompareVersions(c.second, c.first), -c.order) << c.second << " : " << c.first;
  }
}

TEST(Version, HighestIsTheEarliestOfEqualsAndNeverZero) {
  using List = std::vector<std::string_view>;
  const struct {
    List versions;
    std::optional<std::string_view> highest;
  } cases[] = {
      {{"1.2", "1.10", "1.9"}, "1.10"},
      {{"1.2", "1.2.0"}, "1.2"},
      {{"0.0", "0"}, {}},
      {{"-1", "-2"}, {}},
      {{"0", "0.0.1", "0.0.1.9"}, "0.0.1"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(TQHighestVersionNumber(c.versions), c.highest);
    const std::vector<std::string> owned(c.versions.begin(), c.versions.end());
    EXPECT_EQ(TQHighestVersionNumber(owned), c.highest);
  }
  EXPECT_EQ(TQHighestVersionNumber({}), std::nullopt);
}

// The steps as they are told: zeros put behind the text, the whole split, three numbers read.
std::vector<long> components(const std::string& text) {
  std::istringstream stream(text + ".0.0.0");
  std::vector<long> numbers;
  std::string part;
  while (numbers.size() < 3 && std::getline(stream, part, '.')) {
    numbers.push_back(std::strtol(part.c_str(), nullptr, 10));
  }
  return numbers;
}

TEST(Version, AgreesWithTheSlowWay) {
  const unsigned seed = std::random_device()();
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  const auto text = [&] {
    std::string made;
    for (auto length = random() % 9; length-- > 0;) made += "..0123 -+x9"[random() % 11];
    return made;
  };
  for (int round = 0; round < 20'000; ++round) {
    const std::string a = text();
    const std::string b = text();
    const auto slowA = components(a);
    const auto slowB = components(b);
    ASSERT_EQ(TQCompareVersions(a, b), slowA == slowB  ? 0
                                       : slowA < slowB ? -1
                                                       : 1)
        << '"' << a << "\" : \"" << b << '"';
  }
}

}  // namespace
}  // namespace tq
