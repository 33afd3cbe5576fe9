// A host as small as they come: an object of its own archived and read again.

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
  const auto dot = tq::refCast<Dot>(tq::TQJSONDecoder::decodeData(*archive, nullptr));
  const bool fine = dot && dot->at_ == tq::Point{3, 4};
  std::puts(fine ? "the consumer is served" : "the consumer is not served");
  return fine ? 0 : 1;
}
