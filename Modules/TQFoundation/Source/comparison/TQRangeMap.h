#pragma once

/// @file TQRangeMap.h
/// Maps from integer ranges to objects.

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Set.h>
#include <TQFoundation/objects/Value.h>

namespace tq {

/// An object and its range.
struct TQRangeMapEntry {
  /// Never null.
  Ref<Object> object;
  /// The locations that the object covers.
  Range range;
};

/// A map from ranges to objects. The ranges must not overlap; this is not checked: a look-up
/// considers only the last range that starts at or before the location. A value type. Objects are
/// held strongly; copies of the map share them.
///
/// Cost:    O(log n) to find and to set.
/// Threads: one at a time.
class TQ_EXPORT TQRangeMap {
 public:
  TQRangeMap() = default;
  /// Entries that an assignment or the destructor removes are released last: their objects'
  /// destructors see the new map, or an empty one.
  TQRangeMap(const TQRangeMap&) = default;
  TQRangeMap(TQRangeMap&&) noexcept = default;
  TQRangeMap& operator=(TQRangeMap other) noexcept {
    entries_.swap(other.entries_);
    return *this;
  }
  ~TQRangeMap() { const auto removed = std::exchange(entries_, {}); }

  /// The location that means "not found". Ranges must start before it.
  static constexpr std::uint64_t kNotFound = 0x7FFF'FFFF'FFFF'FFFF;

  /// Sets the object of a range. Replaces an entry with the same location.
  /// @throws Exception (InvalidArgumentException) if `object` is null
  /// @throws Exception (RangeException) if the range starts at kNotFound or beyond. The map is
  ///         unchanged in both cases.
  void setObject(Ref<Object> object, Range forRange);

  /// Returns the object whose range contains the location, or null. The map owns it.
  [[nodiscard]] Object* objectForLocation(std::uint64_t location) const noexcept;

  /// Returns the range that contains the location, or {kNotFound, 0}.
  [[nodiscard]] Range rangeForLocation(std::uint64_t location) const noexcept;

  /// Removes the entries that start at the location or beyond it, one by one in ascending order. An
  /// entry that starts before the location is kept unchanged, even if it extends beyond it.
  void removeObjectsAtOrBeyondLocation(std::uint64_t location) noexcept;

  /// Returns all ranges in ascending order.
  [[nodiscard]] std::vector<Range> allRanges() const;

  /// Returns the set of all objects. Of equal objects it contains the first one.
  [[nodiscard]] Ref<Set> allObjects() const;

  /// Returns the starts of all ranges in ascending order.
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
