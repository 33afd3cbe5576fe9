#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include "Render/Canvas.h"
#include "Report/Markup.h"
#include "Report/Outlines.h"
#include "Report/Report.h"

namespace tqdoc {
namespace {

/// What a pair of nodes has in the pictures. Several changes may have the same one.
struct Mark {
  Difference::Kind kind;
  std::optional<Outline> outlines[2];  // in the old and in the new picture
};

/// The marks of a pair, and the number of the mark of each change.
struct Marks {
  std::vector<Mark> all;
  std::vector<std::size_t> ofChange;
};

/// The size of both pictures in pixels, and of a pixel of the drawings in it.
struct Frame {
  double width, height, scale;
};

[[nodiscard]] Frame frameFor(const tq::Size& a, const tq::Size& b, int side) {
  const double width = std::max({a.width, b.width, 1.0});
  const double height = std::max({a.height, b.height, 1.0});
  const double scale = side / std::max(width, height);
  const auto rounded = [](double pixels) { return std::max(1.0, std::ceil(pixels - 1e-6)); };
  return {rounded(width * scale), rounded(height * scale), scale};
}

[[nodiscard]] Marks marksOf(const ReportedPair& pair, double scale) {
  const auto outlinesOf = [scale](const Document& document) {
    const Document::Page& page = document.page();
    return Outlines(document, tq::AffineTransformConcat(
                                  viewTransform(page.viewBox, page.size, page.fit->view()),
                                  {scale, 0, 0, scale, 0, 0}));
  };
  const Outlines olds = outlinesOf(pair.oldDocument);
  const Outlines news = outlinesOf(pair.newDocument);
  Marks marks;
  std::map<std::pair<const Node*, const Node*>, std::size_t> known;
  for (std::size_t i = 0; i < std::min(pair.differences.size(), Report::kMostChanges); ++i) {
    const Difference& difference = pair.differences[i];
    const auto [found, isNew] =
        known.try_emplace({difference.oldNode, difference.newNode}, marks.all.size());
    marks.ofChange.push_back(found->second);
    if (!isNew) {
      Difference::Kind& kind = marks.all[found->second].kind;
      if (kind == Difference::Kind::changed) kind = difference.kind;
      continue;
    }
    Mark mark{difference.kind, {}};
    if (difference.oldNode != nullptr) mark.outlines[0] = olds.of(*difference.oldNode);
    if (difference.newNode != nullptr) mark.outlines[1] = news.of(*difference.newNode);
    marks.all.push_back(std::move(mark));
  }
  return marks;
}

[[nodiscard]] std::string attribute(std::string_view name, std::string_view value) {
  return ' ' + std::string(name) + "=\"" + escaped(value) + '"';
}

[[nodiscard]] std::string badgeOf(Difference::Kind kind) {
  const auto [word, sign] = reportedKind(kind);
  return "<span" + attribute("class", std::string("badge ") + word) + " aria-hidden=\"true\">" +
         sign + "</span>";
}

/// Returns the outlines and the tags over one of the pictures. Small outlines are above large ones,
/// so that the pointer reaches them.
[[nodiscard]] std::string overlayOf(const Marks& marks, int which, const Frame& frame) {
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < marks.all.size(); ++i) {
    if (marks.all[i].outlines[which]) order.push_back(i);
  }
  const auto area = [&](std::size_t i) {
    const tq::Size size = marks.all[i].outlines[which]->bounds.size;
    return size.width * size.height;
  };
  std::ranges::stable_sort(order, std::greater(), area);
  std::string shapes, tags;
  std::map<std::pair<int, int>, int> tagsAt;
  for (const std::size_t i : order) {
    const Mark& mark = marks.all[i];
    const auto& [path, bounds] = *mark.outlines[which];
    const std::string word = reportedKind(mark.kind).word;
    const std::string number = attribute("data-mark", std::to_string(i));
    const bool isLarge = area(i) > frame.width * frame.height / 2;
    shapes += "<path" + attribute("class", "mark " + word + (isLarge ? " large" : "")) + number +
              attribute("d", path) + " />\n";
    const auto percent = [](double part, double whole) {
      return static_cast<int>(std::clamp(100 * part / whole, 0.0, 100.0));
    };
    const int x = percent(bounds.origin.x, frame.width);
    const int y = percent(bounds.origin.y, frame.height);
    const bool isAtEnd = x > 60;
    tags += "<span" + attribute("class", isAtEnd ? "tag end" : "tag") + number +
            attribute("style", "--x:" + std::to_string(x) + "%;--y:" + std::to_string(y) +
                                   "%;--n:" + std::to_string(tagsAt[{x, y}]++)) +
            ">" + badgeOf(mark.kind) + "<span class=\"word\">" + word + "</span></span>\n";
  }
  return "<svg aria-hidden=\"true\" preserveAspectRatio=\"none\"" +
         attribute("viewBox", "0 0 " + std::to_string(static_cast<int>(frame.width)) + ' ' +
                                  std::to_string(static_cast<int>(frame.height))) +
         ">\n" + shapes + "</svg>\n<div aria-hidden=\"true\">\n" + tags + "</div>\n";
}

/// Returns one of the pictures, or an empty text with an error.
[[nodiscard]] std::string figureOf(const Document& document, const std::string& name, bool isNew,
                                   const Frame& frame, const Marks& marks, Features& leftOut,
                                   tq::Ref<tq::Error>* error) {
  Canvas canvas(static_cast<int>(frame.width), static_cast<int>(frame.height));
  const tq::Size page = document.page().size;
  canvas.draw(document, {{0, 0}, {page.width * frame.scale, page.height * frame.scale}});
  addTo(leftOut, canvas.leftOut());
  const auto png = canvas.png(error);
  if (!png) return "";
  const char* const word = isNew ? "new" : "old";
  std::string figure =
      "<figure" + attribute("class", word) + "><figcaption>" + (isNew ? "New" : "Old") +
      "</figcaption><div class=\"frame\"><div class=\"picture\">\n<img" +
      attribute("width", std::to_string(canvas.width())) +
      attribute("height", std::to_string(canvas.height())) +
      attribute("alt", std::string(word) + " version of " + name) + " src=\"data:image/png;base64,";
  tq::appendBase64(figure, *png);
  return figure + "\" />\n" + overlayOf(marks, isNew ? 1 : 0, frame) + "</div></div></figure>\n";
}

/// Returns a value of a change, with a sample if it is a colour.
[[nodiscard]] std::string valueOf(const std::string& value) {
  constexpr std::size_t kMostText = 300;
  constexpr std::size_t kColour = 9;  // "#rrggbb" in quotation marks
  const bool isColour = value.size() == kColour && value.starts_with("\"#") &&
                        value.find_first_not_of("0123456789abcdef", 2) == kColour - 1;
  const std::string sample =
      isColour ? "<span class=\"swatch\"" +
                     attribute("style", "background:" + value.substr(1, kColour - 2)) + "></span>"
               : "";
  const bool isLong = value.size() > kMostText;
  return "<span>" + sample + isolated(isLong ? value.substr(0, kMostText) : value) +
         (isLong ? "\u2026" : "") + "</span>";
}

[[nodiscard]] std::string entryOf(const Difference& difference, const Mark& mark,
                                  std::size_t number) {
  const char* const word = reportedKind(difference.kind).word;
  std::string entry =
      "<li><button type=\"button\"" + attribute("class", std::string("change ") + word) +
      attribute("data-mark", std::to_string(number)) + '>' + badgeOf(difference.kind) +
      "<span class=\"word\">" + word + "</span> <code>" + isolated(difference.path) +
      "</code> <span class=\"what\">" + isolated(difference.what) + "</span>";
  if (difference.kind == Difference::Kind::changed) {
    entry += " <span class=\"values\">from " + valueOf(difference.oldValue) + " to " +
             valueOf(difference.newValue) + "</span>";
  }
  if (difference.kind == Difference::Kind::moved) {
    entry +=
        " <span class=\"values\">from <code>" + isolated(difference.oldPath) + "</code></span>";
  }
  if (!mark.outlines[0] && !mark.outlines[1]) {
    entry += " <span class=\"note\">without an outline in the pictures</span>";
  }
  return entry + "</button></li>\n";
}

[[nodiscard]] std::string controlsOf(const std::string& number) {
  constexpr std::pair<const char*, const char*> kViews[] = {
      {"side", "side by side"}, {"slide", "slider"}, {"blink", "blinking"}};
  std::string controls =
      "<div class=\"controls\" hidden=\"hidden\">\n<fieldset "
      "class=\"views\"><legend>View</legend>\n";
  for (const auto& [value, label] : kViews) {
    controls += "<label><input type=\"radio\"" + attribute("name", "view-" + number) +
                attribute("value", value) +
                (std::string_view(value) == "side" ? " checked=\"checked\"" : "") + " /> " + label +
                "</label>\n";
  }
  return controls +
         "</fieldset>\n<label class=\"sliding\">old <input type=\"range\" class=\"split\" "
         "min=\"0\" "
         "max=\"100\" value=\"50\" aria-label=\"Place of the divider between old and new\" /> "
         "new</label>\n<button type=\"button\" class=\"flip blinking\">Show new</button>\n<label "
         "class=\"blinking\"><input type=\"checkbox\" class=\"auto\" checked=\"checked\" /> by "
         "itself</label>\n<label><input type=\"checkbox\" class=\"marks\" checked=\"checked\" /> "
         "marks</label>\n</div>\n";
}

[[nodiscard]] std::string sizeOf(const Document& document) {
  const tq::Size size = document.page().size;
  const auto text = [](double number) { return tq::Number::numberWith(number)->description(); };
  return text(size.width) + " \u00d7 " + text(size.height);
}

[[nodiscard]] std::string noteOf(const Features& leftOut) {
  if (leftOut.empty()) return "";
  return "<p class=\"note\">Not drawn: " + escaped(summary(leftOut)) + "</p>\n";
}

}  // namespace

