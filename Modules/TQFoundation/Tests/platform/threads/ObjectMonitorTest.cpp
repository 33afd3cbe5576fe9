#include <TQFoundation/platform/threads/ObjectMonitor.h>

#include <TQFoundation/objects/String.h>
#include <TQFoundation/platform/threads/MonitorCount.h>

#include "support/Threads.h"

namespace {

using detail::monitorCount;

TEST(ObjectMonitor, ExistsWhileAThreadIsInside) {
  const Ref<Object> one = String::of("one");
  const Ref<Object> two = String::of("one");  // equal, but another object
  ASSERT_EQ(monitorCount(), 0u);
  EXPECT_EQ(monitorEnter(nullptr), 0);
  for (const auto& object : {one, one, two, one}) EXPECT_EQ(monitorEnter(object.get()), 0);
  EXPECT_EQ(monitorCount(), 2u);
  for (int depth = 3; depth > 0; --depth) EXPECT_EQ(monitorExit(one.get()), 0);
  EXPECT_EQ(monitorExit(one.get()), -1);
  EXPECT_EQ(monitorCount(), 1u);
  EXPECT_EQ(monitorExit(two.get()), 0);
  EXPECT_EQ(monitorCount(), 0u);
}

TEST(ObjectMonitorStress, NoneIsLeftAndTotalsAddUp) {
  const std::array<Ref<Object>, 3> objects = {String::of("a"), String::of("b"), String::of("c")};
  std::array<int, 3> totals{};
  test::onThreads(6, [&](int t) {
    const std::size_t i = static_cast<std::size_t>(t) % objects.size();
    for (int round = 0; round < 20'000; ++round) {
      monitorEnter(objects[i].get());
      ++totals[i];
      monitorExit(objects[i].get());
    }
  });
  for (const int total : totals) EXPECT_EQ(total, 40'000);
  EXPECT_EQ(monitorCount(), 0u);
}

}  // namespace
