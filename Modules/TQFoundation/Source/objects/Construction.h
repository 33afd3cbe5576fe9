#pragma once

/// @file Construction.h
/// Construction of containers and strings for readers of archives, without copies and checks, and
/// their inside for comparisons.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>

#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/DictionaryKeys.h>
#include <TQFoundation/objects/Set.h>
#include <TQFoundation/objects/String.h>

namespace tq::detail {

/// Makes objects whose content the caller fills in afterwards, before another thread sees them.
///
/// An unfilled element is null, which no other code expects: the caller must fill every slot before
/// it passes the object on.
struct Construction {
  /// How an array keeps its elements.
  using Storage = Array::Storage;

  /// A fixed array of `count` null elements, to be filled through slots().
  [[nodiscard]] static Ref<Array> unfilledArray(std::size_t count) {
    return Array::makeUnfilled(count);
  }

  /// A fixed dictionary over these keys, all values null, to be filled through slots().
  [[nodiscard]] static Ref<Dictionary> unfilledDictionary(Ref<DictionaryKeys> keys) {
    return Dictionary::makeUnfilled(std::move(keys));
  }

  /// The elements inside a fixed array. Empty for packed and mutable arrays.
  [[nodiscard]] static std::span<Ref<Object>> slots(Array& array) noexcept { return array.slots(); }

  /// The values inside a fixed dictionary. Empty for mutable dictionaries.
  [[nodiscard]] static std::span<Ref<Object>> slots(Dictionary& dictionary) noexcept {
    return dictionary.slots();
  }

  /// The keys of a dictionary and the members of a set, which are found by index.
  [[nodiscard]] static const DictionaryKeys& keys(const Dictionary& dictionary) noexcept {
    return *dictionary.keys_;
  }
  [[nodiscard]] static const DictionaryKeys& keys(const Set& set) noexcept { return *set.members_; }

  /// A packed array of `count` numbers with indeterminate content. The caller writes all of
  /// packedBits() and, for Storage::numbers, all of packedKinds().
  [[nodiscard]] static Ref<Array> unfilledNumbers(Storage storage, std::size_t count) {
    return Array::makePacked(storage, count);
  }

  /// The payload of a packed array: count() values of NumberValue::bits().
  [[nodiscard]] static std::uint64_t* packedBits(Array& array) noexcept {
    return array.packedBits();
  }

  /// The kinds of a packed array of Storage::numbers: count() of them.
  [[nodiscard]] static NumberKind* packedKinds(Array& array) noexcept {
    return array.packedKinds();
  }

  /// A string of bytes that are known to be well-formed UTF-8; they are not checked again.
  [[nodiscard]] static Ref<String> stringWithCheckedUTF8(std::string_view bytes) {
    return String::make(bytes, String::kWellFormed);
  }
};

}  // namespace tq::detail
