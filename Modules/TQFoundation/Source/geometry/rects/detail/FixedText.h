#pragma once

/// @file FixedText.h
/// Formats labelled numbers with six decimals, independent of the locale.

#include <initializer_list>
#include <string>
#include <string_view>

#include <TQFoundation/base/Rect.h>

namespace tq::detail {

struct LabelledNumber {
  std::string_view label;
  double value;
};

/// Returns "label:value" for each number, separated by spaces. Values are formatted as by "%f" in
/// the C locale; NaN of either sign is "nan".
[[nodiscard]] std::string fixedText(std::initializer_list<LabelledNumber> numbers);

/// Returns "x:%f y:%f w:%f h:%f" with the raw fields.
[[nodiscard]] std::string fixedText(const Rect& rect);

}  // namespace tq::detail
