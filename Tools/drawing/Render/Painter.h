#pragma once

/// @file Painter.h
/// Draws the model with cairo.

#include <cairo.h>

#include <cstddef>
#include <string_view>

#include "Model/Features.h"
#include "Model/Mask.h"
#include "Model/Pattern.h"
#include "Model/Text.h"
#include "Render/CairoSource.h"

namespace tqdoc {

/// Draws nodes.
class Painter {
 public:
  /// The maximum depth of layers. Opacity, blend modes, clips, masks, filters and patterns nested
  /// deeper are not drawn, because each needs a layer of up to the size of the image.
  static constexpr int kLayerLimit = 24;
  /// The maximum number of pixels that the steps of filters and the tiles of patterns compute, for
  /// all nodes together. Then, filters have no effect and patterns are not drawn.
  static constexpr std::size_t kPixelLimit = std::size_t{1} << 33;
  /// The maximum number of nodes that are drawn as parts of markers. A small archive could have a
  /// large marker at each of many points. Markers inside markers are not drawn.
  static constexpr std::size_t kMarkerNodeLimit = 1'000'000;

  explicit Painter(cairo_t* context) noexcept : cr_(context) {}

  /// Paints the root of a drawing: nothing in it blends with what was there before.
  void paintDrawing(const Node& root, const tq::AffineTransform& parent);

  /// @param parent  from the coordinates around the node to pixels
  void paint(const Node& node, const tq::AffineTransform& parent);

  /// What was not drawn although the document has it: what exceeds a limit or is much smaller than
  /// a pixel, damaged images, characters that no installed font has, and the colours of fonts.
  [[nodiscard]] const Features& leftOut() const noexcept { return leftOut_; }

 private:
  void paintAsLayer(const Node& node, const tq::AffineTransform& transform);
  void paintFiltered(const Node& node, const tq::AffineTransform& transform);
  void paintMasked(const Mask& mask, const tq::AffineTransform& transform);
  void paintContent(const Node& node, const tq::AffineTransform& transform);
  void paintShape(const Shape& shape, const tq::AffineTransform& transform);
  void fill(const Shape& shape, const tq::AffineTransform& transform);
  void stroke(const Shape& shape, const tq::AffineTransform& transform);
  void paintMarkers(const Shape& shape, const tq::AffineTransform& transform);
  [[nodiscard]] bool setPaint(const tq::Object* paint, double opacity,
                              const tq::AffineTransform& transform);
  [[nodiscard]] bool setPattern(const Pattern& pattern, double opacity,
                                const tq::AffineTransform& transform);
  /// Makes `pattern` the source; counts it as left out if cairo cannot draw it.
  [[nodiscard]] bool setCounted(const CairoPattern& pattern, std::string_view nameIfNot);
  void paintPicture(const Picture& picture, const tq::AffineTransform& transform);
  void paintText(const Text& text, const tq::AffineTransform& transform);

  /// Returns false if the limit is reached.
  [[nodiscard]] bool spendPixels(std::size_t count);

  /// Calls `draw` while this draws into `image`.
  template <class Draw>
  void drawInto(cairo_surface_t* image, const Draw& draw);

  cairo_t* cr_;
  int layers_ = 0;
  std::size_t pixelsLeft_ = kPixelLimit;
  bool inMarker_ = false;
  std::size_t markerNodes_ = 0;
  Features leftOut_;
  bool silhouette_ = false;  // for clipping: outlines are filled and their style is ignored
};

/// Makes `path` the current path, in the current coordinates.
void addPath(cairo_t* context, const PathData& path);

}  // namespace tqdoc
