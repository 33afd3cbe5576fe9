#pragma once

/// @file SvgTransform.h
/// The language of the transform attributes.

#include <optional>
#include <string_view>

#include <TQFoundation/base/AffineTransform.h>

namespace tqdoc {

/// The transforms of a list, combined so that the last one acts on a point first. The identity for
/// an empty list; none for a text that is not such a list.
[[nodiscard]] std::optional<tq::AffineTransform> parseTransform(std::string_view text);

}  // namespace tqdoc
