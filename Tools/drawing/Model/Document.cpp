#include "Model/Document.h"

#include <algorithm>
#include <utility>

#include "Model/Gradient.h"
#include "Model/Marker.h"
#include "Model/Mask.h"
#include "Model/Numbers.h"
#include "Model/Pattern.h"
#include "Model/Text.h"

namespace tqdoc {
namespace {

[[nodiscard]] std::size_t shapesIn(const Node& node) {
  const auto* group = tq::objectCast<Group>(&node);
  if (group == nullptr) return 1;
  std::size_t count = 0;
  for (std::size_t i = 0; i < group->count(); ++i) count += shapesIn(group->child(i));
  return count;
}

}  // namespace

Document::Document(tq::Ref<tq::String> title, Page page, tq::Ref<Group> root,
                   tq::Ref<tq::Dictionary> unsupported)
    : title_(std::move(title)),
      page_(std::move(page)),
      root_(std::move(root)),
      unsupported_(std::move(unsupported)) {
  page_.size = archivable(page_.size);
  page_.viewBox = archivable(page_.viewBox);
}

Document::Document(tq::TQJSONDecoder& decoder)
    : title_(decoder.decodeObjectForKey<tq::String>("title")),
      page_{decoder.decodeSizeForKey("size"), decoder.decodeRectForKey("viewBox"),
            decoder.decodeObjectForKey<tq::String>("fit")},
      root_(decoder.decodeObjectForKey<Group>("root")),
      unsupported_(decoder.decodeObjectForKey<tq::Dictionary>("unsupported")) {
  if (!page_.fit) page_.fit = tq::String::of("");
  if (!unsupported_) unsupported_ = tq::Dictionary::dictionary();
  if (!root_) {
    refuse(decoder, "the document has no root group");
    root_ = tq::makeRef<Group>(Node::Traits{}, tq::Array::array());
  }
}

void Document::encodeAsJSON(tq::TQJSONEncoder& encoder) const {
  encoder.encodeObject(title_, "title");
  encoder.encodeSize(page_.size, "size");
  encoder.encodeRect(page_.viewBox, "viewBox");
  encoder.encodeObject(page_.fit, "fit");
  encoder.encodeObject(root_, "root");
  encoder.encodeObject(unsupported_, "unsupported");
}

std::string_view Document::title() const noexcept {
  return title_ ? title_->view() : std::string_view();
}

tq::Ref<Document> Document::withRoot(tq::Ref<Group> root) const {
  return tq::makeRef<Document>(title_, page_, std::move(root), unsupported_);
}

std::size_t Document::shapeCount() const { return shapesIn(*root_); }

tq::AffineTransform viewTransform(const tq::Rect& viewBox, tq::Size viewport,
                                  std::string_view fit) {
  const tq::Size box = viewBox.size;
  if (!(box.width > 0 && box.height > 0 && viewport.width > 0 && viewport.height > 0)) return {};
  double sx = viewport.width / box.width;
  double sy = viewport.height / box.height;
  tq::Point spare;
  if (!fit.starts_with("none")) {
    sx = sy = fit.find("slice") != fit.npos ? std::max(sx, sy) : std::min(sx, sy);
    const auto share = [&](std::string_view min, std::string_view max) {
      return fit.find(min) != fit.npos ? 0.0 : fit.find(max) != fit.npos ? 1.0 : 0.5;
    };
    spare = {(viewport.width - sx * box.width) * share("xMin", "xMax"),
             (viewport.height - sy * box.height) * share("YMin", "YMax")};
  }
  return {sx, 0, 0, sy, spare.x - sx * viewBox.origin.x, spare.y - sy * viewBox.origin.y};
}

tq::AffineTransform pagePlacement(const Document::Page& page, const tq::Rect& rect) {
  const auto inPage = viewTransform(page.viewBox, page.size, page.fit->view());
  const auto inRect = viewTransform({{0, 0}, page.size}, rect.size, "");
  const tq::AffineTransform moved{1, 0, 0, 1, rect.origin.x, rect.origin.y};
  return tq::AffineTransformConcat(inPage, tq::AffineTransformConcat(inRect, moved));
}

void registerModel() {
  tq::Class::registerClass<Document>();
  tq::Class::registerClass<Group>();
  tq::Class::registerClass<Shape>();
  tq::Class::registerClass<Picture>();
  tq::Class::registerClass<Text>();
  tq::Class::registerClass<TextSpan>();
  tq::Class::registerClass<PathData>();
  tq::Class::registerClass<Gradient>();
  tq::Class::registerClass<Filter>();
  tq::Class::registerClass<Marker>();
  tq::Class::registerClass<Mask>();
  tq::Class::registerClass<Pattern>();
}

}  // namespace tqdoc
