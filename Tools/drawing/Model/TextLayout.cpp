#include "Model/TextLayout.h"

#include <dlfcn.h>

#include <hb-ot.h>
#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "Model/Numbers.h"

namespace tqdoc {
namespace {

/// A function of the library, whose type is the one that its header declares.
template <class Function>
class Symbol {
 public:
  Symbol(void* library, const char* name)
      : function_(reinterpret_cast<Function*>(dlsym(library, name))) {
    if (function_ == nullptr) throw std::runtime_error(std::string("Pango has no ") + name);
  }
  template <class... Arguments>
  auto operator()(Arguments... arguments) const {
    return function_(arguments...);
  }
  [[nodiscard]] Function* get() const noexcept { return function_; }

 private:
  Function* function_;
};

/// The functions of Pango and of the object library below it.
class Pango {
 public:
  /// Loads the library at the first call.
  [[nodiscard]] static const Pango& instance() {
    static const Pango* const pango = new Pango;  // never released: it has caches for each thread
    return *pango;
  }

 private:
  Pango() = default;

  [[nodiscard]] static void* load() {
    void* const library = dlopen("libpangocairo-1.0.so.0", RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
      throw std::runtime_error(std::string("text cannot be drawn: ") + dlerror());
    }
    return library;
  }

  void* library_ = load();

