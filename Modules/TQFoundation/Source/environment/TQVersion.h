#pragma once

/// @file TQVersion.h
/// Comparison of version strings such as "2.10.1".

#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Compares the first three components of two versions as numbers; further components are ignored.
/// Each is read by lenientInteger(): "3-beta" is 3; "x" and a missing component are 0. Threads:
/// any.
/// @return -1 if `first` is lower, 1 if it is higher, 0 if they are equal
[[nodiscard]] TQ_EXPORT int TQCompareVersions(std::string_view first,
                                              std::string_view second) noexcept;

/// Returns the highest version, as a view of the given text. Of equal versions the first one is
/// returned.
/// @return nullopt if no version is higher than "0": on purpose, a list of only zero versions has
///         no highest one, like an empty list
[[nodiscard]] TQ_EXPORT std::optional<std::string_view> TQHighestVersionNumber(
    std::span<const std::string_view> versions) noexcept;
[[nodiscard]] TQ_EXPORT std::optional<std::string_view> TQHighestVersionNumber(
    std::span<const std::string> versions) noexcept;
[[nodiscard]] inline std::optional<std::string_view> TQHighestVersionNumber(
    std::initializer_list<std::string_view> versions) noexcept {
  return TQHighestVersionNumber(std::span(versions.begin(), versions.size()));
}

}  // namespace tq
