#pragma once

/// @file TQStringUniquer.h
/// Generates names that are unique within a set.

#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Generates unique names in the style of desktop systems: "Oval", "Oval 2"; for copies "Oval
/// copy", "Oval copy 2". Generated names are added to the taken names. Names are compared byte by
/// byte.
///
/// Cost:    a few look-ups per name, plus one for each taken number that is encountered for the
///          first time. The number of earlier copies does not matter.
/// Threads: one at a time.
class TQ_EXPORT TQStringUniquer {
 public:
  TQStringUniquer() = default;
  /// Starts with these names taken. Duplicates are allowed.
  explicit TQStringUniquer(std::span<const std::string> taken);

  /// Adds a taken name.
  void take(std::string_view name);
  /// True if this name is taken.
  [[nodiscard]] bool isTaken(std::string_view name) const { return taken_.contains(name); }

  /// Returns `wanted` if it is free. Otherwise appends the first free number, or increases the
  /// number at its end: "Oval 7" is followed by "Oval 8". A number is 2 or more, without leading
  /// zeros, of at most 18 digits; other digits belong to the name.
  std::string uniqueString(std::string_view wanted);

  /// Returns a name for a copy of `original`: "Oval copy", then "Oval copy 2". For a copy of a copy
  /// the number increases: "Oval copy 7" is followed by "Oval copy 8".
  std::string uniqueCopyName(std::string_view original);

 private:
  struct Hash : std::hash<std::string_view> {
    using is_transparent = void;
  };

  std::string firstFree(std::string_view stem, std::uint64_t number);

  std::unordered_set<std::string, Hash, std::equal_to<>> taken_;
  /// Runs of taken numbers, as first number and past-the-end number. They do not overlap. Names are
  /// never released, so runs only grow.
  using Runs = std::map<std::uint64_t, std::uint64_t>;
  std::unordered_map<std::string, Runs> runs_;
};

}  // namespace tq
