#pragma once

/// @file TQVersion.h
/// Dotted version texts by their numbers.

#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Compares the first three components, each read as lenientInteger() reads it: "3-beta" is 3, "x"
/// and what is missing are 0. Later components are never looked at. Any thread.
/// @return -1 when `first` is lower, 1 when it is higher, 0 when they are equal that far
[[nodiscard]] TQ_EXPORT int TQCompareVersions(std::string_view first,
                                              std::string_view second) noexcept;

/// The highest of the versions, of equal ones the earliest; a view of the text given.
/// @return none for no versions, and, on purpose, when none is higher than "0": a list of nothing
///         but zero versions has no highest
[[nodiscard]] TQ_EXPORT std::optional<std::string_view> TQHighestVersionNumber(
    std::span<const std::string_view> versions) noexcept;
[[nodiscard]] TQ_EXPORT std::optional<std::string_view> TQHighestVersionNumber(
    std::span<const std::string> versions) noexcept;
[[nodiscard]] inline std::optional<std::string_view> TQHighestVersionNumber(
    std::initializer_list<std::string_view> versions) noexcept {
  return TQHighestVersionNumber(std::span(versions.begin(), versions.size()));
}

}  // namespace tq
