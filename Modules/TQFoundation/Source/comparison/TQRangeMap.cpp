#include <TQFoundation/comparison/TQRangeMap.h>

#include <iterator>
#include <string>
#include <utility>

#include <TQFoundation/objects/Exception.h>

namespace tq {

void TQRangeMap::setObject(Ref<Object> object, Range forRange) {
  if (!object) throw Exception(InvalidArgumentException, "A range map cannot hold null.");
  if (forRange.location >= kNotFound) {
    throw Exception(RangeException,
                    "A range cannot start at " + std::to_string(forRange.location) + ".");
  }
  TQRangeMapEntry& entry = entries_[forRange.location];
  std::swap(entry.object, object);  // the earlier one is released last, see below
  entry.range = forRange;
}

const TQRangeMapEntry* TQRangeMap::entryCovering(std::uint64_t location) const noexcept {
  const auto beyond = entries_.upper_bound(location);
  if (beyond == entries_.begin()) return nullptr;
  const TQRangeMapEntry& entry = std::prev(beyond)->second;
  return location - entry.range.location < entry.range.length ? &entry : nullptr;
}

Object* TQRangeMap::objectForLocation(std::uint64_t location) const noexcept {
  const TQRangeMapEntry* const entry = entryCovering(location);
  return entry != nullptr ? entry->object.get() : nullptr;
}

Range TQRangeMap::rangeForLocation(std::uint64_t location) const noexcept {
  const TQRangeMapEntry* const entry = entryCovering(location);
  return entry != nullptr ? entry->range : Range{kNotFound, 0};
}

// Each entry is removed from the map before its object is released, because the destructor may read
// this map.
void TQRangeMap::removeObjectsAtOrBeyondLocation(std::uint64_t location) noexcept {
  for (auto at = entries_.lower_bound(location); at != entries_.end();
       at = entries_.lower_bound(location)) {
    entries_.extract(at);
  }
}

std::vector<Range> TQRangeMap::allRanges() const {
  std::vector<Range> ranges;
  ranges.reserve(entries_.size());
  for (const auto& [location, entry] : entries_) ranges.push_back(entry.range);
  return ranges;
}

Ref<Set> TQRangeMap::allObjects() const {
  std::vector<Ref<Object>> objects;
  objects.reserve(entries_.size());
  for (const auto& [location, entry] : entries_) objects.push_back(entry.object);
  return Set::setWithObjects(objects);
}

std::vector<std::uint64_t> TQRangeMap::locations() const {
  std::vector<std::uint64_t> locations;
  locations.reserve(entries_.size());
  for (const auto& [location, entry] : entries_) locations.push_back(location);
  return locations;
}

}  // namespace tq
