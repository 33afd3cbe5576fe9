#include <TQFoundation/objects/DictionaryKeys.h>

#include <utility>

#include <TQFoundation/objects/String.h>

namespace tq::detail {
std::optional<std::size_t> DictionaryKeys::find(const Object& key) const {
  const auto equal = [&](std::size_t i) {
    return keys_[i].get() == &key || keys_[i]->isEqual(key);
  };
  if (index_.capacity() > 0) return index_.find(key.hash(), equal);
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
  if (index_.capacity() > 0) return index_.find(String::hashOf(key), equal);
  for (std::size_t i = 0; i < keys_.size(); ++i) {
    if (equal(i)) return i;
  }
  return std::nullopt;
}

// An existing index is kept even if few keys are left, because find() then uses only the index.
void DictionaryKeys::append(Ref<Object> key) {
  keys_.push_back(std::move(key));
  if (index_.capacity() == 0 && keys_.size() <= kSearched) return;
  try {
    if (keys_.size() > index_.capacity()) {
      index_.reset(keys_.size());
      fillIndex();
    } else {
      index_.insert(keys_.back()->hash(), keys_.size() - 1);
    }
  } catch (...) {
    keys_.pop_back();
    throw;
  }
}

void DictionaryKeys::removeAt(std::size_t index) {
  const Ref<Object> removed = std::move(keys_[index]);
  keys_.erase(keys_.begin() + static_cast<std::ptrdiff_t>(index));
  if (index_.capacity() == 0) return;
  index_.clear();
  fillIndex();
}

void DictionaryKeys::fillIndex() {
  for (std::size_t i = 0; i < keys_.size(); ++i) index_.insert(keys_[i]->hash(), i);
}

}  // namespace tq::detail
