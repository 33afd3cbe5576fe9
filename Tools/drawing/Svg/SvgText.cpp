#include "Svg/SvgText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

#include "Svg/SvgConditions.h"
#include "Svg/SvgShapes.h"

namespace tqdoc {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

struct Axis {
  const char* attribute;
  std::vector<double> GlyphPositions::*list;
  Extent extent;
};
constexpr Axis kAxes[] = {{"x", &GlyphPositions::x, Extent::horizontal},
                          {"y", &GlyphPositions::y, Extent::vertical},
                          {"dx", &GlyphPositions::dx, Extent::horizontal},
                          {"dy", &GlyphPositions::dy, Extent::vertical},
                          {"rotate", &GlyphPositions::rotate, Extent::diagonal}};
constexpr std::size_t kRotate = 4;

/// The numbers for a character, NaN for none.
using Place = std::array<double, std::size(kAxes)>;
constexpr Place kNoPlace{kNone, kNone, kNone, kNone, kNone};

/// Returns whether the elements around this one keep white space.
[[nodiscard]] bool keepsSpaceAround(pugi::xml_node element) {
  for (auto each = element.parent(); each.type() == pugi::node_element; each = each.parent()) {
    const std::string_view space = attributeOf(each, "xml:space");
    if (!space.empty()) return space == "preserve";
  }
  return false;
}

class TextReader {
 public:
  TextReader(SvgContext& context, SvgStyleSheet& sheet) : context_(context), sheet_(sheet) {}

  void readElement(pugi::xml_node element, const Style& style, Viewport viewport, bool keepsSpace,
                   int depth) {
    if (depth > SvgContext::kDepthLimit) {
      throw SvgFault("text is nested too deeply", element.offset_debug());
    }
    const std::string_view space = attributeOf(element, "xml:space");
    if (!space.empty()) keepsSpace = space == "preserve";
    viewport.fontSize = style.fontSize;
    const std::size_t first = places_.size();
    if (!element.attribute("textLength").empty()) context_.leaveOut("textLength");
    // The element's own numbers come before those of the elements in it, which replace them.
    const auto numbers = numbersOf(element, viewport);
    for (const pugi::xml_node child : element.children()) {
      if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) {
        addCharacters(element, style, child.value(), keepsSpace);
        continue;
      }
      const std::string_view name = context_.nameOf(child);
      if (name == "tspan" || name == "a") {
        const Style inner = sheet_.styleOf(child, style, viewport);
        const bool isMeant = meetsConditions(child);
        if (inner.displayed && isMeant) {
          readElement(child, inner, viewport, keepsSpace, depth + 1);
        } else if (!isMeant && isForOtherLanguages(child)) {
          context_.leaveOut("content in other languages");
        } else {
          context_.leaveOut("text that is not displayed");  // the model has no hidden spans
        }
      } else if (!name.empty() && !isDefinition(name)) {
        context_.leaveOut("<" + std::string(name) + ">");
      }
    }
    for (std::size_t axis = 0; axis < std::size(kAxes); ++axis) {
      const std::vector<double>& list = numbers[axis];
      // The last rotation holds for all further characters of the element.
      const std::size_t count =
          axis == kRotate && !list.empty() ? places_.size() - first : list.size();
      for (std::size_t i = 0; i < count && first + i < places_.size(); ++i) {
        double& number = places_[first + i][axis];
        if (std::isnan(number)) number = list[std::min(i, list.size() - 1)];
      }
    }
  }

  [[nodiscard]] std::vector<TextRun> take() {
    dropFinalSpace();
    std::vector<TextRun> runs;
    std::size_t at = 0;
    for (TextRun& run : runs_) {
      addSpans(runs, run, at);
      at += run.length;
    }
    return runs;
  }

 private:
  using Numbers = std::array<std::vector<double>, std::size(kAxes)>;

  [[nodiscard]] Numbers numbersOf(pugi::xml_node element, Viewport viewport) {
    Numbers numbers;
    for (std::size_t axis = 0; axis < std::size(kAxes); ++axis) {
      const auto& [attribute, member, extent] = kAxes[axis];
      for (Scanner list(attributeOf(element, attribute)); list.skipSeparator(), !list.atEnd();) {
        const std::string_view before = list.rest();
        while (!list.atEnd() && !isSpace(list.peek()) && list.peek() != ',') list.next();
        const auto number =
            parseLength(before.substr(0, before.size() - list.rest().size()), viewport, extent);
        if (!number) {
          context_.leaveOut(std::string(attribute) + " of " +
                            std::string(context_.nameOf(element)));
          break;
        }
        numbers[axis].push_back(*number);
      }
      context_.charge(numbers[axis].size(), element);
    }
    return numbers;
  }

