#include "Model/Mask.h"

#include <utility>

#include "Model/Numbers.h"

namespace tqdoc {

Mask::Mask(Traits traits, tq::Ref<tq::Array> children, const tq::Rect& region, Kind kind)
    : Subclass(std::move(traits), std::move(children)), region_(archivable(region)), kind_(kind) {}

Mask::Mask(tq::TQJSONDecoder& decoder)
    : Subclass(decoder),
      region_(decoder.decodeRectForKey("region")),
      kind_(Kind{decoder.decodeBoolForKey("alpha", false)}) {}

void Mask::encodeAsJSON(tq::TQJSONEncoder& encoder) const {
  Group::encodeAsJSON(encoder);
  encoder.encodeRect(region_, "region");
  if (kind_ == Kind::alpha) encoder.encodeBool(true, "alpha");
}

tq::Ref<Node> Mask::withTraits(Traits traits) const {
  return tq::makeRef<Mask>(std::move(traits), childArray(), region_, kind_);
}

tq::Ref<Group> Mask::withChildren(tq::Ref<tq::Array> children) const {
  return tq::makeRef<Mask>(traits(), std::move(children), region_, kind_);
}

}  // namespace tqdoc
