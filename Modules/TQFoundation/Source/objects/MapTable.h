#pragma once

/// @file MapTable.h
/// A table whose keys may be held weakly.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Weak.h>
#include <TQFoundation/objects/detail/HashIndex.h>

namespace tq {

/// Objects found by a key that is held weakly or strongly. An entry whose weak key has gone cannot
/// be found, counted or enumerated any more; its value goes with the next change of the table or
/// purge(). Values are held strongly.
///
/// Threads: one at a time; objectForKey() also several at once while nothing changes.
/// Order:   entries are in the order in which their keys were first set.
class TQ_EXPORT MapTable final : public Subclass<MapTable> {
 public:
  static constexpr std::string_view className = "MapTable";

  /// How keys are held.
  enum class Keys : std::uint8_t { weak, strong };
  /// How keys are told apart: by isEqual(), or as the same object.
  enum class Matching : std::uint8_t { equality, identity };

  /// A key and its value, both held strongly by the copy.
  struct Entry {
    Ref<Object> key;    ///< none where it was taken out of a table with weak keys
    Ref<Object> value;  ///< never none
  };
  /// Entries that a call has taken out, for the caller to drop where destructors may run.
  using Removed = std::vector<Entry>;

  /// An empty table.
  [[nodiscard]] static Ref<MapTable> mapTable(Keys keys, Matching matching = Matching::equality);
  /// An empty table, compared by equality, that holds its keys weakly.
  [[nodiscard]] static Ref<MapTable> weakToStrongObjectsMapTable() { return mapTable(Keys::weak); }
  /// The same, holding its keys strongly.
  [[nodiscard]] static Ref<MapTable> strongToStrongObjectsMapTable() {
    return mapTable(Keys::strong);
  }

  /// Entries whose keys live. Linear when weakly held objects have gone since the last purge.
  [[nodiscard]] std::size_t count() const;

  /// Lent; null when there is none.
  [[nodiscard]] Object* objectForKey(const Object& key) const;
  /// Replaces the value and keeps the first key; a null value removes the entry.
  /// @return what was displaced, and all whose keys have gone
  Removed setObject(Ref<Object> value, Object& forKey);
  /// An absent key is no fault.
  /// @return what was taken out, and all whose keys have gone
  Removed removeObjectForKey(const Object& key);
  /// @return every entry
  Removed removeAllObjects();
  /// Takes out the entries whose keys have gone. Linear, but nothing when no weakly held object
  /// has.
  Removed purge();

  /// objectForKey(), setObject(): the forms that subscripts are written with.
  [[nodiscard]] Object* objectForKeyedSubscript(const Object& key) const {
    return objectForKey(key);
  }
  void setObjectForKeyedSubscript(Ref<Object> value, Object& key) {
    setObject(std::move(value), key);
  }

  /// All living entries at this moment.
  [[nodiscard]] std::vector<Entry> entries() const;

  /// Calls the block for each entry until it sets `stop`. An empty block does nothing. The block
  /// may change the table: the walk goes over the entries as they were at its start.
  void enumerateKeysAndObjectsUsingBlock(
      const std::function<void(Object& key, Object& object, bool& stop)>& block) const;
  void enumerateKeysUsingBlock(const std::function<void(Object& key, bool& stop)>& block) const;
  void enumerateObjectsUsingBlock(
      const std::function<void(Object& object, bool& stop)>& block) const;

  /// A copy with the entries for which the block answers true.
  [[nodiscard]] Ref<MapTable> filter(
      const std::function<bool(Object& key, Object& object)>& block) const;

 private:
  /// A key under its hash, held either way, and its value; an entry that was taken out has none.
  struct Slot {
    std::size_t hash;
    Weak<Object> weakKey;
    Ref<Object> strongKey;
    Ref<Object> value;
  };

  MapTable(Keys keys, Matching matching) noexcept : keys_(keys), matching_(matching) {}

  [[nodiscard]] std::size_t hashOf(const Object& key) const;
  [[nodiscard]] bool matches(const Slot& slot, const Object& key) const;
  [[nodiscard]] std::optional<std::size_t> find(std::size_t hash, const Object& key) const;
  [[nodiscard]] Entry takeOut(Slot& slot) noexcept;
  void makeRoom();

  const Keys keys_;
  const Matching matching_;
  std::uint64_t lossesSeen_ = 0;
  std::size_t count_ = 0;  // slots with a value
  std::vector<Slot> slots_;
  detail::HashIndex index_;
};

}  // namespace tq
