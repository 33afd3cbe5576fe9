// Programs that must not compile: one for each value of TQ_MISTAKE. See Mistakes.cmake.

#include <TQFoundation/objects/Class.h>

namespace tq {
class TQJSONEncoder {};
class TQJSONDecoder {};
class KeyedArchiver {};
class KeyedUnarchiver {};
}  // namespace tq

struct Shape : tq::Subclass<Shape> {
  static constexpr std::string_view className = "Shape";
  void encodeAsJSON(tq::TQJSONEncoder&) const {}
};

/// Has no steps itself.
struct Square final : tq::Subclass<Square, Shape> {
  static constexpr std::string_view className = "Square";
};

#if TQ_MISTAKE == 1  // const forgotten, where the parent has the step
struct Circle final : tq::Subclass<Circle, Shape> {
  static constexpr std::string_view className = "Circle";
  void encodeAsJSON(tq::TQJSONEncoder&) {}
};
#elif TQ_MISTAKE == 2  // const forgotten, where the parent has no such step
struct Circle final : tq::Subclass<Circle, Shape> {
  static constexpr std::string_view className = "Circle";
  void encodeAsKey(tq::TQJSONEncoder&) {}
};
#elif TQ_MISTAKE == 3  // a private step
class Circle final : public tq::Subclass<Circle, Shape> {
 public:
  static constexpr std::string_view className = "Circle";

 private:
  void encodeAsJSON(tq::TQJSONEncoder&) const {}
};
#elif TQ_MISTAKE == 4  // const forgotten in keyed coding
struct Circle final : tq::Subclass<Circle, Shape> {
  static constexpr std::string_view className = "Circle";
  void encodeWithCoder(tq::KeyedArchiver&) {}
  bool initWithCoder(tq::KeyedUnarchiver&) { return true; }
};
#elif TQ_MISTAKE == 5  // Subclass forgotten
struct Circle final : Shape {
  static constexpr std::string_view className = "Circle";
};
#elif TQ_MISTAKE == 6  // a name that archives cannot hold
struct Circle final : tq::Subclass<Circle, Shape> {
  static constexpr std::string_view className = "Circle \"A\"";
};
#elif TQ_MISTAKE == 7
struct Circle final : tq::Subclass<Circle, Shape> {
  static constexpr std::string_view className = "Circle";
  static constexpr std::string_view codingName = "Circle\n";
};
#else
using Circle = Square;
#endif

int main() {
#ifndef TQ_REGISTER_ONLY
  static_cast<void>(tq::makeRef<Circle>());
#endif
  tq::Class::registerClass<Circle>();
}