 public:
  template <class F>
  using S = Symbol<F>;
  S<decltype(g_object_unref)> unref{library_, "g_object_unref"};
  S<decltype(pango_cairo_font_map_get_default)> defaultFonts{library_,
                                                             "pango_cairo_font_map_get_default"};
  S<decltype(pango_font_map_create_context)> newContext{library_, "pango_font_map_create_context"};
  S<decltype(pango_cairo_context_set_resolution)> setResolution{
      library_, "pango_cairo_context_set_resolution"};
  S<decltype(pango_cairo_context_set_font_options)> setFontOptions{
      library_, "pango_cairo_context_set_font_options"};
  S<decltype(pango_context_set_round_glyph_positions)> setRounding{
      library_, "pango_context_set_round_glyph_positions"};
  S<decltype(pango_context_set_base_dir)> setDirection{library_, "pango_context_set_base_dir"};
  S<decltype(pango_context_set_language)> setLanguage{library_, "pango_context_set_language"};
  S<decltype(pango_language_from_string)> language{library_, "pango_language_from_string"};
  S<decltype(pango_layout_new)> newLayout{library_, "pango_layout_new"};
  S<decltype(pango_layout_set_text)> setText{library_, "pango_layout_set_text"};
  S<decltype(pango_layout_set_auto_dir)> setAutoDirection{library_, "pango_layout_set_auto_dir"};
  S<decltype(pango_layout_set_single_paragraph_mode)> setSingleParagraph{
      library_, "pango_layout_set_single_paragraph_mode"};
  S<decltype(pango_layout_set_font_description)> setFont{library_,
                                                         "pango_layout_set_font_description"};
  S<decltype(pango_layout_set_attributes)> setAttributes{library_, "pango_layout_set_attributes"};
  S<decltype(pango_layout_get_line_readonly)> firstLine{library_, "pango_layout_get_line_readonly"};
  S<decltype(pango_layout_line_get_extents)> extents{library_, "pango_layout_line_get_extents"};
  S<decltype(pango_font_get_hb_font)> shaper{library_, "pango_font_get_hb_font"};
  S<decltype(hb_font_get_face)> faceOf{library_, "hb_font_get_face"};
  S<decltype(hb_ot_color_has_png)> hasBitmaps{library_, "hb_ot_color_has_png"};
  S<decltype(hb_ot_color_has_layers)> hasLayers{library_, "hb_ot_color_has_layers"};
  S<decltype(hb_ot_color_has_svg)> hasDrawings{library_, "hb_ot_color_has_svg"};
  S<decltype(pango_cairo_layout_line_path)> addPath{library_, "pango_cairo_layout_line_path"};
  S<decltype(pango_font_description_new)> newFont{library_, "pango_font_description_new"};
  S<decltype(pango_font_description_free)> freeFont{library_, "pango_font_description_free"};
  S<decltype(pango_font_description_set_family)> setFamily{library_,
                                                           "pango_font_description_set_family"};
  S<decltype(pango_font_description_set_absolute_size)> setSize{
      library_, "pango_font_description_set_absolute_size"};
  S<decltype(pango_font_description_set_weight)> setWeight{library_,
                                                           "pango_font_description_set_weight"};
  S<decltype(pango_font_description_set_style)> setSlant{library_,
                                                         "pango_font_description_set_style"};
  S<decltype(pango_font_description_set_stretch)> setStretch{library_,
                                                             "pango_font_description_set_stretch"};
  S<decltype(pango_font_description_set_variant)> setVariant{library_,
                                                             "pango_font_description_set_variant"};
  S<decltype(pango_attr_list_new)> newAttributes{library_, "pango_attr_list_new"};
  S<decltype(pango_attr_list_unref)> freeAttributes{library_, "pango_attr_list_unref"};
  S<decltype(pango_attr_list_insert)> insertAttribute{library_, "pango_attr_list_insert"};
  S<decltype(pango_attr_letter_spacing_new)> spacing{library_, "pango_attr_letter_spacing_new"};
  S<decltype(pango_attr_underline_new)> underline{library_, "pango_attr_underline_new"};
  S<decltype(pango_attr_overline_new)> overline{library_, "pango_attr_overline_new"};
  S<decltype(pango_attr_strikethrough_new)> strikethrough{library_, "pango_attr_strikethrough_new"};
};

struct Release {
  void operator()(cairo_t* context) const noexcept { cairo_destroy(context); }
  void operator()(cairo_surface_t* surface) const noexcept { cairo_surface_destroy(surface); }
  void operator()(cairo_path_t* path) const noexcept { cairo_path_destroy(path); }
  void operator()(cairo_font_options_t* options) const noexcept {
    cairo_font_options_destroy(options);
  }
  void operator()(PangoContext* context) const { Pango::instance().unref(context); }
  void operator()(PangoLayout* layout) const { Pango::instance().unref(layout); }
  void operator()(PangoFontDescription* font) const { Pango::instance().freeFont(font); }
  void operator()(PangoAttrList* list) const { Pango::instance().freeAttributes(list); }
};
template <class T>
using Owned = std::unique_ptr<T, Release>;

/// Glyphs are laid out at this size and then scaled: cairo rounds outlines to 1/256 of a unit.
constexpr double kLaidOutSize = 256;
/// A longer line is laid out in parts, and more space between letters is cut: widths end at 2²¹.
constexpr std::size_t kLinePart = 500;
constexpr double kWidestSpace = 3500;

[[nodiscard]] Owned<PangoFontDescription> fontOf(const Pango& pango, const tq::Dictionary& style) {
  Owned<PangoFontDescription> font(pango.newFont());
  const std::string_view family = textIn(style, "fontFamily");
  pango.setFamily(font.get(), family.empty() ? "serif" : std::string(family).c_str());
  pango.setSize(font.get(), kLaidOutSize * PANGO_SCALE);
  const double weight = std::clamp(numberIn(style, "fontWeight", 400), 1.0, 1000.0);
  pango.setWeight(font.get(), static_cast<PangoWeight>(weight));
  const std::string_view slant = textIn(style, "fontStyle");
  pango.setSlant(font.get(), slant == "italic"    ? PANGO_STYLE_ITALIC
                             : slant == "oblique" ? PANGO_STYLE_OBLIQUE
                                                  : PANGO_STYLE_NORMAL);
  constexpr std::string_view kStretches[] = {
      "ultra-condensed", "extra-condensed", "condensed",      "semi-condensed", "normal",
      "semi-expanded",   "expanded",        "extra-expanded", "ultra-expanded"};
  const auto* stretch = std::ranges::find(kStretches, textIn(style, "fontStretch"));
  if (stretch != std::end(kStretches)) {
    pango.setStretch(font.get(), static_cast<PangoStretch>(stretch - kStretches));
  }
  if (textIn(style, "fontVariant") == "small-caps") {
    pango.setVariant(font.get(), PANGO_VARIANT_SMALL_CAPS);
  }
  return font;
}

/// Lays out one text.
class Layout {
 public:
  explicit Layout(const Text& text) : text_(text) {
    // Without bounds: cairo drops glyphs far outside of a surface, also from outlines.
    const Owned<cairo_surface_t> surface(
        cairo_recording_surface_create(CAIRO_CONTENT_ALPHA, nullptr));
    cr_.reset(cairo_create(surface.get()));
    context_.reset(pango_.newContext(pango_.defaultFonts()));
    const Owned<cairo_font_options_t> options(cairo_font_options_create());
    cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
    pango_.setFontOptions(context_.get(), options.get());
    pango_.setResolution(context_.get(), 72);
    pango_.setRounding(context_.get(), FALSE);
    layout_.reset(pango_.newLayout(context_.get()));
    pango_.setSingleParagraph(layout_.get(), TRUE);
    pango_.setAutoDirection(layout_.get(), FALSE);
  }

