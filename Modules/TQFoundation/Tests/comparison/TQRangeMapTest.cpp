#include <TQFoundation/comparison/TQRangeMap.h>

#include "support/Objects.h"
#include "support/OnDestruction.h"

namespace {

constexpr std::uint64_t kLast = TQRangeMap::kNotFound - 1;

std::string found(const TQRangeMap& map, std::uint64_t location) {
  const Object* const object = map.objectForLocation(location);
  const Range range = map.rangeForLocation(location);
  EXPECT_EQ(object == nullptr, range == (Range{0x7FFFFFFFFFFFFFFF, 0}));
  return object != nullptr ? object->description() + std::to_string(range.location) : "none";
}

TEST(TQRangeMap, FindsTheLastRangeThatStartsAtOrBeforeALocation) {
  TQRangeMap map;
  EXPECT_EQ(found(map, 0), "none");
  map.setObject(String::of("a"), {2, 3});
  map.setObject(String::of("long"), {100, 100});
  map.setObject(String::of("inner"), {110, 5});
  map.setObject(String::of("empty"), {300, 0});
  map.setObject(String::of("end"), {kLast, UINT64_MAX});
  const test::Rows<std::uint64_t, const char*> cases{
      {1, "none"},
      {4, "a2"},
      {5, "none"},
      {109, "long100"},
      {110, "inner110"},
      {150, "none"},  // in "long", which does not start last
      {300, "none"},
      {kLast, "end9223372036854775806"},
      {UINT64_MAX, "end9223372036854775806"},
  };
  for (const auto& [at, name] : cases) EXPECT_EQ(found(map, at), name) << at;
}

TEST(TQRangeMap, ReplacesByStartAndRemovesFromALocationOn) {
  TQRangeMap map;
  map.setObject(String::of("a"), {0, 100});
  map.setObject(String::of("b"), {10, 5});
  map.setObject(String::of("a"), {20, 1});
  map.setObject(String::of("c"), {10, 6});
  EXPECT_THAT(map.allRanges(), ElementsAre(Range{0, 100}, Range{10, 6}, Range{20, 1}));
  EXPECT_EQ(map.allObjects()->description(), "{(a, c)}");
  const TQRangeMap copy = map;
  map.removeObjectsAtOrBeyondLocation(10);
  EXPECT_THAT(map.locations(), ElementsAre(0));
  EXPECT_EQ(found(map, 50), "a0");
  EXPECT_EQ(copy.locationsToEntries().size(), 3U);
  map.removeObjectsAtOrBeyondLocation(0);
  EXPECT_TRUE(map.locationsToEntries().empty());

  std::vector<std::string> seen;  // by the destructors of removed objects
  const auto look = [&] {
    seen.push_back(std::to_string(map.rangeForLocation(10).length) + " of " +
                   std::to_string(map.allRanges().size()));
  };
  map.setObject(makeRef<test::OnDestruction>(look), {10, 5});
  map.setObject(makeRef<test::OnDestruction>(look), {10, 6});
  map.setObject(makeRef<test::OnDestruction>(look), {20, 1});
  map.removeObjectsAtOrBeyondLocation(3);
  EXPECT_THAT(seen, ElementsAre("6 of 1", "0 of 1", "0 of 0"));
  seen.clear();
  for (const std::uint64_t at : {10u, 20u})
    map.setObject(makeRef<test::OnDestruction>(look), {at, 5});
  map = TQRangeMap();
  auto& dying = *new TQRangeMap();
  const auto lookAgain = [&] { seen.push_back(std::to_string(dying.locations().size())); };
  dying.setObject(makeRef<test::OnDestruction>(lookAgain), {10, 5});
  delete &dying;
  EXPECT_THAT(seen, ElementsAre("0 of 0", "0 of 0", "0"));

  EXPECT_THROW(map.setObject(nullptr, {1, 1}), Exception);
  EXPECT_THROW(map.setObject(String::of("x"), {kLast + 1, 1}), Exception);
  EXPECT_TRUE(map.locationsToEntries().empty());
}

}  // namespace
