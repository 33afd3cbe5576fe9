#pragma once

/// @file Text.h
/// Text: a string with styles and positions.

#include <cstddef>
#include <string_view>
#include <vector>

#include "Model/Node.h"

namespace tqdoc {

/// The positions of the first characters of a span. Each list may be shorter than the span; the
/// other characters follow the one before them.
struct GlyphPositions {
  std::vector<double> x, y;    ///< absolute: each begins a new line, which is aligned by itself
  std::vector<double> dx, dy;  ///< added to the position
  std::vector<double> rotate;  ///< in degrees, around the start of the character's baseline

  friend bool operator==(const GlyphPositions&, const GlyphPositions&) = default;
};

/// A part of a text with a style or positions of its own. Immutable; any thread.
class TextSpan final : public tq::Subclass<TextSpan> {
 public:
  static constexpr std::string_view className = "TQDocTextSpan";

  /// @param length  in characters (code points)
  /// @param style   the entries in which the span differs from its text; Null for absent ones
  TextSpan(std::size_t length, tq::Ref<tq::Dictionary> style, GlyphPositions positions);
  explicit TextSpan(tq::TQJSONDecoder& decoder);
  void encodeAsJSON(tq::TQJSONEncoder& encoder) const;

  [[nodiscard]] std::size_t length() const noexcept { return length_; }
  [[nodiscard]] const tq::Dictionary& style() const noexcept { return *style_; }
  [[nodiscard]] const GlyphPositions& positions() const noexcept { return positions_; }

  [[nodiscard]] bool isEqual(const tq::Object& other) const override;
  [[nodiscard]] std::size_t hash() const override { return length_; }

 private:
  std::size_t length_ = 0;
  tq::Ref<tq::Dictionary> style_;
  GlyphPositions positions_;
};

/// A string with a style. Spans cover it from its start; what they do not cover has the style of
/// the text.
///
/// The style has the keys of a Shape's style, and these, each of which may be absent: "fontFamily",
/// a list of names ("serif"); "fontSize" in the text's coordinates (16); "fontStyle", "italic" or
/// "oblique"; "fontWeight", 1...1000 (400); "fontStretch", such as "condensed"; "fontVariant",
/// "small-caps"; "letterSpacing" and "wordSpacing", lengths (0); "anchor", "middle" or "end", which
/// part of a line is at its position ("start"); "direction", "rtl"; "decoration", a list
/// of "underline", "overline" and "line-through"; "baselineShift", upwards (0); "language", a tag
/// such as "de-AT" ("en").
class Text final : public tq::Subclass<Text, Node> {
 public:
  static constexpr std::string_view className = "TQDocText";

  /// All `spans` must be TextSpans.
  /// @param position  the start of the baseline
  Text(Traits traits, tq::Ref<tq::String> string, tq::Point position, tq::Ref<tq::Dictionary> style,
       tq::Ref<tq::Array> spans);
  explicit Text(tq::TQJSONDecoder& decoder);
  void encodeAsJSON(tq::TQJSONEncoder& encoder) const;
  [[nodiscard]] tq::Ref<Node> withTraits(Traits traits) const override;
  /// Returns a text with the same string, position and spans and another style.
  [[nodiscard]] tq::Ref<Text> withStyle(tq::Ref<tq::Dictionary> style) const;
  [[nodiscard]] tq::Rect contentBounds(const tq::AffineTransform& transform) const override;

  [[nodiscard]] std::string_view string() const noexcept { return string_->view(); }
  [[nodiscard]] tq::Point position() const noexcept { return position_; }
  [[nodiscard]] const tq::Dictionary& style() const noexcept { return *style_; }
  [[nodiscard]] const tq::Array& spans() const noexcept { return *spans_; }
  [[nodiscard]] const TextSpan& span(std::size_t index) const {
    return static_cast<const TextSpan&>(spans_->objectAtIndex(index));
  }
  /// Returns the whole style of a span; that of the text for an index after the last one.
  [[nodiscard]] tq::Ref<tq::Dictionary> styleOfSpan(std::size_t index) const;

  /// Returns the glyphs as shapes in the text's coordinates, in the order in which they are drawn.
  /// They depend on the installed fonts. Computed for each call.
  /// @throws std::runtime_error if the text library is not installed
  [[nodiscard]] std::vector<tq::Ref<Shape>> shapes() const;

 private:
  tq::Ref<tq::String> string_;
  tq::Point position_;
  tq::Ref<tq::Dictionary> style_;
  tq::Ref<tq::Array> spans_;
};

/// Returns the beginning of a UTF-8 text with this number of characters, or all of it.
[[nodiscard]] std::string_view firstCharacters(std::string_view text, std::size_t count) noexcept;

/// Returns the number of characters of a UTF-8 text.
[[nodiscard]] std::size_t charactersIn(std::string_view text) noexcept;

/// Returns the entries that make `style` from `base`; Null for those that `style` lacks.
[[nodiscard]] tq::Ref<tq::Dictionary> styleChanges(const tq::Dictionary& base,
                                                   const tq::Dictionary& style);

}  // namespace tqdoc