  [[nodiscard]] TextOutlines outlines() {
    splitIntoParts();
    pen_ = text_.position();
    for (std::size_t i = 0; i < parts_.size(); ++i) {
      const std::size_t begin = i;
      while (i + 1 < parts_.size() && !parts_[i + 1].x && !parts_[i + 1].y) ++i;
      placeLine(begin, i + 1);
    }
    for (std::size_t i = 0; i < outlines_.size(); ++i) {
      auto& [steps, coordinates] = outlines_[i];
      if (steps.empty()) continue;
      result_.shapes.push_back(tq::makeRef<Shape>(
          Node::Traits(), tq::makeRef<PathData>(std::move(steps), std::move(coordinates)),
          text_.styleOfSpan(i)));
    }
    return std::move(result_);
  }

 private:
  /// Characters of one span that are laid out together, because only the first has a position.
  struct Part {
    std::size_t span = 0;
    std::string text;
    std::optional<double> x, y;
    double dx = 0, dy = 0, rotation = 0;
  };
  struct Outline {
    std::string steps;
    std::vector<double> coordinates;
  };

  void splitIntoParts() {
    const auto string = tq::String::stringWithUTF8Repaired(text_.string());
    std::string_view rest = string->view();
    std::size_t charactersLeft = kLaidOutCharacters;
    for (std::size_t i = 0; i <= text_.spans().count() && !rest.empty(); ++i) {
      const bool isRest = i == text_.spans().count();
      const GlyphPositions none;
      const GlyphPositions& positions = isRest ? none : text_.span(i).positions();
      const std::size_t length = isRest ? rest.size() : text_.span(i).length();
      std::size_t inPart = 0;
      double rotation = 0;
      for (std::size_t k = 0; k < length && !rest.empty() && charactersLeft > 0; ++k) {
        const auto number = [k](const std::vector<double>& list) -> std::optional<double> {
          return k < list.size() ? std::optional(list[k]) : std::nullopt;
        };
        const auto x = number(positions.x), y = number(positions.y);
        const double dx = number(positions.dx).value_or(0), dy = number(positions.dy).value_or(0);
        rotation = number(positions.rotate).value_or(rotation);  // the last one holds for the rest
        if (k == 0 || x || y || dx != 0 || dy != 0 || rotation != 0 || inPart == kLinePart) {
          parts_.push_back({i, {}, x, y, dx, dy, rotation});
          inPart = 0;
        }
        ++inPart;
        --charactersLeft;
        appendCharacter(parts_.back().text, rest);
      }
    }
  }

