#pragma once

/// @file Canvas.h
/// Renders drawings to pixels and PNG files.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Model/Document.h"
#include "Model/Features.h"
#include "Svg/SvgColor.h"

struct _cairo;
struct _cairo_surface;

namespace tqdoc {

/// A shape or picture to mark.
struct Mark {
  const Node* node;
  Color color;
};

/// What to draw on top of a drawing. The line width in pixels does not depend on the scale.
struct Overlay {
  bool bounds = false;         ///< the tight bounds of every shape and picture
  bool controls = false;       ///< the control polygon of every outline
  bool intersections = false;  ///< intersections of outlines; see findCrossings()
  std::vector<Mark> marks;
  std::optional<tq::Rect> area;  ///< a rect of the drawing to frame
};

/// An image to draw into: 32 bits for each pixel, initially transparent. One thread at a time.
class Canvas {
 public:
  /// The maximum width and height in pixels.
  static constexpr int kSideLimit = 8192;

  /// Width and height must be within 1...kSideLimit. @throws std::bad_alloc
  Canvas(int width, int height);
  ~Canvas();
  Canvas(Canvas&&) noexcept = default;
  Canvas& operator=(Canvas&&) noexcept = default;

  [[nodiscard]] int width() const;
  [[nodiscard]] int height() const;

  void fill(const tq::Rect& rect, const Color& color);

  /// Draws the page of `document` into `rect`: centred, as large as possible.
  /// @throws std::bad_alloc, or an exception with the reason, if the drawing library fails; this
  /// can then only be destroyed
  void draw(const Document& document, const tq::Rect& rect, const Overlay& overlay = {});

  /// Draws another image, with its upper left corner at (x, y).
  void put(const Canvas& picture, int x, int y);

  /// What draw() did not draw of the documents; see Painter::leftOut().
  [[nodiscard]] const Features& leftOut() const noexcept { return leftOut_; }

  /// Returns the rows from the top, without gaps; each pixel is blue, green, red and alpha,
  /// premultiplied.
  [[nodiscard]] std::span<const std::uint32_t> pixels() const;

  /// Returns the image as a PNG file, or no value.
  [[nodiscard]] std::optional<std::vector<std::byte>> png(tq::Ref<tq::Error>* error) const;

  /// Writes a PNG file as saveFile() does.
  bool writePNG(const std::string& path, tq::Ref<tq::Error>* error) const;

 private:
  struct Release {
    void operator()(_cairo* context) const noexcept;
    void operator()(_cairo_surface* surface) const noexcept;
  };
  std::unique_ptr<_cairo_surface, Release> surface_;
  std::unique_ptr<_cairo, Release> context_;
  Features leftOut_;
};

/// Returns the pixels that a length takes: rounded up, except for what a multiplication may add to
/// a whole number; 1 to Canvas::kSideLimit.
[[nodiscard]] int pixelsAcross(double length);

/// Renders the page with `scale` pixels for each of its own, or fewer if a side would exceed
/// Canvas::kSideLimit. A fraction of a pixel at the right and at the bottom takes a whole one.
[[nodiscard]] Canvas rendered(const Document& document, double scale, const Overlay& overlay = {});

/// Renders the page into a square of `side` pixels: centred, as large as possible.
[[nodiscard]] Canvas renderedSquare(const Document& document, int side);

/// Renders the page to a PNG file.
/// @param width    in pixels, at most Canvas::kSideLimit; 0 for the page's own size
/// @param leftOut  what was not drawn is added
bool renderPNG(const Document& document, int width, const Overlay& overlay, const std::string& path,
               Features& leftOut, tq::Ref<tq::Error>* error);

}  // namespace tqdoc
