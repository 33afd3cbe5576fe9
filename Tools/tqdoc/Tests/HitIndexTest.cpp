#include "Model/HitIndex.h"

#include "Model/Crossings.h"
#include "Render/Canvas.h"
#include "Support.h"

namespace tqdoc {
namespace {

using testing::IsEmpty;

constexpr int kSide = 120;

[[nodiscard]] std::vector<std::string> places(const Document& document, const tq::Rect& area) {
  std::vector<std::string> all;
  const HitIndex index(document);
  for (const PlacedNode* placed : index.hits(area)) all.push_back(placed->place);
  return all;
}

// Compares hits with rendered pixels. Pixels with a neighbour of another alpha are skipped.
TEST(HitIndex, FindsWhatThePainterDraws) {
  const char* const insides[] = {
      "<path d='M10 10L110 20L60 110Z'/>",
      "<path d='M10 60C40 -60 80 180 110 60L90 110L10 110'/>",
      "<path d='M20 20h80v80h-80zM40 40h40v40h-40z'/>",
      "<path fill-rule='evenodd' d='M20 20h80v80h-80zM40 40h40v40h-40z'/>",
      "<path d='M60 5L95 110L5 42L115 42L25 110Z' fill-rule='evenodd'/>",
      "<path d='M60 5L95 110L5 42L115 42L25 110Z'/>",
      "<path d='M15 100C15 20 105 20 105 100' fill='none' stroke='red' stroke-width='16'"
      " stroke-linecap='round'/>",
      "<g transform='rotate(30 60 60) scale(2)'><circle cx='30' cy='30' r='20' fill='none'"
      " stroke='blue' stroke-width='5'/></g>",
      "<clipPath id='c'><circle cx='60' cy='60' r='40'/></clipPath>"
      "<g clip-path='url(#c)'><rect x='0' y='50' width='120' height='30'/></g>",
      "<mask id='m'><circle cx='60' cy='60' r='40' fill='white'/></mask>"
      "<g mask='url(#m)'><rect x='0' y='50' width='120' height='30'/></g>",
      "<marker id='m' orient='auto' overflow='visible'><path d='M0-1l4 1-4 1z'/></marker>"
      "<path d='M10 10h60v60' fill='none' stroke='red' stroke-width='9' stroke-linecap='round'"
      " stroke-linejoin='round' marker-end='url(#m)'/>",
      "<text x='10' y='100' font-size='100'>Hl</text>",
      "<clipPath id='c'><text x='10' y='100' font-size='100'>H.</text></clipPath>"
      "<rect width='120' height='120' clip-path='url(#c)'/>",
  };
  for (const char* inside : insides) {
    SCOPED_TRACE(inside);
    const auto document = drawingOf(inside);
    ASSERT_TRUE(document);
    Canvas canvas(kSide, kSide);
    canvas.draw(*document, {0, 0, kSide, kSide});
    const auto pixels = canvas.pixels();
    const HitIndex index(*document);
    int inked = 0;
    for (int y = 1; y < kSide - 1; ++y) {
      for (int x = 1; x < kSide - 1; ++x) {
        const auto alpha = [&](int step) {
          return pixels[static_cast<std::size_t>(y * kSide + x + step)] >> 24;
        };
        const auto here = alpha(0);
        const auto differs = [&](int step) { return alpha(step) != here; };
        if (std::ranges::any_of(std::array{-1, 1, -kSide, kSide}, differs)) continue;
        ASSERT_EQ(!index.hits({x + 0.5, y + 0.5, 0, 0}).empty(), here != 0) << x << ' ' << y;
        inked += here != 0 ? 1 : 0;
      }
    }
    EXPECT_GT(inked, 100);
  }
}

TEST(HitIndex, ListsTheTopmostFirstAndAssignsBordersToOneShape) {
  const auto document = drawingOf(
      "<rect id='a' width='60' height='60'/>"
      "<g><rect id='b' x='60' width='60' height='60'/>"
      "<rect id='c' x='10' y='10' width='20' height='20' fill='none' stroke='red'/>"
      "<rect id='hidden' width='120' height='120' visibility='hidden'/></g>"
      "<image id='d' x='5' y='5' width='10' height='10' "
      "href='data:image/png;base64,iVBORw0KGgo='/>");
  ASSERT_TRUE(document);
  EXPECT_THAT(places(*document, {60, 30, 0, 0}), testing::SizeIs(1));
  EXPECT_THAT(places(*document, {20, 20, 0, 0}), ElementsAre("root/0 (a)"));
  EXPECT_THAT(places(*document, {10, 12, 0, 0}),
              ElementsAre("root/2 (d)", "root/1/1 (c)", "root/0 (a)"));
  // A rect inside a shape, one around all shapes, one across a border, and one outside.
  EXPECT_THAT(places(*document, {15, 15, 1, 1}), ElementsAre("root/2 (d)", "root/0 (a)"));
  EXPECT_THAT(places(*document, {-9, -9, 200, 200}), testing::SizeIs(4));
  EXPECT_THAT(places(*document, {50, 58, 20, 20}), ElementsAre("root/1/0 (b)", "root/0 (a)"));
  EXPECT_THAT(places(*document, {50, 61, 20, 20}), IsEmpty());
  EXPECT_THAT(places(*document, {std::nan(""), 0, 1, 1}), IsEmpty());
}

TEST(Crossings, AreFoundForAllOutlines) {
  const auto document = drawingOf(
      "<circle cx='60' cy='60' r='40'/><path d='M0 60H120'/>"
      "<path d='M5 5h20v20h-20z'/>"
      "<path d='M80 100L110 118L80 118L110 100'/>");
  ASSERT_TRUE(document);
  const Crossings crossings = findCrossings(placedNodes(document->root()));
  EXPECT_TRUE(crossings.complete);
  // The line meets the circle at joints of its curves, which are found twice.
  std::vector<tq::Point> apart;
  for (const tq::Point p : crossings.points) {
    const auto isNear = [p](tq::Point q) { return std::hypot(p.x - q.x, p.y - q.y) < 0.1; };
    if (std::ranges::none_of(apart, isNear)) apart.push_back(p);
  }
  const auto near = [](double x, double y) {
    return testing::Truly([x, y](tq::Point p) { return std::hypot(p.x - x, p.y - y) < 0.05; });
  };
  EXPECT_THAT(apart, testing::UnorderedElementsAre(near(20, 60), near(100, 60), near(95, 109)));
}

TEST(Crossings, StopAtTheirLimit) {
  std::string lines;
  for (int i = 0; i < 700; ++i) {
    lines += "M0 " + std::to_string(i) + "L120 " + std::to_string(700 - i);
  }
  const auto document = drawingOf("<path d='" + lines + "'/>");
  ASSERT_TRUE(document);
  const Crossings crossings = findCrossings(placedNodes(document->root()));
  EXPECT_FALSE(crossings.complete);
  EXPECT_LE(crossings.points.size(), Crossings::kPairLimit);
}

}  // namespace
}  // namespace tqdoc
