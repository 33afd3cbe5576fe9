#include "Edits.h"

#include <functional>
#include <random>
#include <vector>

#include "History.h"
#include "Model/Compare.h"
#include "Snapping.h"
#include "Support.h"

namespace sketch {
namespace {

using tqdoc::drawingOf;
using tqdoc::firstDifference;

TEST(Edits, ChangeTheSelectedNodesOnly) {
  const auto recolour = [](const Drawing& drawing) { return recoloured(drawing, "#00ff00"); };
  const auto shift = [](const Drawing& drawing) { return moved(drawing, {4, 6}); };
  const auto copy = [](const Drawing& drawing) { return duplicated(drawing, {4, 6}); };
  const tq::test::Rows<const char*, Selection, std::function<Drawing(const Drawing&)>, const char*,
                       Selection>
      cases{
          {"<g transform='scale(2)'><path id='a' d='M0 0h9'/></g><path d='M0 0h9'/>",
           {{0, 0}},
           shift,
           "<g transform='scale(2)'><path id='a' d='M0 0h9' transform='translate(2 3)'/></g>"
           "<path d='M0 0h9'/>",
           {{0, 0}}},
          {"<path id='a' d='M0 0h9'/><g><path d='M0 0h8'/><path d='M0 0h7'/></g>",
           {{0}, {1, 0}},
           removed,
           "<g><path d='M0 0h7'/></g>",
           {}},
          {"<path id='a' d='M0 0h9'/><path id='b' d='M0 0h8'/>",
           {{0}},
           copy,
           "<path id='a' d='M0 0h9'/><path id='b' d='M0 0h8'/>"
           "<path inkscape:label='a copy' d='M0 0h9' transform='translate(4 6)'/>",
           {{2}}},
          {"<path d='M0 0h9'/><path d='M0 0h8' fill='none' stroke='red'/>",
           {{0}, {1}},
           recolour,
           "<path d='M0 0h9' fill='#00ff00'/><path d='M0 0h8' fill='none' stroke='#00ff00'/>",
           {{0}, {1}}},
      };
  for (const auto& [before, selection, edit, after, selectedAfter] : cases) {
    const Drawing result = edit({drawingOf(before), selection});
    EXPECT_EQ(firstDifference(*result.document, *drawingOf(after)), std::nullopt) << before;
    EXPECT_EQ(result.selection, selectedAfter) << before;
  }
}

TEST(History, LeadsBackAndForthThroughRandomEdits) {
  std::mt19937 random(7);
  Drawing drawing{
      drawingOf("<path d='M0 0h9'/><g><path d='M0 0h8'/><g transform='scale(3)'>"
                "<path d='M0 0h7'/><path d='M0 0h6'/></g></g><g><path d='M0 0h5'/></g>"),
      {}};
  History history;
  std::vector<Drawing> befores, afters;
  while (befores.size() < 200) {
    const auto nodes = tqdoc::placedNodes(drawing.document->root());
    drawing.selection.clear();
    for (int i = 0; i < 3; ++i) {
      drawing.selection.insert(nodes[random() % nodes.size()].path);
    }
    befores.push_back(drawing);
    const auto kind = nodes.size() < 5 ? 3 : nodes.size() > 40 ? 2 : random() % 4;
    drawing = kind == 0   ? moved(drawing, {1, 2})
              : kind == 1 ? recoloured(drawing, std::string("#00000") + "0123456789"[random() % 10])
              : kind == 2 ? removed(drawing)
                          : duplicated(drawing, {3, 4});
    history.add("Edit", befores.back(), drawing);
    afters.push_back(drawing);
  }
  const auto expectSame = [](const Drawing& a, const Drawing& b) {
    EXPECT_EQ(firstDifference(*a.document, *b.document), std::nullopt);
    EXPECT_EQ(a.selection, b.selection);
  };
  for (int round = 0; round < 2; ++round) {
    for (std::size_t i = befores.size(); i-- > 0;) {
      drawing = history.undo(drawing).value();
      expectSame(drawing, befores[i]);
    }
    EXPECT_FALSE(history.undo(drawing));
    for (const Drawing& after : afters) {
      drawing = history.redo(drawing).value();
      expectSame(drawing, after);
    }
    EXPECT_FALSE(history.redo(drawing));
  }
}

TEST(Snapping, PrefersTheNearestCrossingToTheGrid) {
  const tq::Rect bounds(0, 0, 4, 4);
  const SnapTargets both{10, {{21, 21}, {23.5, 24}}, 2};
  const tq::test::Rows<tq::Vector, SnapTargets, tq::Vector> cases{
      {{19, 20}, both, {19.5, 20}},  // the right bottom corner onto the second crossing
      {{14, 26}, both, {10, 30}},
      {{14, 26}, {0, {}, 0}, {14, 26}},
  };
  for (const auto& [offset, targets, expected] : cases) {
    EXPECT_EQ(snapped(offset, bounds, targets), expected);
  }
}

}  // namespace
}  // namespace sketch
