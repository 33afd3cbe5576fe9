#pragma once

/// @file JSONShape.h
/// The key sequences of JSON objects, shared by objects with equal keys.

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <TQFoundation/objects/DictionaryKeys.h>
#include <TQFoundation/objects/Object.h>
#include <TQFoundation/objects/Ref.h>
#include <TQFoundation/objects/String.h>

namespace tq::detail {

/// The sequence of keys of an object, indexed for searching. Of equal keys, the first one is found.
/// Immutable.
class JSONShape final : public Object {
 public:
  JSONShape(std::vector<Ref<String>> keys);

  /// Returns the number of keys, equal ones included.
  [[nodiscard]] std::size_t count() const noexcept { return keys_.size(); }
  /// Returns the key of a member.
  [[nodiscard]] std::string_view key(std::size_t member) const noexcept { return texts_[member]; }
  /// Returns whether the shape has exactly these keys in this order.
  [[nodiscard]] bool isOf(std::span<const std::string_view> keys) const noexcept;

  /// Returns the index of the member `key`.
  /// @param hint  the index to try first. Receives the index after the member that was found,
  ///              because members are mostly read in the order in which they were written.
  [[nodiscard]] std::optional<std::size_t> find(std::string_view key, std::size_t& hint) const;

  /// Returns whether a key starts with "_", as all keys that the archive format reserves do.
  [[nodiscard]] bool isMarked() const noexcept { return !marked_.empty(); }

  /// Returns the keys without repetitions, and the index of the member of each of them.
  [[nodiscard]] const Ref<DictionaryKeys>& distinctKeys() const noexcept { return distinct_; }
  [[nodiscard]] std::size_t memberOfDistinctKey(std::size_t index) const noexcept {
    return members_.empty() ? index : members_[index];
  }

 private:
  std::vector<Ref<String>> keys_;
  std::vector<std::string_view> texts_;  // of the keys
  Ref<DictionaryKeys> distinct_;
  std::vector<std::uint32_t> marked_;   // the members whose key starts with "_"
  std::vector<std::uint32_t> members_;  // by distinct key; empty if no key repeats
};

/// A cache of shapes. Equal keys of all shapes share one string.
///
/// Bounds: at most kMostShapes shapes and kMostKeys keys are cached, and no shape of more than
/// kWidest members. Hostile text cannot make the cache grow to many times the size of the text.
class JSONShapes {
 public:
  /// Returns the shape with these keys.
  [[nodiscard]] Ref<JSONShape> shapeOf(std::span<const std::string_view> keys);

  /// Returns the last shape of about so many keys; null if there is none. The next object of as
  /// many keys is probably of the same shape.
  [[nodiscard]] const Ref<JSONShape>& recentOf(std::size_t keyCount) const noexcept {
    return recent_[keyCount % std::size(recent_)];
  }

 private:
  static constexpr std::size_t kMostShapes = 4096;
  static constexpr std::size_t kMostKeys = 16384;
  static constexpr std::size_t kWidest = 64;

  /// Seeded with a secret, because the text chooses the keys. Not noexcept, so that the table
  /// stores the hashes.
  struct HashOfKey {
    std::size_t operator()(std::string_view text) const { return String::hashOf(text); }
  };

  [[nodiscard]] Ref<String> keyOf(std::string_view text);

  const std::size_t seed_ = String::hashOf({});
  Ref<JSONShape> recent_[16];
  std::unordered_map<std::size_t, Ref<JSONShape>> shapes_;             // by hash of the keys
  std::unordered_map<std::string_view, Ref<String>, HashOfKey> keys_;  // by the string's text
};

}  // namespace tq::detail
