#include <TQFoundation/geometry/values/GeometrySystem.h>

#include <TQFoundation/geometry/values/AnchoredRect.h>

#include "geometry/Expectations.h"

namespace tq {
namespace {

using namespace test;

TEST(GeometrySystem, MapsItsBoundsOntoItsFrame) {
  const auto system = GeometrySystem::withFrame({100, 100, 40, 20}, {10, 5, -10, 10});
  expectFields(system.rectToParent({0, 5, 10, 10}), {100, 100, 40, 20});
  EXPECT_EQ(system.pointToParent({5, 10}), (Point{120, 110}));
  EXPECT_EQ(system.pointFromParent({120, 110}), (Point{5, 10}));
  expectFields(system.rectFromParent({100, 100, 4, 2}), {0, 5, 1, 1});
  const auto point = GeometrySystem::withFrame({3, 3, 5, 5}, {1, 1, 0, 0});
  EXPECT_EQ(point.pointToParent({2, 1}), (Point{4, 3}));  // nothing to scale by: lengths are kept

  const auto turned = GeometrySystem::withTransform({0, 0, 2, 1}, {0, 1, -1, 0, 0, 0});
  expectFields(turned.frame, {-1, 0, 1, 2});
  const auto held = AnchoredRect::hold({0, 0, 1, 1}, TQCorner::minXMinY).toParentOf(turned);
  EXPECT_EQ(held.position, (Point{-1, 0}));
}

}  // namespace
}  // namespace tq
