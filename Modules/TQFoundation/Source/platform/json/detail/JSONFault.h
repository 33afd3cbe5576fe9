#pragma once

/// @file JSONFault.h
/// Where JSON text goes wrong: the parser says only that it does.

#include <cstddef>
#include <string>
#include <string_view>

namespace tq::detail {

struct JSONFault {
  std::string message;  ///< such as "Unescaped control character"
  std::size_t index = 0;
};

/// The first fault of text that is not JSON. Cost: one pass; recursion up to `depthLimit`.
[[nodiscard]] JSONFault findJSONFault(std::string_view text, std::size_t depthLimit);

}  // namespace tq::detail