ReportedKind reportedKind(Difference::Kind kind) noexcept {
  constexpr ReportedKind kKinds[] = {
      {"changed", "~"}, {"removed", "\u2212"}, {"added", "+"}, {"moved", "\u2192"}};
  return kKinds[static_cast<std::size_t>(kind)];
}

std::string sectionOf(const ReportedPair& pair, std::size_t number, int side,
                      tq::Ref<tq::Error>* error) {
  const Frame frame = frameFor(pair.oldDocument.page().size, pair.newDocument.page().size, side);
  const Marks marks = marksOf(pair, frame.scale);
  Features leftOut;
  const std::string oldFigure =
      figureOf(pair.oldDocument, pair.name, false, frame, marks, leftOut, error);
  if (oldFigure.empty()) return "";
  const std::string newFigure =
      figureOf(pair.newDocument, pair.name, true, frame, marks, leftOut, error);
  if (newFigure.empty()) return "";
  const std::string id = std::to_string(number);
  const auto pixels = [](double length) { return std::to_string(static_cast<int>(length)); };
  std::string section =
      "<section" + attribute("id", "pair-" + id) + attribute("aria-labelledby", "name-" + id) +
      " data-view=\"side\"" +
      attribute("style", "--width:" + pixels(frame.width) + ";--height:" + pixels(frame.height)) +
      ">\n<h2" + attribute("id", "name-" + id) + ">" + isolated(pair.name) +
      "</h2>\n<p class=\"versions\">old: " + isolated(pair.oldName) + ", " +
      sizeOf(pair.oldDocument) + "<br />new: " + isolated(pair.newName) + ", " +
      sizeOf(pair.newDocument) + "</p>\n" + controlsOf(id) +
      "<div class=\"body\">\n<div class=\"stage\">\n" + oldFigure + newFigure + "</div>\n<div>\n" +
      noteOf(leftOut) + "<h3" + attribute("id", "changes-" + id) + ">" +
      std::to_string(pair.differences.size()) +
      (pair.differences.size() == 1 ? " change" : " changes") + "</h3>\n<ol class=\"changes\"" +
      attribute("aria-labelledby", "changes-" + id) + ">\n";
  for (std::size_t i = 0; i < marks.ofChange.size(); ++i) {
    const std::size_t mark = marks.ofChange[i];
    section += entryOf(pair.differences[i], marks.all[mark], mark);
  }
  section += "</ol>\n";
  if (const std::size_t rest = pair.differences.size() - marks.ofChange.size(); rest > 0) {
    section += "<p class=\"note\">" + std::to_string(rest) +
               " more are neither listed nor marked here; tqdoc diff prints them.</p>\n";
  }
  return section + "</div>\n</div>\n</section>\n";
}

}  // namespace tqdoc