  /// Adds text. Newlines are removed, other white space becomes spaces, and of several spaces,
  /// also across elements, the first is kept; or, if it keeps space, all of them are.
  void addCharacters(pugi::xml_node element, const Style& style, std::string_view value,
                     bool keepsSpace) {
    const auto repaired = tq::String::stringWithUTF8Repaired(value);
    std::string text;
    for (const char c : repaired->view()) {
      if (!keepsSpace && (c == '\n' || c == '\r')) continue;
      const bool blank = isSpace(c);
      if (blank && !keepsSpace && afterSpace_) continue;
      text += blank ? ' ' : c;
      afterSpace_ = blank && !keepsSpace;
      endsWithFinalSpace_ = afterSpace_;
    }
    const std::size_t length = charactersIn(text);
    if (length == 0) return;
    context_.charge(kCharacterWork * length, element);
    places_.resize(places_.size() + length, kNoPlace);
    if (runs_.empty() || runs_.back().element != element)
      runs_.push_back({element, style, {}, 0, {}});
    runs_.back().string += text;
    runs_.back().length += length;
  }

  void dropFinalSpace() {
    if (!endsWithFinalSpace_ || runs_.empty()) return;
    runs_.back().string.pop_back();
    places_.pop_back();
    if (--runs_.back().length == 0) runs_.pop_back();
  }

  /// Splits a run so that in each part, those characters that have a number of one kind come first.
  void addSpans(std::vector<TextRun>& to, const TextRun& run, std::size_t at) const {
    std::string_view rest = run.string;
    for (std::size_t i = 0; i < run.length; ++i) {
      const Place& place = places_[at + i];
      bool begins = i == 0;
      for (std::size_t axis = 0; axis < std::size(kAxes) && !begins; ++axis) {
        begins = !std::isnan(place[axis]) && std::isnan(places_[at + i - 1][axis]);
      }
      if (begins) to.push_back({run.element, run.style, {}, 0, {}});
      TextRun& part = to.back();
      for (std::size_t axis = 0; axis < std::size(kAxes); ++axis) {
        if (!std::isnan(place[axis])) (part.positions.*kAxes[axis].list).push_back(place[axis]);
      }
      const std::string_view character = firstCharacters(rest, 1);
      part.string += character;
      ++part.length;
      rest.remove_prefix(character.size());
    }
  }

  static constexpr std::size_t kCharacterWork = 20;

  SvgContext& context_;
  SvgStyleSheet& sheet_;
  std::vector<TextRun> runs_;
  std::vector<Place> places_;  // of each character
  bool afterSpace_ = true;     // spaces at the start are dropped
  bool endsWithFinalSpace_ = false;
};

}  // namespace

std::vector<TextRun> readTextRuns(SvgContext& context, SvgStyleSheet& sheet, pugi::xml_node text,
                                  const Style& style, Viewport viewport) {
  TextReader reader(context, sheet);
  reader.readElement(text, style, viewport, keepsSpaceAround(text), 0);
  return reader.take();
}

tq::Ref<Text> textOf(const std::vector<TextRun>& runs,
                     const std::vector<tq::Ref<tq::Dictionary>>& styles, Node::Traits traits) {
  struct Span {
    std::size_t length;
    tq::Ref<tq::Dictionary> changes;
    GlyphPositions positions;
  };
  std::string string;
  std::vector<Span> spans;
  tq::Point position;
  for (std::size_t i = 0; i < runs.size(); ++i) {
    string += runs[i].string;
    GlyphPositions positions = runs[i].positions;
    if (i == 0) {
      // The position of the text is that of its first character.
      if (!positions.x.empty()) position.x = positions.x.front();
      if (!positions.y.empty()) position.y = positions.y.front();
      if (positions.x.size() == 1) positions.x.clear();
      if (positions.y.size() == 1) positions.y.clear();
    }
    // The last rotation of a span holds for the rest of it.
    auto& turns = positions.rotate;
    while (turns.size() > 1 && turns.back() == turns[turns.size() - 2]) turns.pop_back();
    auto changes = styleChanges(*styles.front(), *styles[i]);
    if (positions == GlyphPositions() && !spans.empty() && spans.back().positions.rotate.empty() &&
        spans.back().changes->isEqual(*changes)) {
      spans.back().length += runs[i].length;
    } else {
      spans.push_back({runs[i].length, std::move(changes), std::move(positions)});
    }
  }
  const Span& last = spans.back();
  if (last.changes->count() == 0 && last.positions == GlyphPositions()) spans.pop_back();
  std::vector<tq::Ref<tq::Object>> objects;
  for (Span& span : spans) {
    objects.push_back(
        tq::makeRef<TextSpan>(span.length, std::move(span.changes), std::move(span.positions)));
  }
  return tq::makeRef<Text>(std::move(traits), tq::String::of(string), position, styles.front(),
                           tq::Array::arrayWithObjects(std::move(objects)));
}

}  // namespace tqdoc
