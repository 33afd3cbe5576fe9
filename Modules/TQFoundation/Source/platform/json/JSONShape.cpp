#include <TQFoundation/platform/json/JSONShape.h>

#include <algorithm>
#include <utility>

#include <TQFoundation/objects/TextWords.h>

namespace tq::detail {
namespace {

/// Mixes the first and the last bytes of a key into one word.
std::uint64_t digest(std::string_view key) noexcept {
  if (key.size() < 8) return key.empty() ? 0 : packedWord(key);
  return loadedWord<std::uint64_t>(key.data()) +
         (loadedWord<std::uint64_t>(key.data() + key.size() - 8) << 7);
}

/// Returns a quick hash. Shapes found by it are compared in full.
std::size_t hashOf(std::span<const std::string_view> keys, std::size_t seed) noexcept {
  std::size_t hash = seed ^ keys.size();
  for (const std::string_view key : keys) {
    hash = (hash ^ digest(key) ^ key.size()) * 0x9E3779B97F4A7C15u;
    hash ^= hash >> 29;
  }
  return hash;
}

}  // namespace

JSONShape::JSONShape(std::vector<Ref<String>> keys)
    : keys_(std::move(keys)), distinct_(makeRef<DictionaryKeys>()) {
  texts_.reserve(keys_.size());
  for (std::size_t i = 0; i < keys_.size(); ++i) {
    texts_.push_back(keys_[i]->view());
    if (key(i).starts_with('_')) marked_.push_back(static_cast<std::uint32_t>(i));
    const bool repeats = distinct_->find(keys_[i]->view()).has_value();
    if (repeats && members_.empty()) {
      for (std::uint32_t member = 0; member < i; ++member) members_.push_back(member);
    }
    if (repeats) continue;
    distinct_->append(keys_[i]);
    if (distinct_->count() != i + 1) members_.push_back(static_cast<std::uint32_t>(i));
  }
}

bool JSONShape::isOf(std::span<const std::string_view> keys) const noexcept {
  return std::ranges::equal(keys, texts_, areEqualTexts);
}

std::optional<std::size_t> JSONShape::find(std::string_view key, std::size_t& hint) const {
  const auto found = [&hint](std::size_t member) {
    hint = member + 1;
    return member;
  };
  if (members_.empty() && hint < keys_.size() && areEqualTexts(this->key(hint), key)) {
    return found(hint);
  }
  if (key.starts_with('_')) {
    for (const std::size_t member : marked_) {
      if (areEqualTexts(this->key(member), key)) return found(member);
    }
    return std::nullopt;
  }
  const auto index = distinct_->find(key);
  if (!index) return std::nullopt;
  return found(memberOfDistinctKey(*index));
}

Ref<JSONShape> JSONShapes::shapeOf(std::span<const std::string_view> keys) {
  const std::size_t hash = hashOf(keys, seed_);
  const auto found = shapes_.find(hash);
  Ref<JSONShape>& recent = recent_[keys.size() % std::size(recent_)];
  if (found != shapes_.end() && found->second->isOf(keys)) return recent = found->second;

  std::vector<Ref<String>> strings;
  strings.reserve(keys.size());
  for (const std::string_view key : keys) strings.push_back(keyOf(key));
  Ref<JSONShape> shape = makeRef<JSONShape>(std::move(strings));
  if (keys.size() <= kWidest && found == shapes_.end() && shapes_.size() < kMostShapes) {
    shapes_.emplace(hash, shape);
    recent = shape;
  }
  return shape;
}

Ref<String> JSONShapes::keyOf(std::string_view text) {
  const auto found = keys_.find(text);
  if (found != keys_.end()) return found->second;
  Ref<String> key =
      String::stringWithGeneralisedUTF8(text);  // keys of parsed trees may be ill-formed
  if (keys_.size() < kMostKeys) keys_.emplace(key->view(), key);
  return key;
}

}  // namespace tq::detail
