#pragma once

/// @file Features.h
/// Features of a drawing that the model does not support.

#include <cstddef>
#include <map>
#include <string>

namespace tqdoc {

/// How often a reader ignored each feature. The names come from the drawing.
using Features = std::map<std::string, std::size_t, std::less<>>;

/// Adds the counts of `more` to `all`.
void addTo(Features& all, const Features& more);

/// Formats counts as "filter 2, <text> 1", the most frequent first; "none" if there are none.
[[nodiscard]] std::string summary(const Features& features);

}  // namespace tqdoc
