#include "Model/Text.h"

#include <algorithm>
#include <array>
#include <utility>

#include "Model/Numbers.h"
#include "Model/TextLayout.h"

namespace tqdoc {
namespace {

using List = std::vector<double> GlyphPositions::*;
constexpr std::array<std::pair<const char*, List>, 5> kLists{{{"x", &GlyphPositions::x},
                                                              {"y", &GlyphPositions::y},
                                                              {"dx", &GlyphPositions::dx},
                                                              {"dy", &GlyphPositions::dy},
                                                              {"rotate", &GlyphPositions::rotate}}};

}  // namespace

TextSpan::TextSpan(std::size_t length, tq::Ref<tq::Dictionary> style, GlyphPositions positions)
    : length_(length), style_(std::move(style)), positions_(std::move(positions)) {
  for (const auto& [key, list] : kLists) {
    for (double& number : positions_.*list) number = archivable(number);
  }
}

TextSpan::TextSpan(tq::TQJSONDecoder& decoder)
    : style_(decodeAs(decoder, "style", tq::Dictionary::dictionary())) {
  const std::int64_t length = decoder.decodeIntegerForKey("length", 0);
  if (length < 0) refuse(decoder, "a span of a text has a negative length");
  length_ = static_cast<std::size_t>(std::max<std::int64_t>(length, 0));
  for (const auto& [key, list] : kLists) {
    if (!decoder.containsValueForKey(key)) continue;
    auto numbers = decodeNumbers(decoder, key);
    if (!numbers) refuse(decoder, "a span of a text has a position that is not a number");
    positions_.*list = std::move(numbers).value_or(std::vector<double>());
  }
}

void TextSpan::encodeAsJSON(tq::TQJSONEncoder& encoder) const {
  encoder.encodeInteger(static_cast<std::int64_t>(length_), "length");
  if (style_->count() > 0) encoder.encodeObject(style_, "style");
  for (const auto& [key, list] : kLists) {
    const std::span<const double> numbers(positions_.*list);
    if (!numbers.empty()) encoder.encodeObject(tq::Array::arrayWithNumbers(numbers), key);
  }
}

bool TextSpan::isEqual(const tq::Object& other) const {
  const auto* span = tq::objectCast<TextSpan>(&other);
  return span != nullptr && span->length_ == length_ && span->style_->isEqual(*style_) &&
         span->positions_ == positions_;
}

Text::Text(Traits traits, tq::Ref<tq::String> string, tq::Point position,
           tq::Ref<tq::Dictionary> style, tq::Ref<tq::Array> spans)
    : Subclass(std::move(traits)),
      string_(std::move(string)),
      position_(archivable(position)),
      style_(std::move(style)),
      spans_(std::move(spans)) {}

Text::Text(tq::TQJSONDecoder& decoder)
    : Subclass(decoder),
      string_(decodeAs(decoder, "string", tq::String::of(""))),
      position_(decoder.decodePointForKey("position")),
      style_(decodeAs(decoder, "style", tq::Dictionary::dictionary())),
      spans_(decodeAs(decoder, "spans", tq::Array::array())) {
  for (const tq::Object& span : *spans_) {
    if (tq::objectCast<TextSpan>(&span) != nullptr) continue;
    refuse(decoder, "a text has a span of the wrong kind");
    spans_ = tq::Array::array();
    return;
  }
}

void Text::encodeAsJSON(tq::TQJSONEncoder& encoder) const {
  Node::encodeAsJSON(encoder);
  encoder.encodeObject(string_, "string");
  encoder.encodePoint(position_, "position");
  encoder.encodeObject(style_, "style");
  if (spans_->count() > 0) encoder.encodeObject(spans_, "spans");
}

tq::Ref<Node> Text::withTraits(Traits traits) const {
  return tq::makeRef<Text>(std::move(traits), string_, position_, style_, spans_);
}

tq::Ref<Text> Text::withStyle(tq::Ref<tq::Dictionary> style) const {
  return tq::makeRef<Text>(traits(), string_, position_, std::move(style), spans_);
}

tq::Rect Text::contentBounds(const tq::AffineTransform& transform) const {
  tq::Rect bounds = tq::RectNull;
  for (const auto& shape : shapes()) {
    bounds = tq::RectUnion(bounds, shape->path().tightBounds(transform));
  }
  return bounds;
}

tq::Ref<tq::Dictionary> Text::styleOfSpan(std::size_t index) const {
  if (index >= spans_->count() || span(index).style().count() == 0) return style_;
  const auto merged = tq::MutableDictionary::dictionaryWithDictionary(*style_);
  for (const auto [key, value] : span(index).style()) {
    if (tq::objectCast<tq::Null>(&value) != nullptr) {
      merged->removeObjectForKey(key);
    } else {
      merged->setObject(tq::share(value), tq::share(key));
    }
  }
  return tq::refCast<tq::Dictionary>(merged->copy());
}

std::vector<tq::Ref<Shape>> Text::shapes() const { return layOut(*this).shapes; }

std::string_view firstCharacters(std::string_view text, std::size_t count) noexcept {
  std::size_t size = 0;
  for (; size < text.size(); ++size) {
    const bool begins = (static_cast<unsigned char>(text[size]) & 0xc0) != 0x80;
    if (begins && count-- == 0) break;
  }
  return text.substr(0, size);
}

std::size_t charactersIn(std::string_view text) noexcept {
  return static_cast<std::size_t>(std::ranges::count_if(
      text, [](char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; }));
}

tq::Ref<tq::Dictionary> styleChanges(const tq::Dictionary& base, const tq::Dictionary& style) {
  const auto changes = tq::MutableDictionary::dictionary();
  for (const auto [key, value] : style) {
    const tq::Object* const before = base.objectForKey(key);
    if (before == nullptr || !before->isEqual(value)) {
      changes->setObject(tq::share(value), tq::share(key));
    }
  }
  for (const auto [key, value] : base) {
    if (style.objectForKey(key) == nullptr) changes->setObject(tq::Null::null(), tq::share(key));
  }
  return tq::refCast<tq::Dictionary>(changes->copy());
}

}  // namespace tqdoc
