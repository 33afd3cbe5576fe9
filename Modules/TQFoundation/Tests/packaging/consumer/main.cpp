// A minimal host: archives an object of its own class and reads it back.

#include <TQFoundation/TQFoundation.h>

#include <cstdio>

namespace {

struct Dot final : tq::Subclass<Dot> {
  static constexpr std::string_view className = "Dot";
  explicit Dot(tq::Point at) : at_(at) {}
  explicit Dot(tq::TQJSONDecoder& decoder) : at_(decoder.decodePointForKey("at")) {}
  void encodeAsJSON(tq::TQJSONEncoder& encoder) const { encoder.encodePoint(at_, "at"); }
  tq::Point at_;
};

}  // namespace

int main() {
  tq::Class::registerClass<Dot>();
  const auto archive = tq::TQJSONEncoder::encodeObjectAsData(tq::makeRef<Dot>(tq::Point{3, 4}));
  const auto dot = tq::refCast<Dot>(tq::TQJSONDecoder::decodeDataError(*archive, nullptr));
  const bool isEqual = dot && dot->at_ == tq::Point{3, 4};
  const tq::Ref<tq::Object> null = tq::Null::null();
  if (!tq::refCast<tq::Null>(null)) return 2;  // program and library have different types
  std::puts(isEqual ? "the object is unchanged" : "the object has changed");
  return isEqual ? 0 : 1;
}
