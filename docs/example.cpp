#include <TQFoundation/TQFoundation.h>

struct Dot final : tq::Subclass<Dot> {
  static constexpr std::string_view className = "Dot";
  Dot(tq::Point at, double radius) : at_(at), radius_(radius) {}
  explicit Dot(tq::TQJSONDecoder& decoder)
      : at_(decoder.decodePointForKey("at")), radius_(decoder.decodeDoubleForKey("radius", 1)) {}
  void encodeAsJSON(tq::TQJSONEncoder& encoder) const {
    encoder.encodePoint(at_, "at");
    encoder.encodeDouble(radius_, "radius");
  }
  tq::Point at_;
  double radius_;
};

int main() {
  tq::Class::registerClass<Dot>();
  const auto archive =
      tq::TQJSONEncoder::encodeObjectAsData(tq::makeRef<Dot>(tq::Point{3, 4}, 5.5));
  const auto dot = tq::refCast<Dot>(tq::TQJSONDecoder::decodeData(*archive, nullptr));
  return dot && dot->at_ == tq::Point{3, 4} && dot->radius_ == 5.5 ? 0 : 1;
}
