#pragma once

/// @file Dictionary.h
/// Dictionaries, fixed and growable, in insertion order.

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/ChangeWatch.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

namespace detail {
struct Construction;
class DictionaryKeys;
}  // namespace detail

/// An immutable dictionary in insertion order. Keys are compared with isEqual(), so true, 1 and 1.0
/// are the same key. It retains copies of the keys (see Object::copy) and the values; neither is
/// null.
///
/// Cost: up to 8 keys are searched linearly, more are hashed. Dictionaries of one archive with the
/// same keys share these keys and then need 8 bytes per entry.
/// Threads: any. MutableDictionary: one at a time.
class TQ_EXPORT Dictionary : public Subclass<Dictionary> {
 public:
  static constexpr std::string_view className = "Dictionary";
  static constexpr std::string_view codingName = "NSDictionary";

  /// A key and its value. The dictionary owns them.
  struct Entry {
    /// Differs from all other keys of the dictionary.
    Object& key;
    Object& value;  ///< never null
  };

  /// Iterates over the entries in their order. An entry must not be used after a change of the
  /// dictionary.
  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = Entry;
    using difference_type = std::ptrdiff_t;
    using reference = Entry;

    Iterator() noexcept = default;
    /// Points to a key and its value. `watch` is that of their dictionary.
    Iterator(const Ref<Object>* key, const Ref<Object>* value,
             detail::ChangeWatch watch = {}) noexcept
        : key_(key), value_(value), watch_(watch) {}

    reference operator*() const noexcept { return {**key_, **value_}; }
    /// @throws Exception (GenericException) if the dictionary has changed since begin()
    Iterator& operator++() {
      watch_.requireUnchanged();
      return ++key_, ++value_, *this;
    }
    Iterator operator++(int) {
      const Iterator before = *this;
      ++*this;
      return before;
    }
    friend bool operator==(const Iterator& a, const Iterator& b) noexcept {
      return a.key_ == b.key_;
    }

   private:
    const Ref<Object>* key_ = nullptr;
    const Ref<Object>* value_ = nullptr;
    detail::ChangeWatch watch_;
  };

  /// Returns an empty dictionary.
  [[nodiscard]] static Ref<Dictionary> dictionary();
  /// A repeated key replaces the value and keeps the position of the first one.
  /// @throws Exception (InvalidArgumentException) if a key or a value is null
  [[nodiscard]] static Ref<Dictionary> dictionaryWithEntries(
      std::span<const std::pair<Ref<Object>, Ref<Object>>> entries);
  [[nodiscard]] static Ref<Dictionary> dictionaryWithEntries(
      std::initializer_list<std::pair<std::string_view, Ref<Object>>> entries);

  ~Dictionary() override;

  [[nodiscard]] std::size_t count() const noexcept;

  /// Returns the value of an equal key, or null. The dictionary owns it.
  [[nodiscard]] Object* objectForKey(const Object& key) const;
  /// The same for a key that is a String of this text, without creating a String. Other keys are
  /// not found, even if they equal such a String.
  [[nodiscard]] Object* objectForKey(std::string_view key) const;

  /// The keys and the values in insertion order; an entry has the same index in both. Valid while
  /// the dictionary exists and is not changed.
  [[nodiscard]] std::span<const Ref<Object>> keys() const noexcept;
  [[nodiscard]] std::span<const Ref<Object>> values() const noexcept { return {values_, count()}; }
  [[nodiscard]] Iterator begin() const noexcept {
    return {keys().data(), values_, detail::ChangeWatch(*this)};
  }
  [[nodiscard]] Iterator end() const noexcept {
    return {keys().data() + count(), values_ + count()};
  }

  /// Returns true if both have equal keys with equal values, in any order, fixed or mutable. Depth
  /// and cost: see Array::isEqual().
  [[nodiscard]] bool isEqual(const Object& other) const override;
  /// Combines all entries; containers among them contribute only their count. Cost: linear.
  [[nodiscard]] std::size_t hash() const override;
  /// Returns "{key = value; …}", with the limits of Array::description().
  [[nodiscard]] std::string description() const override;

 protected:
  /// A dictionary that its creator fills.
  explicit Dictionary(Ref<detail::DictionaryKeys> keys, bool isGrowing = false) noexcept;

  /// The keys, which dictionaries of one archive may share.
  Ref<detail::DictionaryKeys> keys_;
  /// The values, at the indices of their keys; null if there are none.
  const Ref<Object>* values_ = nullptr;

 private:
  friend struct detail::Construction;
  friend class detail::ChangeWatch;
  friend class MutableDictionary;

  /// A fixed dictionary of these keys with null values. The creator must fill all of them.
  [[nodiscard]] static Ref<Dictionary> makeUnfilled(Ref<detail::DictionaryKeys> keys);
  [[nodiscard]] std::span<Ref<Object>> slots() noexcept;
  /// The number of changes so far; null for a fixed dictionary.
  [[nodiscard]] const std::uint64_t* changes() const noexcept;
};

/// A growable dictionary. Threads: one at a time. If it changes during iteration, also by a new
/// value for a key, the next step of the iterator throws an Exception (GenericException).
class TQ_EXPORT MutableDictionary final : public Subclass<MutableDictionary, Dictionary> {
 public:
  static constexpr std::string_view className = "MutableDictionary";
  static constexpr std::string_view codingName = "NSMutableDictionary";

  /// Returns an empty dictionary.
  [[nodiscard]] static Ref<MutableDictionary> dictionary();
  /// Creates a dictionary of the same keys and values.
  [[nodiscard]] static Ref<MutableDictionary> dictionaryWithDictionary(const Dictionary& other);

  /// Replaces the value of an equal key, or appends a new entry. A key that is text must be
  /// well-formed UTF-8; other text stops the process.
  /// @throws Exception (InvalidArgumentException) if either is null
  void setObject(Ref<Object> value, Ref<Object> forKey);
  void setObject(Ref<Object> value, std::string_view forKey);

  /// Removes the entry of an equal key, if there is one. Cost: linear, because the order is kept.
  void removeObjectForKey(const Object& key);
  /// Removes all entries.
  void removeAllObjects();

  /// Returns a fixed dictionary of the same entries.
  [[nodiscard]] Ref<Object> copy() const override;

 private:
  friend class Dictionary;

  MutableDictionary();

  std::vector<Ref<Object>> held_;
  std::uint64_t changes_ = 0;
};

inline const std::uint64_t* Dictionary::changes() const noexcept {
  const bool isGrowing = headerDetail() != 0;
  return isGrowing ? &static_cast<const MutableDictionary*>(this)->changes_ : nullptr;
}

inline detail::ChangeWatch::ChangeWatch(const Dictionary& dictionary) noexcept
    : ChangeWatch(dictionary.changes()) {}

}  // namespace tq
