#include <TQFoundation/objects/MapTable.h>

#include <algorithm>
#include <utility>

#include <TQFoundation/base/MakeRoom.h>

namespace tq {

MapTable::~MapTable() = default;

Ref<MapTable> MapTable::mapTable(Keys keys, Matching matching) {
  return Ref<MapTable>::adopt(new MapTable(keys, matching));
}

std::size_t MapTable::hashOf(const Object& key) const {
  return matching_ == Matching::identity ? std::hash<const Object*>{}(&key) : key.hash();
}

// Weak keys are not compared by address: a new object at the address of a destroyed one is another
// key.
inline bool MapTable::matches(const Slot& slot, const Object& key) const {
  if (slot.strongKey.get() == &key || slot.weakKey.observes(key)) return true;
  return matching_ == Matching::equality && hasEqualKey(slot, key);
}

bool MapTable::hasEqualKey(const Slot& slot, const Object& key) {
  if (slot.strongKey != nullptr) return slot.strongKey->isEqual(key);
  const Ref<Object> held = slot.weakKey.lock();
  return held != nullptr && held->isEqual(key);
}

std::optional<std::size_t> MapTable::find(std::size_t hash, const Object& key) const {
  return index_.find(hash, [&](std::size_t position) {
    const Slot& slot = slots_[position];
    return slot.hash == hash && slot.value != nullptr && matches(slot, key);
  });
}

Object* MapTable::objectForKey(const Object& key) const {
  const auto found = find(hashOf(key), key);
  return found ? slots_[*found].value.get() : nullptr;
}

// The slot keeps its place, with a null value, until makeRoom() compacts the slots.
MapTable::Entry MapTable::takeOut(Slot& slot) noexcept {
  --count_;
  return {std::exchange(slot.strongKey, nullptr), std::exchange(slot.value, nullptr)};
}

// Strong guarantee: the new index is allocated before any slot moves.
void MapTable::makeRoom() {
  detail::makeRoom(slots_, 1);
  if (slots_.size() < index_.capacity()) return;
  index_.reset(count_ + 1);
  std::erase_if(slots_, [](const Slot& slot) { return slot.value == nullptr; });
  sweepPosition_ = 0;  // slots have moved, so the sweep starts again
  for (std::size_t i = 0; i < slots_.size(); ++i) index_.insert(slots_[i].hash, i);
}

MapTable::Removed MapTable::purge() {
  Removed removed;
  if (keys_ == Keys::strong) return removed;
  const std::uint64_t losses = detail::weakLossCount();
  if (losses == lossesSeen_) return removed;
  const auto isGone = [](const Slot& slot) {
    return slot.value != nullptr && slot.weakKey.expired();
  };
  removed.reserve(static_cast<std::size_t>(std::ranges::count_if(slots_, isGone)));
  for (Slot& slot : slots_) {
    // More keys may have been destroyed since the count. They are removed next time.
    if (removed.size() == removed.capacity()) break;
    if (isGone(slot)) removed.push_back(takeOut(slot));
  }
  lossesSeen_ = losses;
  sweepPosition_ = 0;
  return removed;
}

// A sweep visits each slot once, over many calls. After it, all keys are removed that were lost
// before it began.
MapTable::Removed MapTable::purgeSome() {
  constexpr std::size_t kAtOnce = 4;  // more than a change adds, so that sweeps catch up
  Removed removed;
  if (keys_ == Keys::strong) return removed;
  const std::uint64_t losses = detail::weakLossCount();
  for (std::size_t i = 0; i < kAtOnce && losses != lossesSeen_; ++i) {
    if (sweepPosition_ == 0) sweepLosses_ = losses;
    if (sweepPosition_ < slots_.size()) {
      Slot& slot = slots_[sweepPosition_];
      if (slot.value != nullptr && slot.weakKey.expired()) {
        removed.reserve(kAtOnce);
        removed.push_back(takeOut(slot));
      }
      ++sweepPosition_;
    }
    if (sweepPosition_ < slots_.size()) continue;
    sweepPosition_ = 0;
    lossesSeen_ = sweepLosses_;
  }
  return removed;
}

std::size_t MapTable::count() const {
  if (keys_ == Keys::strong || detail::weakLossCount() == lossesSeen_) return count_;
  return static_cast<std::size_t>(std::ranges::count_if(
      slots_, [](const Slot& slot) { return slot.value != nullptr && !slot.weakKey.expired(); }));
}

MapTable::Removed MapTable::setObject(Ref<Object> value, Object& forKey) {
  if (value == nullptr) return removeObjectForKey(forKey);
  Removed removed = purgeSome();
  const std::size_t hash = hashOf(forKey);
  if (const auto found = find(hash, forKey)) {
    removed.reserve(removed.size() + 1);
    removed.push_back({nullptr, std::exchange(slots_[*found].value, std::move(value))});
    return removed;
  }
  Slot slot{.hash = hash, .weakKey = {}, .strongKey = {}, .value = std::move(value)};
  if (keys_ == Keys::weak) {
    slot.weakKey = Weak<Object>(&forKey);
  } else {
    slot.strongKey = share(forKey);
  }
  makeRoom();
  slots_.push_back(std::move(slot));
  index_.insert(hash, slots_.size() - 1);
  ++count_;
  return removed;
}

MapTable::Removed MapTable::removeObjectForKey(const Object& key) {
  Removed removed = purgeSome();
  if (const auto found = find(hashOf(key), key)) {
    removed.reserve(removed.size() + 1);
    removed.push_back(takeOut(slots_[*found]));
  }
  return removed;
}

MapTable::Removed MapTable::removeAllObjects() {
  Removed removed;
  removed.reserve(count_);
  for (Slot& slot : slots_) {
    if (slot.value != nullptr) removed.push_back(takeOut(slot));
  }
  slots_.clear();
  sweepPosition_ = 0;
  index_ = {};
  return removed;
}

std::vector<MapTable::Entry> MapTable::entries() const {
  std::vector<Entry> living;
  living.reserve(count_);
  for (const Slot& slot : slots_) {
    if (slot.value == nullptr) continue;
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