  /// Moves the first character. Control characters have no glyphs; Pango would show their codes.
  static void appendCharacter(std::string& to, std::string_view& rest) {
    const std::string_view character = firstCharacters(rest, 1);
    const bool isControl = static_cast<unsigned char>(character[0]) < 0x20 || character == "\x7f";
    to += isControl ? " " : character;
    rest.remove_prefix(character.size());
  }

  /// Draws the parts of a line and aligns them.
  void placeLine(std::size_t begin, std::size_t end) {
    const auto lineStyle = text_.styleOfSpan(parts_[begin].span);
    const bool isRightToLeft = textIn(*lineStyle, "direction") == "rtl";
    const std::string_view anchor = textIn(*lineStyle, "anchor");
    pen_ = {parts_[begin].x.value_or(pen_.x), parts_[begin].y.value_or(pen_.y)};
    const tq::Point start = pen_;
    std::vector<std::pair<std::size_t, std::size_t>> drawn;  // the coordinates of each part
    for (std::size_t i = begin; i < end; ++i) {
      Part& part = parts_[i];
      pen_.x += part.dx;
      pen_.y += part.dy;
      if (outlines_.size() <= part.span) outlines_.resize(part.span + 1);
      drawn.emplace_back(part.span, outlines_[part.span].coordinates.size());
      draw(part, isRightToLeft);
    }
    const double share = anchor == "middle" ? 0.5 : anchor == "end" ? 1 : 0;
    const double shift = share * (start.x - pen_.x);
    pen_.x += shift;
    if (shift == 0) return;
    // Parts of one span follow each other, so each span is shifted from its first part of the line.
    for (std::size_t i = 0; i < drawn.size(); ++i) {
      if (i > 0 && drawn[i].first == drawn[i - 1].first) continue;
      auto& coordinates = outlines_[drawn[i].first].coordinates;
      for (std::size_t at = drawn[i].second; at < coordinates.size(); at += 2) {
        coordinates[at] += shift;
      }
    }
  }

  /// Draws a part at the pen, and moves the pen.
  void draw(Part& part, bool isRightToLeft) {
    const auto style = text_.styleOfSpan(part.span);
    const double size = numberIn(*style, "fontSize", 16);
    const double scale = size / kLaidOutSize;
    if (!(size > 0) || !std::isfinite(scale)) return;
    const Owned<PangoFontDescription> font = fontOf(pango_, *style);
    pango_.setDirection(context_.get(), isRightToLeft ? PANGO_DIRECTION_RTL : PANGO_DIRECTION_LTR);
    const std::string_view language = textIn(*style, "language");  // never that of the process
    pango_.setLanguage(context_.get(),
                       pango_.language(language.empty() ? "en" : std::string(language).c_str()));
    pango_.setFont(layout_.get(), font.get());
    const Owned<PangoAttrList> attributes = attributesOf(*style, part.text, scale);
    pango_.setAttributes(layout_.get(), attributes.get());
    pango_.setText(layout_.get(), part.text.data(), static_cast<int>(part.text.size()));

    PangoLayoutLine* const line = pango_.firstLine(layout_.get(), 0);
    PangoRectangle logical{};
    pango_.extents(line, nullptr, &logical);
    countMissing(*line);
    const double advance = scale * logical.width / PANGO_SCALE;
    if (isRightToLeft) pen_.x -= advance;
    const double angle = part.rotation * std::numbers::pi / 180;
    const double sine = scale * std::sin(angle), cosine = scale * std::cos(angle);
    const double up = numberIn(*style, "baselineShift", 0);
    addOutline(line, {cosine, sine, -sine, cosine, pen_.x, pen_.y - up}, outlines_[part.span]);
    if (!isRightToLeft) pen_.x += advance;
  }

