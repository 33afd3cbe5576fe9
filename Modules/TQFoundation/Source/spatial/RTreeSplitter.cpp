#include <TQFoundation/spatial/detail/RTreeSplitter.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/spatial/detail/RTreePair.h>

namespace tq::detail {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

/// For coordinates below this magnitude, areas and unions stay finite.
constexpr double kTame = 1e150;

double areaOf(const Rect& rect) noexcept { return rect.size.width * rect.size.height; }

bool isTame(const Rect& rect) noexcept {
  return std::fabs(rect.origin.x) < kTame && std::fabs(rect.origin.y) < kTame &&
         std::fabs(rect.size.width) < kTame && std::fabs(rect.size.height) < kTame;
}

}  // namespace

void RTreeSplitter::reserve(std::size_t count) {
  rects_.reserve(count);
  areas_.reserve(count + 1);
  pending_.reserve(count);
  order_.reserve(count);
}

void RTreeSplitter::plan(const RTreeNodeCore& leaf) noexcept {
  rects_.assign(leaf.rects().begin(), leaf.rects().end());
  TQ_ASSERT(rects_.size() >= 2);
  const Seeds seeds = chooseSeeds(leaf);
  const Rect groups[2] = {rects_[seeds.first], rects_[seeds.second]};
  const double groupAreas[2] = {areaOf(groups[0]), areaOf(groups[1])};

  pending_.clear();
  for (std::size_t i = 0; i < rects_.size(); ++i) {
    if (i == seeds.first || i == seeds.second) continue;
    const double first = areaOf(RectUnion(groups[0], rects_[i])) - groupAreas[0];
    const double second = areaOf(RectUnion(groups[1], rects_[i])) - groupAreas[1];
    pending_.push_back({{first, second}, static_cast<std::uint32_t>(i), second < first ? 1U : 0U});
  }
  sortPending();

  order_.clear();
  for (unsigned group = 0; group < 2; ++group) {
    order_.push_back(static_cast<std::uint32_t>(group == 0 ? seeds.first : seeds.second));
    for (const Pending& entry : pending_) {
      if (entry.group == group) order_.push_back(entry.index);
    }
    if (group == 0) firstGroupCount_ = order_.size();
  }
}

/// Returns the pair (i, j) whose union wastes the most area. Rounding can make the waste of (j, i)
/// different, so each row is scanned in full. The earliest row with the greatest waste is chosen,
/// and in it the earliest column. An area of infinity excludes the pair of an entry with itself,
/// and the empty slot after an odd count.
RTreeSplitter::Seeds RTreeSplitter::chooseSeeds(const RTreeNodeCore& leaf) noexcept {
  if (!std::ranges::all_of(rects_, isTame)) return chooseSeedsLiterally();
  areas_.assign(rects_.size() + 1, kInf);
  std::ranges::transform(rects_, areas_.begin(), areaOf);
  const RTreeBoundsPair* const pairs = leaf.boundsPairs();
  const auto waste = [&](const RTreeBounds& bounds, double area, std::size_t j) {
    return unionArea(pairs[j / 2], bounds) - both(area) - load(areas_.data() + j);
  };

  Seeds seeds;
  double greatest = -kInf;
  for (std::size_t i = 0; i < rects_.size(); ++i) {
    const RTreeBounds bounds = leaf.boundsAt(i);
    const double area = std::exchange(areas_[i], kInf);
    Pair row = both(-kInf);
    for (std::size_t j = 0; j < rects_.size(); j += 2) row = greater(row, waste(bounds, area, j));
    areas_[i] = area;
    if (row[0] > greatest || row[1] > greatest) {
      greatest = row[0] > row[1] ? row[0] : row[1];
      seeds.first = i;
    }
  }
  const RTreeBounds bounds = leaf.boundsAt(seeds.first);
  const double area = std::exchange(areas_[seeds.first], kInf);
  for (std::size_t j = 0; j < rects_.size(); j += 2) {
    const unsigned reached = laneBits(waste(bounds, area, j) == both(greatest));
    if (reached == 0) continue;
    seeds.second = (reached & 1) != 0 ? j : j + 1;
    break;
  }
  return seeds;
}

/// The same for rects that are null, have NaN, or are too large. A waste of NaN is never greater.
RTreeSplitter::Seeds RTreeSplitter::chooseSeedsLiterally() const noexcept {
  Seeds seeds;
  double greatest = 0;
  bool found = false;
  for (std::size_t i = 0; i < rects_.size(); ++i) {
    for (std::size_t j = 0; j < rects_.size(); ++j) {
      if (i == j) continue;
      const double waste =
          areaOf(RectUnion(rects_[i], rects_[j])) - areaOf(rects_[i]) - areaOf(rects_[j]);
      if (found && !(waste > greatest)) continue;
      greatest = waste;
      seeds = {i, j};
      found = true;
    }
  }
  return seeds;
}

/// Sorts the entries in the order in which they join. The rects of the groups are fixed, and so are
/// the increases. Therefore sorting is the same as repeatedly picking the least increase. NaN
/// cannot be sorted: if there is one, the entries are picked one by one.
void RTreeSplitter::sortPending() noexcept {
  const auto joinsBefore = [](const Pending& a, const Pending& b) {
    const double aLeast = a.increase[a.group];
    const double bLeast = b.increase[b.group];
    return aLeast < bLeast || (aLeast == bLeast && a.index < b.index);
  };
  const bool ordered = std::ranges::none_of(pending_, [](const Pending& entry) {
    return std::isnan(entry.increase[0]) || std::isnan(entry.increase[1]);
  });
  if (ordered) {
    std::ranges::sort(pending_, joinsBefore);
    return;
  }
  for (auto next = pending_.begin(); next != pending_.end(); ++next) {
    auto picked = next;
    double least = next->increase[0];
    next->group = 0;
    for (auto entry = next; entry != pending_.end(); ++entry) {
      for (std::uint32_t group = 0; group < 2; ++group) {
        if (!(entry->increase[group] < least)) continue;
        picked = entry;
        picked->group = group;
        least = entry->increase[group];
      }
    }
    std::rotate(next, picked, picked + 1);
  }
}

}  // namespace tq::detail
