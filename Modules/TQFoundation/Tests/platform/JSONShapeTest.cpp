#include <TQFoundation/platform/detail/JSONShape.h>

#include <gtest/gtest.h>

#include <string>

namespace tq::detail {
namespace {

using Keys = std::vector<std::string_view>;

TEST(JSONShape, ObjectsOfTheSameKeysShareOne) {
  JSONShapes shapes;
  const auto shape = shapes.shapeOf(Keys{"a", "b"});
  EXPECT_EQ(shapes.shapeOf(Keys{"a", "b"}), shape);
  EXPECT_FALSE(shapes.shapeOf(Keys{"b", "a"}) == shape);
  EXPECT_FALSE(shapes.shapeOf(Keys{"a"}) == shape);
  EXPECT_EQ(shapes.shapeOf(Keys{})->count(), 0u);
  // Alike where a quick hash looks, told apart all the same.
  const std::string one = "12345678.1.12345678";
  const std::string two = "12345678.2.12345678";
  const auto first = shapes.shapeOf(Keys{one});
  const auto second = shapes.shapeOf(Keys{two});
  EXPECT_TRUE(first->isOf(Keys{one}) && !first->isOf(Keys{two}));
  EXPECT_TRUE(second->isOf(Keys{two}));
  EXPECT_EQ(shape->distinctKeys()->keys()[0], shapes.shapeOf(Keys{"a"})->distinctKeys()->keys()[0]);
}

TEST(JSONShape, FindsTheFirstOfEqualKeysFromAnyHint) {
  const struct {
    Keys keys;
    std::vector<std::pair<std::string_view, int>> places;
    std::size_t distinct;
  } cases[] = {
      {{}, {{"a", -1}, {"", -1}}, 0},
      {{"a", "b", "c"}, {{"a", 0}, {"b", 1}, {"c", 2}, {"d", -1}}, 3},
      {{"a", "b", "a", "c", "b"}, {{"a", 0}, {"b", 1}, {"c", 3}}, 3},
      {{"", ""}, {{"", 0}}, 1},
  };
  for (const auto& c : cases) {
    JSONShapes shapes;
    const auto shape = shapes.shapeOf(c.keys);
    EXPECT_EQ(shape->distinctKeys()->count(), c.distinct);
    for (std::size_t start = 0; start < 7; ++start) {
      for (const auto& [key, place] : c.places) {
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
  const auto numbered = [](const char* prefix, int i) { return prefix + std::to_string(i); };
  for (int i = 0; i < 20'000; ++i) {
    const std::string key = numbered("key", i);
    ASSERT_TRUE(shapes.shapeOf(Keys{key})->isOf(Keys{key}));
  }
  EXPECT_EQ(shapes.shapeOf(Keys{"key0"}), shapes.shapeOf(Keys{"key0"}));
  EXPECT_FALSE(shapes.shapeOf(Keys{"key19999"}) == shapes.shapeOf(Keys{"key19999"}));

  std::vector<std::string> texts;
  for (int i = 0; i < 1000; ++i) texts.push_back(numbered("k", i));
  const Keys wide(texts.begin(), texts.end());
  const auto shape = shapes.shapeOf(wide);
  EXPECT_FALSE(shapes.shapeOf(wide) == shape);
  std::size_t hint = 0;
  EXPECT_EQ(shape->find("k777", hint), 777u);
}

}  // namespace
}  // namespace tq::detail
