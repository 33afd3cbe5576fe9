#pragma once

/// @file Document.h
/// Drawings.

#include <cstddef>
#include <string_view>

#include "Model/Node.h"

namespace tqdoc {

/// A page with a tree of nodes. Immutable; any thread.
class Document final : public tq::Subclass<Document> {
 public:
  static constexpr std::string_view className = "TQDocument";

  struct Page {
    tq::Size size;            ///< in pixels of 1/96 inch
    tq::Rect viewBox;         ///< the part of the drawing's coordinates that the page shows
    tq::Ref<tq::String> fit;  ///< a preserveAspectRatio value; see viewTransform()
  };

  /// @param unsupported  names of features that the reader ignored, with their counts
  Document(tq::Ref<tq::String> title, Page page, tq::Ref<Group> root,
           tq::Ref<tq::Dictionary> unsupported);
  explicit Document(tq::TQJSONDecoder& decoder);
  void encodeAsJSON(tq::TQJSONEncoder& encoder) const;

  /// Empty if the drawing has no title.
  [[nodiscard]] std::string_view title() const noexcept;
  [[nodiscard]] const Page& page() const noexcept { return page_; }
  [[nodiscard]] const Group& root() const noexcept { return *root_; }
  [[nodiscard]] const tq::Dictionary& unsupported() const noexcept { return *unsupported_; }
  /// Returns a document with the same page and another tree.
  [[nodiscard]] tq::Ref<Document> withRoot(tq::Ref<Group> root) const;

  /// Returns the number of shapes, pictures and texts in the tree.
  [[nodiscard]] std::size_t shapeCount() const;

 private:
  tq::Ref<tq::String> title_;
  Page page_;
  tq::Ref<Group> root_;
  tq::Ref<tq::Dictionary> unsupported_;
};

/// Returns the transform from the coordinates of `viewBox` to a viewport of this size at the
/// origin. `fit` is a preserveAspectRatio attribute ("none", "xMinYMax slice"); empty and unknown
/// values mean "xMidYMid meet". The result is the identity if either rect is empty.
[[nodiscard]] tq::AffineTransform viewTransform(const tq::Rect& viewBox, tq::Size viewport,
                                                std::string_view fit);

/// Returns the transform from the drawing's coordinates to those of `rect`, in which the page is
/// centred and as large as possible.
[[nodiscard]] tq::AffineTransform pagePlacement(const Document::Page& page, const tq::Rect& rect);

/// Registers the classes of the model for decoding. Call once, at start-up.
void registerModel();

}  // namespace tqdoc
