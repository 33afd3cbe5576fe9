#pragma once

/// @file PropertyList.h
/// Property lists: trees of strings, numbers, dates, data, arrays and dictionaries.

#include <cstddef>
#include <span>
#include <string>

#include <TQFoundation/objects/Data.h>

namespace tq::detail {

/// Maximum depth of nested arrays and dictionaries, and approximate maximum size of a list in
/// bytes.
inline constexpr int kPropertyListDepth = 512;
inline constexpr std::size_t kLargestPropertyList = std::size_t{1} << 28;

/// Returns `object` as a binary property list; null if it is not one, with the reason in `fault`.
/// @param largest  the size of the largest list: 64 bytes for each value, and its text or data
[[nodiscard]] Ref<Data> bytesFromPropertyList(const Object& object, std::string& fault,
                                              std::size_t largest = kLargestPropertyList);

/// Returns the objects of a binary property list, all immutable; null if the bytes are invalid.
[[nodiscard]] Ref<Object> propertyListFromBytes(std::span<const std::byte> bytes);

}  // namespace tq::detail
