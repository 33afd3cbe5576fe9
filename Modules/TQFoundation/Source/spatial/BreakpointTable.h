#pragma once

/// @file BreakpointTable.h
/// Tables of values that apply from one breakpoint to the next.

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <ranges>
#include <span>
#include <utility>
#include <vector>

namespace tq {

/// An ordered list of (breakpoint, value) entries. A lookup returns the value of the first entry
/// whose breakpoint matches the key. Entries are never removed: storing under an existing key
/// inserts a second entry before the first, and the second then matches first. A value type. Cost:
/// lookup and store are O(n).
template <class Key, class Value>
class BreakpointTable {
 public:
  /// Returns whether `key`, which is looked up or stored, matches the breakpoint of an entry. May
  /// return anything, but must not use the table.
  using Predicate = std::function<bool(const Key& key, const Key& breakpoint)>;

  /// An empty table. Lookups return the default value.
  BreakpointTable(Value defaultValue, Predicate matchesBreakpoint)
      : defaultValue_(std::move(defaultValue)), matchesBreakpoint_(std::move(matchesBreakpoint)) {}

  /// Stores the pairs in their order. A breakpoint matches all keys from it upwards: a lookup
  /// returns the value of the greatest breakpoint that is not above the key, or 0 below the least
  /// breakpoint.
  BreakpointTable(std::initializer_list<std::pair<Key, Value>> pairs) requires
      std::totally_ordered<Key> && std::constructible_from<Value, int>
      : BreakpointTable(std::span(pairs.begin(), pairs.size())) {}

  /// The same for pairs that are known at run time: a vector, a map, a view.
  template <std::ranges::input_range Pairs>
  requires std::totally_ordered<Key> && std::constructible_from<Value, int> &&
      std::convertible_to<std::ranges::range_reference_t<Pairs>, std::pair<Key, Value>>
  explicit BreakpointTable(Pairs&& pairs)
      : BreakpointTable(Value(0),
                        [](const Key& key, const Key& breakpoint) { return key >= breakpoint; }) {
    for (auto&& each : pairs) {
      std::pair<Key, Value> pair(std::forward<decltype(each)>(each));
      store(std::move(pair.first), std::move(pair.second));
    }
  }

  /// The result of a lookup if no entry matches.
  [[nodiscard]] const Value& defaultValue() const noexcept { return defaultValue_; }
  /// The number of entries, including entries that are never matched because an earlier one matches
  /// first.
  [[nodiscard]] std::size_t entryCount() const noexcept { return entries_.size(); }

  /// Returns the value of the first entry that `key` matches, or the default. Valid until the next
  /// store.
  [[nodiscard]] const Value& lookUp(const Key& key) const {
    const auto entry = firstMatch(key);
    return entry == entries_.end() ? defaultValue_ : entry->value;
  }

  /// Inserts a new entry before the first one that `key` matches, or at the end.
  void store(Key key, Value value) {
    const auto before = firstMatch(key);
    entries_.insert(before, Entry{std::move(key), std::move(value)});
  }

  /// The result of operator[] on a mutable table: reading it looks up, assigning to it stores.
  /// `table[key] += 2` looks up, adds, and stores the sum under the same key.
  class Slot {
   public:
    /// The table must outlive the slot.
    Slot(BreakpointTable& table, Key key) : table_(table), key_(std::move(key)) {}
    /// Looks up the key now.
    operator const Value&() const { return table_.lookUp(key_); }  // NOLINT: reads as the value

    /// Stores the value.
    Slot& operator=(Value value) {
      table_.store(key_, std::move(value));
      return *this;
    }
    /// Looks up the value, calls `change` with a copy, and stores the copy.
    template <class Change>
    Slot& modify(Change change) {
      Value value = table_.lookUp(key_);
      change(value);
      return *this = std::move(value);
    }
    /// Like modify(), with an operator.
    Slot& operator+=(const Value& by) {
      return modify([&](Value& value) { value += by; });
    }
    Slot& operator-=(const Value& by) {
      return modify([&](Value& value) { value -= by; });
    }
    Slot& operator*=(const Value& by) {
      return modify([&](Value& value) { value *= by; });
    }
    Slot& operator/=(const Value& by) {
      return modify([&](Value& value) { value /= by; });
    }
    /// Stores the value of the key plus or minus one. The postfix forms return the value before.
    Slot& operator++() {
      return modify([](Value& value) { ++value; });
    }
    Slot& operator--() {
      return modify([](Value& value) { --value; });
    }
    Value operator++(int) {
      Value before = table_.lookUp(key_);
      ++*this;
      return before;
    }
    Value operator--(int) {
      Value before = table_.lookUp(key_);
      --*this;
      return before;
    }
    /// Prints the value of the key.
    template <class Stream>
    friend auto operator<<(Stream& out, const Slot& slot)
        -> decltype(out << std::declval<const Value&>()) {
      return out << static_cast<const Value&>(slot);
    }
    Slot(const Slot&) = delete;
    /// Stores the value that the other slot looks up.
    Slot& operator=(const Slot& other) { return *this = Value(other); }

   private:
    BreakpointTable& table_;
    Key key_;
  };

  /// A slot for reading and storing under the key; for a const table only a lookup.
  [[nodiscard]] Slot operator[](Key key) { return Slot(*this, std::move(key)); }
  [[nodiscard]] const Value& operator[](const Key& key) const { return lookUp(key); }

 private:
  struct Entry {
    Key breakpoint;
    Value value;
  };

  [[nodiscard]] auto firstMatch(const Key& key) const {
    return std::ranges::find_if(
        entries_, [&](const Entry& entry) { return matchesBreakpoint_(key, entry.breakpoint); });
  }

  Value defaultValue_;
  Predicate matchesBreakpoint_;
  std::vector<Entry> entries_;
};

}  // namespace tq
