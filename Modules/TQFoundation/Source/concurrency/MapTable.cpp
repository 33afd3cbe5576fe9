#include <TQFoundation/concurrency/MapTable.h>

#include <algorithm>
#include <utility>

namespace tq {

Ref<MapTable> MapTable::mapTable(Keys keys, Matching matching) {
  return Ref<MapTable>::adopt(new MapTable(keys, matching));
}

std::size_t MapTable::hashOf(const Object& key) const {
  return matching_ == Matching::identity ? std::hash<const Object*>{}(&key) : key.hash();
}

// By identity a weak key is compared through what it observes, never by address: a new object at an
// old address is another key.
bool MapTable::matches(const Slot& slot, const Object& key) const {
  if (keys_ == Keys::strong) {
    return slot.strongKey.get() == &key ||
           (matching_ == Matching::equality && slot.strongKey->isEqual(key));
  }
  if (slot.weakKey.observes(key)) return true;
  if (matching_ == Matching::identity) return false;
  const Ref<Object> held = slot.weakKey.lock();
  return held != nullptr && held->isEqual(key);
}

MapTable::Slots::const_iterator MapTable::find(const Object& key) const {
  const auto [first, last] = slots_.equal_range(hashOf(key));
  for (auto slot = first; slot != last; ++slot) {
    if (matches(slot->second, key)) return slot;
  }
  return slots_.end();
}

Object* MapTable::objectForKey(const Object& key) const {
  const auto slot = find(key);
  return slot != slots_.end() ? slot->second.value.get() : nullptr;
}

MapTable::Removed MapTable::purge() {
  Removed removed;
  if (keys_ == Keys::strong) return removed;
  const std::uint64_t losses = detail::weakLossCount();
  if (losses == lossesSeen_) return removed;
  for (auto slot = slots_.begin(); slot != slots_.end();) {
    if (!slot->second.weakKey.isGone()) {
      ++slot;
      continue;
    }
    removed.push_back({nullptr, slot->second.value});
    slot = slots_.erase(slot);
  }
  lossesSeen_ = losses;
  return removed;
}

std::size_t MapTable::count() const {
  if (keys_ == Keys::strong || detail::weakLossCount() == lossesSeen_) return slots_.size();
  return static_cast<std::size_t>(std::count_if(slots_.begin(), slots_.end(), [](const auto& slot) {
    return !slot.second.weakKey.isGone();
  }));
}

MapTable::Removed MapTable::setObject(Ref<Object> value, Object& forKey) {
  if (value == nullptr) return removeObjectForKey(forKey);
  Removed removed = purge();
  if (const auto found = find(forKey); found != slots_.end()) {
    const auto slot = slots_.erase(found, found);  // nothing erased: the iterator made mutable
    removed.push_back({nullptr, std::exchange(slot->second.value, std::move(value))});
    return removed;
  }
  Slot slot{.weakKey = {}, .strongKey = {}, .value = std::move(value)};
  if (keys_ == Keys::weak) {
    slot.weakKey = Weak<Object>(&forKey);
  } else {
    slot.strongKey = share(forKey);
  }
  slots_.emplace(hashOf(forKey), std::move(slot));
  return removed;
}

MapTable::Removed MapTable::removeObjectForKey(const Object& key) {
  Removed removed = purge();
  if (const auto found = find(key); found != slots_.end()) {
    const auto slot = slots_.erase(found, found);
    removed.push_back({std::move(slot->second.strongKey), std::move(slot->second.value)});
    slots_.erase(slot);
  }
  return removed;
}

MapTable::Removed MapTable::removeAllObjects() {
  Removed removed;
  removed.reserve(slots_.size());
  for (auto& [hash, slot] : std::exchange(slots_, {})) {
    removed.push_back({std::move(slot.strongKey), std::move(slot.value)});
  }
  return removed;
}

std::vector<MapTable::Entry> MapTable::entries() const {
  std::vector<Entry> living;
  living.reserve(slots_.size());
  for (const auto& [hash, slot] : slots_) {
    Ref<Object> key = keys_ == Keys::weak ? slot.weakKey.lock() : slot.strongKey;
    if (key != nullptr) living.push_back({std::move(key), slot.value});
  }
  return living;
}

void MapTable::enumerateKeysAndObjectsUsingBlock(
    const std::function<void(Object&, Object&, bool&)>& block) const {
  if (!block) return;
  bool stop = false;
  for (const Entry& entry : entries()) {
    block(*entry.key, *entry.value, stop);
    if (stop) return;
  }
}

void MapTable::enumerateKeysUsingBlock(const std::function<void(Object&, bool&)>& block) const {
  if (!block) return;
  enumerateKeysAndObjectsUsingBlock([&](Object& key, Object&, bool& stop) { block(key, stop); });
}

void MapTable::enumerateObjectsUsingBlock(const std::function<void(Object&, bool&)>& block) const {
  if (!block) return;
  enumerateKeysAndObjectsUsingBlock(
      [&](Object&, Object& object, bool& stop) { block(object, stop); });
}

Ref<MapTable> MapTable::filter(const std::function<bool(Object&, Object&)>& block) const {
  Ref<MapTable> kept = mapTable(keys_, matching_);
  for (const Entry& entry : entries()) {
    if (block(*entry.key, *entry.value)) kept->setObject(entry.value, *entry.key);
  }
  return kept;
}

}  // namespace tq
