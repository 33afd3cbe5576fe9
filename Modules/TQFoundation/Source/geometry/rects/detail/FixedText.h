#pragma once

/// @file FixedText.h
/// Labelled numbers with six decimals, never by locale.

#include <initializer_list>
#include <string>
#include <string_view>

#include <TQFoundation/base/Rect.h>

namespace tq::detail {

struct LabelledNumber {
  std::string_view label;
  double value;
};

/// "label:value" for each, with a space between; the value as "%f" has it in the C locale. NaN of
/// either sign is "nan".
[[nodiscard]] std::string fixedText(std::initializer_list<LabelledNumber> numbers);

/// "x:%f y:%f w:%f h:%f", raw fields
[[nodiscard]] std::string fixedText(const Rect& rect);

}  // namespace tq::detail
