#pragma once

/// @file RTreeSplitStrategy.h
/// How an R-tree divides a leaf that overflows.

namespace tq {

/// `quadratic`: the two rects that would waste most area together become the seeds of two groups,
/// and every other rect joins the seed whose rect it enlarges less, the first one when both grow
/// alike. The seeds' rects do not grow with their groups, and a group may end with one rect alone.
/// Source of the seeds: Guttman, R-trees (1984), section 3.5.2.
enum class RTreeSplitStrategy { quadratic };

}  // namespace tq
