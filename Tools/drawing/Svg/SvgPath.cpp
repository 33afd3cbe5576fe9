#include "Svg/SvgPath.h"

#include <array>
#include <optional>

#include "Svg/Scanner.h"

namespace tqdoc {
namespace {

/// Parses path data in one pass. The smooth commands need the last control point of a curve.
class PathReader {
 public:
  PathReader(std::string_view data, PathBuilder& path) : scanner_(data), path_(path) {}

  /// Reads commands until the end or the first error. @return the rest, from the command with the
  /// error
  std::string_view read() {
    scanner_.skipSpace();
    bool first = true;
    while (!scanner_.atEnd()) {
      const std::string_view here = scanner_.rest();
      const char letter = scanner_.next();
      if (first && letter != 'M' && letter != 'm') return here;
      first = false;
      if (!readCommand(letter)) return here;
    }
    return {};
  }

 private:
  enum class Smooth { no, cubic, quadratic };

  /// A command's letter may be followed by its arguments several times.
  bool readCommand(char letter) {
    relative_ = letter >= 'a';
    char command = relative_ ? static_cast<char>(letter - 'a' + 'A') : letter;
    if (command == 'Z') {
      path_.close();
      smooth_ = Smooth::no;
      scanner_.skipSpace();
      return true;
    }
    do {
      scanner_.skipSeparator();
      if (!readSegment(command)) return false;
      if (command == 'M') command = 'L';  // further points draw lines
      scanner_.skipSpace();
    } while (scanner_.peek() != '\0' && !isLetter(scanner_.peek()));
    return true;
  }

  bool readSegment(char command) {
    switch (command) {
      case 'M':
        return readPoints<1>([&](auto& p) { move(p[0]); });
      case 'L':
        return readPoints<1>([&](auto& p) { line(p[0]); });
      case 'H':
      case 'V':
        return readAxisLine(command == 'H');
      case 'C':
        return readPoints<3>([&](auto& p) { cubic(p[0], p[1], p[2]); });
      case 'S':
        return readPoints<2>([&](auto& p) { cubic(reflected(Smooth::cubic), p[0], p[1]); });
      case 'Q':
        return readPoints<2>([&](auto& p) { quadratic(p[0], p[1]); });
      case 'T':
        return readPoints<1>([&](auto& p) { quadratic(reflected(Smooth::quadratic), p[0]); });
      case 'A':
        return readArc();
      default:
        return false;
    }
  }

  [[nodiscard]] tq::Point origin() const { return relative_ ? path_.current() : tq::Point{}; }

  /// Reads a point relative to the origin of the segment.
  std::optional<tq::Point> takePoint() {
    const auto x = scanner_.takeNumber();
    scanner_.skipSeparator();
    const auto y = x ? scanner_.takeNumber() : std::nullopt;
    if (!y) return std::nullopt;
    return tq::Point{origin().x + *x, origin().y + *y};
  }

  template <std::size_t count, class Draw>
  bool readPoints(Draw&& draw) {
    std::array<tq::Point, count> points;
    for (tq::Point& point : points) {
      if (&point != points.data()) scanner_.skipSeparator();
      const auto taken = takePoint();
      if (!taken) return false;
      point = *taken;
    }
    draw(points);
    return true;
  }

  bool readAxisLine(bool horizontal) {
    const auto number = scanner_.takeNumber();
    if (!number) return false;
    tq::Point to = path_.current();
    (horizontal ? to.x : to.y) = (horizontal ? origin().x : origin().y) + *number;
    line(to);
    return true;
  }

  bool readArc() {
    std::array<double, 3> numbers;  // the radii and the rotation
    for (double& number : numbers) {
      const auto taken = scanner_.takeNumber();
      if (!taken) return false;
      number = *taken;
      scanner_.skipSeparator();
    }
    const auto large = scanner_.takeFlag();
    scanner_.skipSeparator();
    const auto sweep = large ? scanner_.takeFlag() : std::nullopt;
    if (!sweep) return false;
    scanner_.skipSeparator();
    const auto to = takePoint();
    if (!to) return false;
    path_.arcTo({numbers[0], numbers[1]}, numbers[2], *large, *sweep, *to);
    smooth_ = Smooth::no;
    return true;
  }

  void move(tq::Point to) {
    path_.moveTo(to);
    smooth_ = Smooth::no;
  }

  void line(tq::Point to) {
    path_.lineTo(to);
    smooth_ = Smooth::no;
  }

  void cubic(tq::Point control1, tq::Point control2, tq::Point to) {
    path_.cubicTo(control1, control2, to);
    control_ = control2;
    smooth_ = Smooth::cubic;
  }

  void quadratic(tq::Point control, tq::Point to) {
    path_.quadTo(control, to);
    control_ = control;
    smooth_ = Smooth::quadratic;
  }

  /// Returns the last control point, reflected at the current point. Returns the current point if
  /// the last step was not a curve of the same degree.
  [[nodiscard]] tq::Point reflected(Smooth degree) const {
    const tq::Point at = path_.current();
    if (smooth_ != degree) return at;
    return {2 * at.x - control_.x, 2 * at.y - control_.y};
  }

  Scanner scanner_;
  PathBuilder& path_;
  bool relative_ = false;
  Smooth smooth_ = Smooth::no;
  tq::Point control_;
};

}  // namespace

std::size_t parsePath(std::string_view data, PathBuilder& path) {
  const std::string_view left = PathReader(data, path).read();
  return left.data() == nullptr ? data.npos : data.size() - left.size();
}

}  // namespace tqdoc
