#include "Model/Pattern.h"

#include <utility>

#include "Model/Compare.h"
#include "Model/Numbers.h"

namespace tqdoc {

Pattern::Pattern(Traits traits, tq::Ref<tq::Array> children, const tq::Rect& tile)
    : Subclass(std::move(traits), std::move(children)), tile_(archivable(tile)) {}

Pattern::Pattern(tq::TQJSONDecoder& decoder)
    : Subclass(decoder), tile_(decoder.decodeRectForKey("tile")) {}

void Pattern::encodeAsJSON(tq::TQJSONEncoder& encoder) const {
  Group::encodeAsJSON(encoder);
  encoder.encodeRect(tile_, "tile");
}

tq::Ref<Node> Pattern::withTraits(Traits traits) const {
  return tq::makeRef<Pattern>(std::move(traits), childArray(), tile_);
}

tq::Ref<Group> Pattern::withChildren(tq::Ref<tq::Array> children) const {
  return tq::makeRef<Pattern>(traits(), std::move(children), tile_);
}

std::string Pattern::description() const {
  const auto text = [](double number) { return tq::Number::numberWith(number)->description(); };
  return "pattern of " + std::to_string(count()) + " in " + text(tile_.size.width) + " x " +
         text(tile_.size.height);
}

bool Pattern::isEqual(const tq::Object& other) const {
  const auto* pattern = tq::objectCast<Pattern>(&other);
  return pattern != nullptr && !firstDifference(*this, *pattern, "pattern");
}

}  // namespace tqdoc
