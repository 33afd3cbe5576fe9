#include <TQFoundation/platform/json/JSONShape.h>

#include <ctime>

#include "support/Test.h"

namespace tq::detail {
namespace {

using Keys = std::vector<std::string_view>;

TEST(JSONShape, ObjectsOfTheSameKeysShareOne) {
  JSONShapes shapes;
  const auto shape = shapes.shapeOf(Keys{"a", "b"});
  EXPECT_EQ(shapes.shapeOf(Keys{"a", "b"}), shape);
  EXPECT_FALSE(shapes.shapeOf(Keys{"b", "a"}) == shape);
  EXPECT_FALSE(shapes.shapeOf(Keys{"a"}) == shape);
  for (const char* key : {"12345678.1.12345678", "12345678.2.12345678"}) {  // with equal hashes
    EXPECT_TRUE(shapes.shapeOf(Keys{key})->isOf(Keys{key}));
  }
  EXPECT_EQ(shape->distinctKeys()->keys()[0], shapes.shapeOf(Keys{"a"})->distinctKeys()->keys()[0]);
}

TEST(JSONShape, FindsTheFirstOfEqualKeysFromAnyHint) {
  const test::Rows<Keys, std::vector<std::pair<std::string_view, int>>, std::size_t> cases{
      {{}, {{"", -1}}, 0},
      {{"a", "b", "c"}, {{"a", 0}, {"b", 1}, {"c", 2}, {"d", -1}}, 3},
      {{"a", "b", "a", "c", "b"}, {{"a", 0}, {"b", 1}, {"c", 3}}, 3},
      {{"", ""}, {{"", 0}}, 1},
  };
  for (const auto& [keys, places, distinct] : cases) {
    JSONShapes shapes;
    const auto shape = shapes.shapeOf(keys);
    EXPECT_EQ(shape->distinctKeys()->count(), distinct);
    for (std::size_t start = 0; start < 7; ++start) {
      for (const auto& [key, place] : places) {
        std::size_t hint = start;
        const auto found = shape->find(key, hint);
        EXPECT_EQ(found ? static_cast<int>(*found) : -1, place);
        EXPECT_EQ(hint, found ? *found + 1 : start);
      }
    }
  }
}

TEST(JSONShape, HoldsOnToABoundedNumber) {
  JSONShapes shapes;
  std::vector<std::string> texts;
  for (int i = 0; i < 20'000; ++i) texts.push_back("k" + std::to_string(i));
  for (const std::string& key : texts) ASSERT_TRUE(shapes.shapeOf(Keys{key})->isOf(Keys{key}));
  EXPECT_EQ(shapes.shapeOf(Keys{"k0"}), shapes.shapeOf(Keys{"k0"}));
  EXPECT_FALSE(shapes.shapeOf(Keys{"k19999"}) == shapes.shapeOf(Keys{"k19999"}));

  const Keys wide(texts.begin(), texts.begin() + 1000);
  const auto shape = shapes.shapeOf(wide);
  EXPECT_FALSE(shapes.shapeOf(wide) == shape);
  std::size_t hint = 0;
  EXPECT_EQ(shape->find("k777", hint), 777u);
}

/// Texts of 8 characters whose std::hash is a multiple of `factor`: the inverse of libstdc++'s
/// function.
std::vector<std::string> textsThatCollide(std::size_t count, std::uint64_t factor) {
  constexpr std::uint64_t kFactor = 0xC6A4A7935BD1E995;
  constexpr std::uint64_t kInverse = 0x5F7A0EA7E59B19BD;
  constexpr std::uint64_t kStart = 0xC70F6907 ^ (8 * kFactor);
  static_assert(kFactor * kInverse == 1);
  const auto unmixed = [](std::uint64_t x) { return (x ^ (x >> 47)) * kInverse; };
  std::vector<std::string> texts;
  for (std::uint64_t i = 1; texts.size() < count; ++i) {
    const std::uint64_t hash = i * 0x9E3779B97F4A7C15u % (~std::uint64_t{0} / factor) * factor;
    const std::uint64_t bits = unmixed((unmixed(unmixed(hash)) ^ kStart) * kInverse);
    if ((bits & 0x8080'8080'8080'8080) == 0) {
      texts.emplace_back(reinterpret_cast<const char*>(&bits), 8);
#ifndef _LIBCPP_VERSION
      EXPECT_EQ(std::hash<std::string>{}(texts.back()), hash);
#endif
    }
  }
  return texts;
}

TEST(JSONShape, KeysCannotBeMadeToCollide) {
  const auto secondsFor = [](const std::vector<std::string>& texts) {
    const std::clock_t start = std::clock();
    JSONShapes shapes;
    EXPECT_EQ(shapes.shapeOf(Keys(texts.begin(), texts.end()))->count(), texts.size());
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
  };
  std::vector<std::string> plain;
  for (int i = 0; i < 30'000; ++i) plain.push_back(std::to_string(10'000'000 + i));
  // 20753 is the number of buckets that the table of keys grows to.
  const double crafted = secondsFor(textsThatCollide(plain.size(), 20'753));
  EXPECT_LT(crafted, 0.1 + 10 * secondsFor(plain));
}

}  // namespace
}  // namespace tq::detail
