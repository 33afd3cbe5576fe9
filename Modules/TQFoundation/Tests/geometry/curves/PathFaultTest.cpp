#include <TQFoundation/geometry/curves/Path.h>

#include "support/FailingAllocations.h"

namespace {

TEST(PathFault, AnElementWithoutMemoryLeavesThePathAsItWas) {
  test::failEachAllocation([] {
    Path path;
    const auto change = [&path](auto&& add) {
      const Path before = path;
      try {
        add();
      } catch (const std::bad_alloc&) {
        EXPECT_EQ(path, before);
        EXPECT_EQ(path.currentPoint(), before.currentPoint());
        throw;
      }
    };
    for (double x = 0; x < 4; ++x) {
      change([&] { path.moveTo({x, 1}); });
      change([&] { path.quadraticTo({x, 2}, {x, 3}); });
      change([&] { path.cubicTo({x, 4}, {x, 5}, {x, 6}); });
      change([&] { path.close(); });
      change([&] { path.append(path); });
    }
    return path.transformed(AffineTransformIdentity).elementCount() == 120;
  });
}

}  // namespace
