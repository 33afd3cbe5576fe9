#pragma once

/// @file RTreeSplitStrategy.h
/// How an R-tree splits a leaf that overflows.

namespace tq {

/// The strategies for splitting a leaf.
///
/// `quadratic`: the two rects whose union wastes the most area become the seeds of two groups.
/// Every other rect joins the group whose seed it enlarges less, or the first group if both grow
/// equally. The rects of the seeds do not grow with their groups, and a group may end with a single
/// rect.
///
/// Source: the choice of the seeds is from Guttman, R-trees (1984), section 3.5.2.
enum class RTreeSplitStrategy { quadratic };

}  // namespace tq
