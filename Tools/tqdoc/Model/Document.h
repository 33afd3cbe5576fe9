#pragma once

/// @file Document.h
/// A whole drawing.

#include <cstddef>
#include <string_view>

#include "Model/Node.h"

namespace tqdoc {

/// A page and what is on it. Immutable; any thread.
class Document final : public tq::Subclass<Document> {
 public:
  static constexpr std::string_view className = "TQDocument";

  struct Page {
    tq::Size size;            ///< in pixels of 1/96 inch
    tq::Rect viewBox;         ///< the part of the drawing's coordinates that the page shows
    tq::Ref<tq::String> fit;  ///< how, as preserveAspectRatio says it; see viewTransform()
  };

  /// @param unsupported  names of features that the drawing's reader left out, with their counts
  Document(tq::Ref<tq::String> title, Page page, tq::Ref<Group> root,
           tq::Ref<tq::Dictionary> unsupported);
  explicit Document(tq::TQJSONDecoder& decoder);
  void encodeAsJSON(tq::TQJSONEncoder& encoder) const;

  /// Empty when the drawing has none.
  [[nodiscard]] std::string_view title() const noexcept;
  [[nodiscard]] const Page& page() const noexcept { return page_; }
  [[nodiscard]] const Group& root() const noexcept { return *root_; }
  [[nodiscard]] const tq::Dictionary& unsupported() const noexcept { return *unsupported_; }

  /// Shapes and pictures in the tree.
  [[nodiscard]] std::size_t shapeCount() const;

 private:
  tq::Ref<tq::String> title_;
  Page page_;
  tq::Ref<Group> root_;
  tq::Ref<tq::Dictionary> unsupported_;
};

/// From the coordinates of `viewBox` to a viewport of this size at the origin. `fit` is the text of
/// a preserveAspectRatio attribute ("none", "xMinYMax slice"); empty and unknown texts mean
/// "xMidYMid meet". The identity when either rect is empty.
[[nodiscard]] tq::AffineTransform viewTransform(const tq::Rect& viewBox, tq::Size viewport,
                                                std::string_view fit);

/// Makes the model's classes known to the decoder. Once, at start-up.
void registerModel();

}  // namespace tqdoc
