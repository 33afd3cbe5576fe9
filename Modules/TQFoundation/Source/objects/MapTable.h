#pragma once

/// @file MapTable.h
/// A hash table of objects with weak or strong keys.

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

/// A hash table whose keys are held weakly or strongly. Values are held strongly. An entry whose
/// weak key has been destroyed is no longer found, counted or enumerated. Its value is released by
/// later changes of the table, each of which examines a few entries, or by purge().
///
/// Threads: one at a time. Several threads may call objectForKey() while no thread changes the
///          table.
/// Order:   entries are in the order in which their keys were first set.
class TQ_EXPORT MapTable final : public Subclass<MapTable> {
 public:
  static constexpr std::string_view className = "MapTable";
  ~MapTable() override;

  /// How keys are held.
  enum class Keys : std::uint8_t { weak, strong };
  /// How keys are compared: by isEqual(), or by identity.
  enum class Matching : std::uint8_t { equality, identity };

  /// A key and its value, both held strongly by the copy.
  struct Entry {
    Ref<Object> key;    ///< null for a replaced value, and if the table's keys are weak
    Ref<Object> value;  ///< never null
  };
  /// Entries that a call has removed. The caller releases them where destructors may run.
  using Removed = std::vector<Entry>;

  /// Creates an empty table.
  [[nodiscard]] static Ref<MapTable> mapTable(Keys keys, Matching matching = Matching::equality);
  /// Creates an empty table with weak keys, which are compared by equality.
  [[nodiscard]] static Ref<MapTable> weakToStrongObjectsMapTable() { return mapTable(Keys::weak); }
  /// Creates an empty table with strong keys, which are compared by equality.
  [[nodiscard]] static Ref<MapTable> strongToStrongObjectsMapTable() {
    return mapTable(Keys::strong);
  }

  /// Returns the number of entries whose keys are alive. O(1), but O(n) if any weakly held object
  /// of the process has been destroyed since the last purge.
  [[nodiscard]] std::size_t count() const;

  /// Returns the value of the key, or null. The table owns it. With weak keys that are compared by
  /// equality, it may be the last to release a key that another thread released meanwhile.
  [[nodiscard]] Object* objectForKey(const Object& key) const;
  /// Sets the value of the key. If an equal key is in the table, that key stays. A null value
  /// removes the entry.
  /// @return the replaced or removed entry, and the result of purgeSome()
  Removed setObject(Ref<Object> value, Object& forKey);
  /// Removes the entry of the key, if there is one.
  /// @return the removed entry, and the result of purgeSome()
  Removed removeObjectForKey(const Object& key);
  /// Removes all entries and returns them.
  Removed removeAllObjects();
  /// Removes the entries whose keys have been destroyed and returns them. O(n), but O(1) if no
  /// weakly held object of the process has been destroyed since the last purge.
  Removed purge();
  /// Examines the next few entries in turn, and removes and returns those whose keys have been
  /// destroyed. O(1). A table that calls it for each change holds at most about half as many
  /// entries of destroyed keys as it held entries when they were destroyed.
  Removed purgeSome();

  /// The same as objectForKey() and setObject().
  [[nodiscard]] Object* objectForKeyedSubscript(const Object& key) const {
    return objectForKey(key);
  }
  void setObjectForKeyedSubscript(Ref<Object> value, Object& key) {
    setObject(std::move(value), key);
  }

  /// Returns the entries whose keys are alive.
  [[nodiscard]] std::vector<Entry> entries() const;

  /// Call the block for each entry until it sets `stop`. An empty block does nothing. The block may
  /// change the table: the enumeration visits the entries as they were at its start.
  void enumerateKeysAndObjectsUsingBlock(
      const std::function<void(Object& key, Object& object, bool& stop)>& block) const;
  void enumerateKeysUsingBlock(const std::function<void(Object& key, bool& stop)>& block) const;
  void enumerateObjectsUsingBlock(
      const std::function<void(Object& object, bool& stop)>& block) const;

  /// Returns a new table with the entries for which the block returns true.
  [[nodiscard]] Ref<MapTable> filter(
      const std::function<bool(Object& key, Object& object)>& block) const;

 private:
  /// A key with its hash, held either way, and its value. A removed entry has a null value.
  struct Slot {
    std::size_t hash;
    Weak<Object> weakKey;
    Ref<Object> strongKey;
    Ref<Object> value;
  };

  MapTable(Keys keys, Matching matching) noexcept : keys_(keys), matching_(matching) {}

  [[nodiscard]] std::size_t hashOf(const Object& key) const;
  [[nodiscard]] bool matches(const Slot& slot, const Object& key) const;
  [[nodiscard]] static bool hasEqualKey(const Slot& slot, const Object& key);
  [[nodiscard]] std::optional<std::size_t> find(std::size_t hash, const Object& key) const;
  [[nodiscard]] Entry takeOut(Slot& slot) noexcept;
  void makeRoom();

  const Keys keys_;
  const Matching matching_;
  std::uint64_t lossesSeen_ = 0;   // every key that was lost by then has been removed
  std::uint64_t sweepLosses_ = 0;  // the losses when the running sweep began
  std::size_t sweepPosition_ = 0;  // the slot that the sweep examines next
  std::size_t count_ = 0;          // slots with a value
  std::vector<Slot> slots_;
  detail::HashIndex index_;
};

}  // namespace tq
