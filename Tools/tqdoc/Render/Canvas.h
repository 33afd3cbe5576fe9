#pragma once

/// @file Canvas.h
/// Drawings as pixels.

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Model/Document.h"
#include "Svg/SvgColor.h"

struct _cairo;
struct _cairo_surface;

namespace tqdoc {

/// A shape or picture to trace.
struct Mark {
  const Node* node;
  Color color;
};

/// What to draw on top of a drawing, in lines as wide in pixels whatever the scale.
struct Overlay {
  bool bounds = false;         ///< the tight bounds of every shape and picture
  bool controls = false;       ///< the control points of every outline, joined
  bool intersections = false;  ///< where outlines cross; see findCrossings()
  std::vector<Mark> marks;
  std::optional<tq::Rect> area;  ///< a place of the drawing to frame
};

/// An image to draw into: 32 bits a pixel, transparent at first. One thread at a time.
class Canvas {
 public:
  /// Pixels on a side, at the most.
  static constexpr int kSideLimit = 8192;

  /// Sides within 1...kSideLimit. @throws std::bad_alloc
  Canvas(int width, int height);
  ~Canvas();
  Canvas(Canvas&&) noexcept = default;
  Canvas& operator=(Canvas&&) noexcept = default;

  void fill(const tq::Rect& rect, const Color& color);

  /// Draws the page of `document` into `rect`, centred, as large as it fits.
  void draw(const Document& document, const tq::Rect& rect, const Overlay& overlay = {});

  /// Rows from the top, blue, green, red and alpha of each pixel, multiplied by alpha.
  [[nodiscard]] std::span<const std::uint32_t> pixels() const;

  /// As saveFile() does.
  bool writePNG(const std::string& path, tq::Ref<tq::Error>* error) const;

 private:
  struct Release {
    void operator()(_cairo* context) const noexcept;
    void operator()(_cairo_surface* surface) const noexcept;
  };
  std::unique_ptr<_cairo_surface, Release> surface_;
  std::unique_ptr<_cairo, Release> context_;
};

/// Draws the page alone into a PNG file.
/// @param width  pixels across, at most Canvas::kSideLimit; 0 takes the page's own size
bool renderPNG(const Document& document, int width, const Overlay& overlay, const std::string& path,
               tq::Ref<tq::Error>* error);

}  // namespace tqdoc
