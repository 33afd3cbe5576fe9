#pragma once

/// @file JSONShape.h
/// The keys of JSON objects: objects of one kind share them.

#include <cstddef>
#include <cstdint>
#include <limits>
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

/// The sequence of keys of an object, and what is asked about it again and again. Of equal keys the
/// first counts. Immutable.
class JSONShape final : public Object {
 public:
  JSONShape(std::vector<Ref<String>> keys);

  [[nodiscard]] std::size_t count() const noexcept { return keys_.size(); }
  [[nodiscard]] bool isOf(std::span<const std::string_view> keys) const noexcept;

  /// The member called `key`. `hint` is where the search starts, and afterwards where the next
  /// member stands: members are mostly read in the order in which they were written.
  [[nodiscard]] std::optional<std::size_t> find(std::string_view key, std::size_t& hint) const;

  /// True when a key starts with "_", as those do that mean something to the archive format.
  [[nodiscard]] bool isMarked() const noexcept { return isMarked_; }

  /// The keys without repetitions, and for each of them its member.
  [[nodiscard]] const Ref<DictionaryKeys>& distinctKeys() const noexcept { return distinct_; }
  [[nodiscard]] std::size_t memberOfDistinctKey(std::size_t index) const noexcept {
    return members_.empty() ? index : members_[index];
  }

 private:
  std::vector<Ref<String>> keys_;
  Ref<DictionaryKeys> distinct_;
  bool isMarked_ = false;
  std::vector<std::uint32_t> members_;  // empty when no key repeats: then they are the indexes
};

/// Finds the shape of an object again, and gives equal keys of all shapes one string.
///
/// Bounds: at most kMostShapes shapes and kMostKeys keys are remembered, and none of an object of
/// more than kWidest members, so that hostile text cannot make it hold many times its own size.
class JSONShapes {
 public:
  [[nodiscard]] Ref<JSONShape> shapeOf(std::span<const std::string_view> keys);

 private:
  static constexpr std::size_t kMostShapes = 4096;
  static constexpr std::size_t kMostKeys = 16384;
  static constexpr std::size_t kWidest = 64;

  /// By a secret, for texts choose their keys. Not noexcept, so that the table keeps the hashes.
  struct HashOfKey {
    std::size_t operator()(std::string_view text) const { return String::hashOf(text); }
  };

  [[nodiscard]] Ref<String> keyOf(std::string_view text);

  const std::size_t seed_ = String::hashOf({});
  std::unordered_map<std::size_t, Ref<JSONShape>> shapes_;             // by the hash of their keys
  std::unordered_map<std::string_view, Ref<String>, HashOfKey> keys_;  // by the string's own text
};

}  // namespace tq::detail
