#include <TQFoundation/objects/DictionaryKeys.h>

#include <utility>

#include <TQFoundation/base/MakeRoom.h>
#include <TQFoundation/objects/String.h>

namespace tq::detail {

std::optional<std::size_t> DictionaryKeys::find(const Object& key) const {
  const auto equal = [&](std::size_t i) {
    return keys_[i].get() == &key || keys_[i]->isEqual(key);
  };
  if (hashed_) {
    const std::size_t hash = key.hash();
    const auto matches = [&](std::size_t i) { return hashed_->hashes[i] == hash && equal(i); };
    return hashed_->index.find(hash, matches);
  }
  for (std::size_t i = 0; i < keys_.size(); ++i) {
    if (equal(i)) return i;
  }
  return std::nullopt;
}

std::optional<std::size_t> DictionaryKeys::find(std::string_view key) const {
  const auto equal = [&](std::size_t i) {
    const Object& held = *keys_[i];
    return held.kind() == ObjectKind::string && static_cast<const String&>(held).view() == key;
  };
  if (hashed_) return hashed_->index.find(String::hashOf(key), equal);
  for (std::size_t i = 0; i < keys_.size(); ++i) {
    if (equal(i)) return i;
  }
  return std::nullopt;
}

Ref<DictionaryKeys> DictionaryKeys::duplicate() const {
  Ref<DictionaryKeys> result = makeRef<DictionaryKeys>();
  result->keys_ = keys_;
  if (keys_.size() > kSearched) {
    result->hashed_ = std::make_unique<Hashed>();
    result->hashed_->hashes = hashed_->hashes;
    result->hashed_->index.reset(keys_.size());
    result->hashed_->fillIndex();
  }
  return result;
}

// An existing index is kept even if few keys are left, because find() then uses only the index.
// What can fail precedes the first change; the hash() of a host's key may throw.
void DictionaryKeys::append(Ref<Object> key) {
  makeRoom(keys_, 1);
  if (hashed_) {
    hashed_->add(key->hash());
  } else if (keys_.size() == kSearched) {
    auto hashed = std::make_unique<Hashed>();
    hashed->index.reset(kSearched + 1);
    hashed->hashes.reserve(2 * kSearched);
    for (const Ref<Object>& held : keys_) hashed->add(held->hash());
    hashed->add(key->hash());
    hashed_ = std::move(hashed);
  }
  keys_.push_back(std::move(key));
}

void DictionaryKeys::removeAt(std::size_t index) noexcept {
  const Ref<Object> removed = std::move(keys_[index]);
  keys_.erase(keys_.begin() + static_cast<std::ptrdiff_t>(index));
  if (!hashed_) return;
  hashed_->hashes.erase(hashed_->hashes.begin() + static_cast<std::ptrdiff_t>(index));
  hashed_->index.clear();
  hashed_->fillIndex();
}

void DictionaryKeys::Hashed::add(std::size_t hash) {
  makeRoom(hashes, 1);
  const std::size_t position = hashes.size();
  if (position < index.capacity()) {
    index.insert(hash, position);
    hashes.push_back(hash);
  } else {
    index.reset(position + 1);
    hashes.push_back(hash);
    fillIndex();
  }
}

void DictionaryKeys::Hashed::fillIndex() noexcept {
  for (std::size_t i = 0; i < hashes.size(); ++i) index.insert(hashes[i], i);
}

}  // namespace tq::detail
