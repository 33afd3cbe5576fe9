#include <TQFoundation/objects/detail/DictionaryKeys.h>

#include <bit>
#include <utility>

#include <TQFoundation/objects/String.h>

namespace tq::detail {
namespace {

/// Spreads a hash over the table: hashes of small numbers differ in their high bits alone.
std::size_t spread(std::size_t hash) noexcept {
  hash *= 0x9E3779B97F4A7C15u;
  return hash ^ (hash >> 32);
}

}  // namespace

template <class Equal>
std::optional<std::size_t> DictionaryKeys::findWith(std::size_t hash, Equal&& equal) const {
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t at = spread(hash) & mask; slots_[at] != 0; at = (at + 1) & mask) {
    const std::size_t index = slots_[at] - 1;
    if (equal(*keys_[index])) return index;
  }
  return std::nullopt;
}

std::optional<std::size_t> DictionaryKeys::find(const Object& key) const {
  const auto equal = [&key](const Object& held) { return &held == &key || held.isEqual(key); };
  if (!slots_.empty()) return findWith(key.hash(), equal);
  for (std::size_t i = 0; i < keys_.size(); ++i) {
    if (equal(*keys_[i])) return i;
  }
  return std::nullopt;
}

std::optional<std::size_t> DictionaryKeys::find(std::string_view key) const {
  const auto equal = [key](const Object& held) {
    return held.kind() == ObjectKind::string && static_cast<const String&>(held).view() == key;
  };
  if (!slots_.empty()) return findWith(String::hashOf(key), equal);
  for (std::size_t i = 0; i < keys_.size(); ++i) {
    if (equal(*keys_[i])) return i;
  }
  return std::nullopt;
}

void DictionaryKeys::append(Ref<Object> key) {
  keys_.push_back(std::move(key));
  if (keys_.size() <= kSearched) return;
  try {
    if (2 * keys_.size() > slots_.size()) {
      rebuild();
    } else {
      insertSlot(keys_.size() - 1);
    }
  } catch (...) {
    keys_.pop_back();
    throw;
  }
}

void DictionaryKeys::removeAt(std::size_t index) {
  const Ref<Object> removed = std::move(keys_[index]);
  keys_.erase(keys_.begin() + static_cast<std::ptrdiff_t>(index));
  if (!slots_.empty()) rebuild();
}

void DictionaryKeys::insertSlot(std::size_t index) noexcept {
  const std::size_t mask = slots_.size() - 1;
  std::size_t at = spread(keys_[index]->hash()) & mask;
  while (slots_[at] != 0) at = (at + 1) & mask;
  slots_[at] = static_cast<std::uint32_t>(index + 1);
}

void DictionaryKeys::rebuild() {
  slots_.assign(std::bit_ceil(4 * keys_.size()), 0);
  for (std::size_t i = 0; i < keys_.size(); ++i) insertSlot(i);
}

}  // namespace tq::detail
