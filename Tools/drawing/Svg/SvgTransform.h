#pragma once

/// @file SvgTransform.h
/// Parses transform attributes.

#include <optional>
#include <string_view>

#include <TQFoundation/base/AffineTransform.h>

namespace tqdoc {

/// Returns the product of a list of transforms; the last one is applied to a point first. The
/// identity for an empty list, no value for an invalid one.
[[nodiscard]] std::optional<tq::AffineTransform> parseTransform(std::string_view text);

}  // namespace tqdoc
