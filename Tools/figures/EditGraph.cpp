#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <TQFoundation/comparison/EditSequence.h>
#include <TQFoundation/geometry/values/VectorAlgebra.h>
#include <TQFoundation/objects/String.h>

#include "Drawing.h"
#include "Figures.h"

namespace figures {
namespace {

using namespace tq;

constexpr std::string_view kOld = "ABCABBA";
constexpr std::string_view kNew = "CBABAC";
constexpr double kStep = 48;
constexpr Point kOrigin{90, 90};

Ref<Array> arrayOfLetters(std::string_view letters) {
  std::vector<Ref<Object>> objects;
  for (const char letter : letters) objects.push_back(String::of({&letter, 1}));
  return Array::arrayWithObjects(std::move(objects));
}

Point at(std::size_t x, std::size_t y) {
  return {kOrigin.x + kStep * static_cast<double>(x), kOrigin.y + kStep * static_cast<double>(y)};
}

void drawGrid(Drawing& drawing) {
  for (std::size_t x = 0; x <= kOld.size(); ++x) {
    drawing.line(at(x, 0), at(x, kNew.size()), {.stroke = ink::faint, .width = 1});
  }
  for (std::size_t y = 0; y <= kNew.size(); ++y) {
    drawing.line(at(0, y), at(kOld.size(), y), {.stroke = ink::faint, .width = 1});
  }
  for (std::size_t x = 0; x < kOld.size(); ++x) {
    drawing.text(kOld.substr(x, 1), at(x, 0) + Vector{kStep / 2, -18},
                 {.size = 15, .isBold = true});
    for (std::size_t y = 0; y < kNew.size(); ++y) {
      if (kOld[x] != kNew[y]) continue;
      drawing.line(at(x, y), at(x + 1, y + 1), {.stroke = ink::quiet, .width = 1, .dash = "3 4"});
    }
  }
  for (std::size_t y = 0; y < kNew.size(); ++y) {
    drawing.text(kNew.substr(y, 1), at(0, y) + Vector{-18, kStep / 2},
                 {.size = 15, .isBold = true});
  }
  drawing.text("old array", at(0, 0) + Vector{kStep * 3.5, -48}, {.fill = ink::quiet});
  drawing.text("new array", at(0, 0) + Vector{-48, kStep * 3},
               {.fill = ink::quiet, .turnDegrees = -90});
}

/// The path from the top left corner to the bottom right: a step right for a removal, down for an
/// insertion, diagonal for a common element.
void drawWay(Drawing& drawing, const TQArrayChanges& changes) {
  std::set<std::uint64_t> removed;
  std::set<std::uint64_t> inserted;
  for (const Ref<TQComparisonArrayChange>& change : changes) {
    (change->isRemoval() ? removed : inserted).insert(change->index());
  }
  std::size_t x = 0;
  std::size_t y = 0;
  while (x < kOld.size() || y < kNew.size()) {
    const Point from = at(x, y);
    const bool isRemoval = removed.contains(x);
    const bool isInsertion = !isRemoval && inserted.contains(y);
    if (!isInsertion) ++x;
    if (!isRemoval) ++y;
    const std::string_view colour = isRemoval ? ink::red : isInsertion ? ink::green : ink::blue;
    drawing.arrow(from, at(x, y), {.stroke = colour, .width = 3.5});
  }
  drawing.circle(at(0, 0), 5, {.stroke = ink::paper, .width = 2, .fill = ink::text});
  drawing.circle(at(x, y), 5, {.stroke = ink::paper, .width = 2, .fill = ink::text});
}

void drawScript(Drawing& drawing, const TQArrayChanges& changes) {
  Point place{500, 96};
  drawing.text(std::to_string(changes.size()) + " changes, in order", place,
               {.anchor = "start", .isBold = true});
  place.y += 30;
  for (const Ref<TQComparisonArrayChange>& change : changes) {
    const std::string what = change->isRemoval() ? "remove " : "insert ";
    const std::string words =
        what + change->object()->description() + " at " + std::to_string(change->index());
    drawing.text(words, place,
                 {.fill = change->isRemoval() ? ink::red : ink::green, .anchor = "start"});
    place.y += 24;
  }
  place.y += 20;
  drawing.line(place, place + Vector{24, 16}, {.stroke = ink::blue, .width = 3.5});
  drawing.text("in both, kept", place + Vector{38, 8}, {.anchor = "start"});
  place.y += 34;
  drawing.line(place, place + Vector{24, 16}, {.stroke = ink::quiet, .width = 1, .dash = "3 4"});
  drawing.text("equal, not on the path", place + Vector{38, 8}, {.anchor = "start"});
}

}  // namespace

std::string editGraph() {
  const auto changes = editSequenceTo(*arrayOfLetters(kOld), *arrayOfLetters(kNew), false);
  Drawing drawing({720, 420}, "The edit graph of two arrays and the shortest path through it");
  drawGrid(drawing);
  drawWay(drawing, *changes);
  drawScript(drawing, *changes);
  return drawing.svg();
}

}  // namespace figures
