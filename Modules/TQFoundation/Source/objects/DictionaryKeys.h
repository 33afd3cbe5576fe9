#pragma once

/// @file DictionaryKeys.h
/// The keys of a dictionary, which dictionaries with the same keys share.

#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include <TQFoundation/objects/Object.h>
#include <TQFoundation/objects/Ref.h>
#include <TQFoundation/objects/detail/HashIndex.h>

namespace tq::detail {

/// Distinct keys in order, with an index over them once there have been more than a search is good
/// for.
/// Changed only by an owner that has it to itself.
class DictionaryKeys final : public Object {
 public:
  DictionaryKeys() noexcept = default;

  [[nodiscard]] std::span<const Ref<Object>> keys() const noexcept { return keys_; }
  [[nodiscard]] std::size_t count() const noexcept { return keys_.size(); }

  [[nodiscard]] std::optional<std::size_t> find(const Object& key) const;
  [[nodiscard]] std::optional<std::size_t> find(std::string_view key) const;

  /// Puts a key last that is not there yet. Strong guarantee.
  void append(Ref<Object> key);

  /// Takes out the key at `index`; those behind it move up. Allocates nothing.
  void removeAt(std::size_t index);

 private:
  static constexpr std::size_t kSearched = 8;

  void fillIndex();

  std::vector<Ref<Object>> keys_;
  HashIndex index_;  // without room while keys are searched for one after the other
};

}  // namespace tq::detail
