#pragma once

/// @file DictionaryKeys.h
/// Keys of dictionaries. Dictionaries with the same keys can share them.

#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include <TQFoundation/objects/Object.h>
#include <TQFoundation/objects/Ref.h>
#include <TQFoundation/objects/detail/HashIndex.h>

namespace tq::detail {

/// Distinct keys in order. They are hashed as soon as there are more than kSearched. Only an owner
/// that does not share them may change them.
///
/// The hash of a key is kept: a key is hashed once, and removing and copying call no key.
class DictionaryKeys final : public Object {
 public:
  DictionaryKeys() noexcept = default;

  /// Returns other keys that are equal to these.
  [[nodiscard]] Ref<DictionaryKeys> duplicate() const;

  [[nodiscard]] std::span<const Ref<Object>> keys() const noexcept { return keys_; }
  [[nodiscard]] std::size_t count() const noexcept { return keys_.size(); }

  [[nodiscard]] std::optional<std::size_t> find(const Object& key) const;
  [[nodiscard]] std::optional<std::size_t> find(std::string_view key) const;

  /// Appends a key that is not in it yet. Strong guarantee, also if a hash() throws.
  void append(Ref<Object> key);

  /// Removes the key at `index`. Later keys move forward. Allocates nothing.
  void removeAt(std::size_t index) noexcept;

 private:
  static constexpr std::size_t kSearched = 8;

  struct Hashed {
    /// Adds the hash of the next key. Strong guarantee.
    void add(std::size_t hash);
    void fillIndex() noexcept;

    std::vector<std::size_t> hashes;
    HashIndex index;
  };

  std::vector<Ref<Object>> keys_;
  std::unique_ptr<Hashed> hashed_;  // null while keys are searched linearly
};

}  // namespace tq::detail
