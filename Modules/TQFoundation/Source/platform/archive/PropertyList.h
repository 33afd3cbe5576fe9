#pragma once

/// @file PropertyList.h
/// Trees of plain values as bytes: strings, numbers, dates, data, and arrays and dictionaries of
/// these.

#include <cstddef>
#include <span>
#include <string>

#include <TQFoundation/objects/Data.h>

namespace tq::detail {

/// How deep arrays and dictionaries may nest, and how much a list may take, about.
inline constexpr int kPropertyListDepth = 512;
inline constexpr std::size_t kLargestPropertyList = std::size_t{1} << 28;

/// The bytes of `object`; none when it is no property list, with what is in the way in `fault`.
[[nodiscard]] Ref<Data> bytesFromPropertyList(const Object& object, std::string& fault);

/// What the bytes hold, immutable throughout; none when they make no sense.
[[nodiscard]] Ref<Object> propertyListFromBytes(std::span<const std::byte> bytes);

}  // namespace tq::detail
