#pragma once

/// @file Dictionary.h
/// Objects found by a key, in the order they were put in.

#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

namespace detail {
struct Construction;
class DictionaryKeys;
}  // namespace detail

/// An immutable dictionary. Keeps the order in which entries were given; finds keys by equality, so
/// that true, 1 and 1.0 are one key. Holds keys (copied, see Object::copy) and values strongly;
/// neither is none.
///
/// Cost: up to 8 keys are searched one by one, more are hashed. Dictionaries read from one archive
/// that have the same keys share one set of them, and then cost 8 bytes an entry.
/// Threads: any; a MutableDictionary one at a time.
class TQ_EXPORT Dictionary : public Subclass<Dictionary> {
 public:
  static constexpr std::string_view className = "Dictionary";
  static constexpr std::string_view codingName = "NSDictionary";

  /// A key and its value, lent by the dictionary.
  struct Entry {
    /// Equal to no other key of the dictionary.
    Object& key;
    Object& value;  ///< never none
  };

  /// Goes over the entries in their order.
  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = Entry;
    using difference_type = std::ptrdiff_t;
    using reference = Entry;

    Iterator() noexcept = default;
    /// At a key and the value that goes with it.
    Iterator(const Ref<Object>* key, const Ref<Object>* value) noexcept
        : key_(key), value_(value) {}

    reference operator*() const noexcept { return {**key_, **value_}; }
    Iterator& operator++() noexcept { return ++key_, ++value_, *this; }
    Iterator operator++(int) noexcept { return {key_++, value_++}; }
    friend bool operator==(Iterator a, Iterator b) noexcept { return a.key_ == b.key_; }

   private:
    const Ref<Object>* key_ = nullptr;
    const Ref<Object>* value_ = nullptr;
  };

  /// A dictionary without entries.
  [[nodiscard]] static Ref<Dictionary> dictionary();
  /// A key that comes again replaces the value and keeps its place.
  /// @throws Exception (InvalidArgumentException) when a key or a value is none
  [[nodiscard]] static Ref<Dictionary> dictionaryWithEntries(
      std::span<const std::pair<Ref<Object>, Ref<Object>>> entries);
  [[nodiscard]] static Ref<Dictionary> dictionaryWithEntries(
      std::initializer_list<std::pair<std::string_view, Ref<Object>>> entries);

  /// Every member of the object being decoded, each decoded; those that decode to none are left
  /// out.
  [[nodiscard]] static Ref<Dictionary> initWithJSONDecoder(TQJSONDecoder& decoder);

  ~Dictionary() override;

  [[nodiscard]] std::size_t count() const noexcept;

  /// The value of an equal key, lent; null when there is none.
  [[nodiscard]] Object* objectForKey(const Object& key) const;
  /// The value of a string key of this text, without making a string.
  [[nodiscard]] Object* objectForKey(std::string_view key) const;

  /// In insertion order, the key and the value of an entry at one index. Lent; good while the
  /// dictionary lives and, if it is mutable, stays as it is.
  [[nodiscard]] std::span<const Ref<Object>> keys() const noexcept;
  [[nodiscard]] std::span<const Ref<Object>> values() const noexcept { return {values_, count()}; }
  [[nodiscard]] Iterator begin() const noexcept { return {keys().data(), values_}; }
  [[nodiscard]] Iterator end() const noexcept {
    return {keys().data() + count(), values_ + count()};
  }

  /// Same keys with equal values, in any order, fixed or mutable.
  [[nodiscard]] bool isEqual(const Object& other) const override;
  /// Of all entries, of containers among them the count alone. Cost: linear.
  [[nodiscard]] std::size_t hash() const override;
  /// "{key = value; …}", 32 levels deep at the most.
  [[nodiscard]] std::string description() const override;

 protected:
  /// A dictionary that its maker fills.
  explicit Dictionary(Ref<detail::DictionaryKeys> keys) noexcept;

  /// The keys, which dictionaries of one archive may share.
  Ref<detail::DictionaryKeys> keys_;
  /// The values by their keys' indices; null when there are none.
  const Ref<Object>* values_ = nullptr;

 private:
  friend struct detail::Construction;
  friend class MutableDictionary;

  /// A fixed dictionary over these keys, whose values are none until the maker has filled them in.
  [[nodiscard]] static Ref<Dictionary> makeUnfilled(Ref<detail::DictionaryKeys> keys);
  [[nodiscard]] std::span<Ref<Object>> slots() noexcept;
};

/// A dictionary that can change. Threads: one at a time; never while it is being gone over.
class TQ_EXPORT MutableDictionary final : public Subclass<MutableDictionary, Dictionary> {
 public:
  static constexpr std::string_view className = "MutableDictionary";
  static constexpr std::string_view codingName = "NSMutableDictionary";

  /// A dictionary without entries.
  [[nodiscard]] static Ref<MutableDictionary> dictionary();
  /// A growable dictionary of the same entries; keys and values are shared.
  [[nodiscard]] static Ref<MutableDictionary> dictionaryWithDictionary(const Dictionary& other);

  /// Replaces the value of an equal key, or puts a new entry last.
  /// @throws Exception (InvalidArgumentException) when either is none
  void setObject(Ref<Object> value, Ref<Object> forKey);
  void setObject(Ref<Object> value, std::string_view forKey);

  /// An absent key is no fault. Cost: linear, since the others keep their order.
  void removeObjectForKey(const Object& key);
  /// Drops every entry.
  void removeAllObjects();

  /// A fixed dictionary of the same entries.
  [[nodiscard]] Ref<Object> copy() const override;

 private:
  MutableDictionary();

  std::vector<Ref<Object>> held_;
};

}  // namespace tq
