#pragma once

/// @file Workload.h
/// A vector document for benchmarks: shapes of 33 values and about 450 bytes of text each.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace tq::bench {

inline constexpr std::size_t kValuesPerShape = 33;

/// A shape as plain data. The document of each library is made from it.
struct ShapeRecord {
  std::string name;
  std::int64_t identifier = 0;
  bool visible = false;
  double opacity = 0;
  double x = 0, y = 0, width = 0, height = 0;
  std::vector<std::string> tags;
  std::string fill, stroke;
  double strokeWidth = 0;
  std::vector<double> points;
};

inline std::vector<ShapeRecord> makeShapes(std::size_t count) {
  std::mt19937_64 random(7);
  const auto coordinate = [&] {  // documents hold many short numbers and some long ones
    const auto bits = random();
    switch (bits % 4) {
      case 0:
        return static_cast<double>(bits % 2000);
      case 1:
        return static_cast<double>(bits % 200'000) / 100;
      default:
        return static_cast<double>(bits >> 11) * 0x1p-43;
    }
  };
  const auto colour = [&] {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text = "#";
    for (int i = 0; i < 6; ++i) text += kDigits[random() % 16];
    return text;
  };
  std::vector<ShapeRecord> shapes(count);
  for (std::size_t i = 0; i < count; ++i) {
    ShapeRecord& shape = shapes[i];
    shape.name = "Shape \xC3\xA9 " + std::to_string(i);
    shape.identifier = static_cast<std::int64_t>(random() % 1'000'000);
    shape.visible = random() % 8 != 0;
    shape.opacity = static_cast<double>(random() % 101) / 100;
    shape.x = coordinate();
    shape.y = coordinate();
    shape.width = coordinate();
    shape.height = coordinate();
    shape.tags = {"layer/" + std::to_string(random() % 10), "locked"};
    shape.fill = colour();
    shape.stroke = colour();
    shape.strokeWidth = static_cast<double>(random() % 40) / 4;
    for (int p = 0; p < 15; ++p) shape.points.push_back(coordinate());
  }
  return shapes;
}

}  // namespace tq::bench
