#pragma once

/// @file BreakpointTable.h
/// Values that hold from one breakpoint to the next.

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <utility>
#include <vector>

namespace tq {

/// An ordered list of (breakpoint, value) entries, looked up by the first breakpoint that matches.
/// It only grows: storing under a key that is there puts a second entry before the first, which
/// then wins. A value; lookup and store walk the entries from the first.
template <class Key, class Value>
class BreakpointTable {
 public:
  /// Whether `key`, which is looked up or stored, matches `breakpoint`, which is an entry's.
  /// Whatever it answers is obeyed.
  using Predicate = std::function<bool(const Key& key, const Key& breakpoint)>;

  /// An empty table, whose lookups give the default.
  BreakpointTable(Value defaultValue, Predicate matchesBreakpoint)
      : defaultValue_(std::move(defaultValue)), matchesBreakpoint_(std::move(matchesBreakpoint)) {}

  /// Stores the pairs in their order, from each key upwards: a lookup gives the value of the
  /// greatest breakpoint that is not above the key, and 0 below the least.
  BreakpointTable(std::initializer_list<std::pair<Key, Value>> pairs) requires
      std::totally_ordered<Key> && std::constructible_from<Value, int>
      : BreakpointTable(Value(0),
                        [](const Key& key, const Key& breakpoint) { return key >= breakpoint; }) {
    for (const auto& [key, value] : pairs) store(key, value);
  }

  /// What a lookup gives when no entry matches.
  [[nodiscard]] const Value& defaultValue() const noexcept { return defaultValue_; }
  /// Entries stored so far, hidden ones included.
  [[nodiscard]] std::size_t entryCount() const noexcept { return entries_.size(); }

  /// The value of the first entry that `key` matches, or the default.
  [[nodiscard]] const Value& lookUp(const Key& key) const {
    const auto entry = firstMatch(key);
    return entry == entries_.end() ? defaultValue_ : entry->value;
  }

  /// Puts a new entry before the first one that `key` matches, or at the end.
  void store(Key key, Value value) {
    const auto before = firstMatch(key);
    entries_.insert(before, Entry{std::move(key), std::move(value)});
  }

  /// A lookup, and an assignment that stores. `table[key] += 2` looks up, adds, and stores the sum
  /// under the same key.
  class Slot {
   public:
    /// Of a table that must outlive it.
    Slot(BreakpointTable& table, Key key) : table_(table), key_(std::move(key)) {}
    /// A lookup, at this moment.
    operator const Value&() const { return table_.lookUp(key_); }  // NOLINT: reads as the value

    /// Stores the value.
    Slot& operator=(Value value) {
      table_.store(key_, std::move(value));
      return *this;
    }
    /// Looks up, has `change` work on the value, and stores it.
    template <class Change>
    Slot& modify(Change change) {
      Value value = table_.lookUp(key_);
      change(value);
      return *this = std::move(value);
    }
    /// The same for an operator.
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
    Slot(const Slot&) = delete;
    /// Stores what the other slot reads.
    Slot& operator=(const Slot& other) { return *this = Value(other); }

   private:
    BreakpointTable& table_;
    Key key_;
  };

  /// A slot for reading and storing under the key, or a lookup alone.
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