  [[nodiscard]] Owned<PangoAttrList> attributesOf(const tq::Dictionary& style,
                                                  std::string_view text, double scale) const {
    Owned<PangoAttrList> list(pango_.newAttributes());
    const auto units = [scale](double length) {
      return static_cast<int>(PANGO_SCALE *
                              std::clamp(length / scale, -kWidestSpace, kWidestSpace));
    };
    const double betweenLetters = numberIn(style, "letterSpacing", 0);
    const double betweenWords = numberIn(style, "wordSpacing", 0);
    if (betweenLetters != 0) {
      pango_.insertAttribute(list.get(), pango_.spacing(units(betweenLetters)));
    }
    for (std::size_t i = 0; betweenWords != 0 && i < text.size(); ++i) {
      if (text[i] != ' ') continue;
      PangoAttribute* const wide = pango_.spacing(units(betweenLetters + betweenWords));
      wide->start_index = static_cast<unsigned>(i);
      wide->end_index = static_cast<unsigned>(i + 1);
      pango_.insertAttribute(list.get(), wide);
    }
    const std::string_view decoration = textIn(style, "decoration");
    const auto has = [&](std::string_view word) { return decoration.find(word) != word.npos; };
    if (has("underline")) {
      pango_.insertAttribute(list.get(), pango_.underline(PANGO_UNDERLINE_SINGLE));
    }
    if (has("overline")) {
      pango_.insertAttribute(list.get(), pango_.overline(PANGO_OVERLINE_SINGLE));
    }
    if (has("line-through")) pango_.insertAttribute(list.get(), pango_.strikethrough(TRUE));
    return list;
  }

  void countMissing(const PangoLayoutLine& line) {
    for (const GSList* each = line.runs; each != nullptr; each = each->next) {
      const auto& run = *static_cast<const PangoGlyphItem*>(each->data);
      for (int i = 0; i < run.glyphs->num_glyphs; ++i) {
        if ((run.glyphs->glyphs[i].glyph & PANGO_GLYPH_UNKNOWN_FLAG) != 0) ++result_.withoutGlyph;
      }
      PangoFont* const font = run.item->analysis.font;
      if (font == nullptr || font == plainFont_) continue;
      hb_face_t* const face = pango_.faceOf(pango_.shaper(font));
      if (pango_.hasBitmaps(face) || pango_.hasLayers(face) || pango_.hasDrawings(face)) {
        result_.coloured += static_cast<std::size_t>(run.item->num_chars);
      } else {
        plainFont_ = font;
      }
    }
  }

  void addOutline(PangoLayoutLine* line, const tq::AffineTransform& placed, Outline& outline) {
    cairo_new_path(cr_.get());
    cairo_move_to(cr_.get(), 0, 0);
    pango_.addPath(cr_.get(), line);
    const Owned<cairo_path_t> path(cairo_copy_path(cr_.get()));
    auto& [steps, coordinates] = outline;
    for (int i = 0; i < path->num_data; i += path->data[i].header.length) {
      constexpr char kSteps[] = {'M', 'L', 'C', 'Z'};  // in cairo's order
      const cairo_path_data_t* const data = path->data + i;
      const char step = kSteps[data->header.type];
      if (step == 'M' && steps.ends_with('M')) dropMove(outline);
      steps += step;
      for (int k = 1; k < data->header.length; ++k) {
        const tq::Point point =
            tq::PointApplyAffineTransform({data[k].point.x, data[k].point.y}, placed);
        coordinates.insert(coordinates.end(), {point.x, point.y});
      }
    }
    if (steps.ends_with('M')) dropMove(outline);
  }

  static void dropMove(Outline& outline) {
    outline.steps.pop_back();
    outline.coordinates.resize(outline.coordinates.size() - 2);
  }

  const Pango& pango_ = Pango::instance();
  const Text& text_;
  Owned<cairo_t> cr_;
  Owned<PangoContext> context_;
  Owned<PangoLayout> layout_;
  std::vector<Part> parts_;
  std::vector<Outline> outlines_;         // of each span
  const PangoFont* plainFont_ = nullptr;  // the last font without colours
  TextOutlines result_;
  tq::Point pen_;
};

}  // namespace

TextOutlines layOut(const Text& text) { return Layout(text).outlines(); }

}  // namespace tqdoc
