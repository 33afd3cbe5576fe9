#pragma once

/// @file TQRangeMap.h
/// Objects found by a place inside the range that they stand for.

#include <cstdint>
#include <map>
#include <vector>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Set.h>
#include <TQFoundation/objects/Value.h>

namespace tq {

/// An object and the places that it covers, from `location` on and as many as `length`.
struct TQRangeMapEntry {
  /// Held strongly; never none.
  Ref<Object> object;
  /// The places that it covers.
  Range range;
};

/// Ranges that do not overlap, which is not checked: of those that cover a place only the one that
/// starts nearest before it is looked at. A value; its objects are held strongly and shared by
/// copies.
///
/// Cost: O(log n) to find and to set. Threads: one at a time.
class TQ_EXPORT TQRangeMap {
 public:
  /// The location of no range; ranges must start before it.
  static constexpr std::uint64_t kNotFound = 0x7FFF'FFFF'FFFF'FFFF;

  /// Replaces the entry that starts at the same place.
  /// @throws Exception: InvalidArgumentException for none, RangeException for a range that starts
  ///         at kNotFound or beyond; the map is as it was
  void setObject(Ref<Object> object, Range forRange);

  /// The object whose range covers the place, lent; null when there is none.
  [[nodiscard]] Object* objectForLocation(std::uint64_t location) const noexcept;

  /// The range that covers the place; {kNotFound, 0} when there is none.
  [[nodiscard]] Range rangeForLocation(std::uint64_t location) const noexcept;

  /// Drops the entries that start at the place or beyond it, one by one by rising start. One that
  /// starts before it and reaches beyond is kept whole.
  void removeObjectsAtOrBeyondLocation(std::uint64_t location) noexcept;

  /// Every range once, by rising start.
  [[nodiscard]] std::vector<Range> allRanges() const;

  /// The objects; of equal ones the one that comes first.
  [[nodiscard]] Ref<Set> allObjects() const;

  /// Where ranges start, rising.
  [[nodiscard]] std::vector<std::uint64_t> locations() const;
  [[nodiscard]] const std::map<std::uint64_t, TQRangeMapEntry>& locationsToEntries()
      const noexcept {
    return entries_;
  }

 private:
  [[nodiscard]] const TQRangeMapEntry* entryCovering(std::uint64_t location) const noexcept;

  std::map<std::uint64_t, TQRangeMapEntry> entries_;
};

}  // namespace tq
