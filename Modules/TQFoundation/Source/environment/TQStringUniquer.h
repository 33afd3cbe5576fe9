#pragma once

/// @file TQStringUniquer.h
/// Names that nobody has yet.

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

/// Gives out names beside those that are taken, in the manner of a desktop: "Oval" or "Oval 2";
/// for a copy "Oval copy", "Oval copy 2". What it gives out is taken from then on. Names are
/// compared byte for byte.
///
/// Cost: a few look-ups, and one more for each number that is met for the first time and is taken,
///       however many copies there are. Threads: one at a time.
class TQ_EXPORT TQStringUniquer {
 public:
  TQStringUniquer() = default;
  /// Knows the names that somebody has already; a name may be in twice.
  explicit TQStringUniquer(std::span<const std::string> taken);

  /// The name is somebody's from now on.
  void take(std::string_view name);
  /// True when somebody has exactly this name.
  [[nodiscard]] bool isTaken(std::string_view name) const { return taken_.contains(name); }

  /// `wanted` itself while it is free; else with the first free number, which counts on from the
  /// one that it ends in: "Oval 7" is followed by "Oval 8".
  std::string uniqueString(std::string_view wanted);

  /// The name of a copy of `original`: "Oval copy", then "Oval copy 2". A copy's copy counts on:
  /// "Oval copy 7" is followed by "Oval copy 8".
  std::string uniqueCopyName(std::string_view original);

 private:
  struct Hash : std::hash<std::string_view> {
    using is_transparent = void;
  };

  std::string firstFree(std::string_view stem, std::uint64_t number);

  std::unordered_set<std::string, Hash, std::equal_to<>> taken_;
  /// By stem, runs of numbers that are known to be taken, each with the number behind its last one:
  /// names are never given back. No two overlap.
  using Runs = std::map<std::uint64_t, std::uint64_t>;
  std::unordered_map<std::string, Runs> runs_;
};

}  // namespace tq
