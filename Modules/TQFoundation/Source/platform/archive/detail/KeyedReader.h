#pragma once

/// @file KeyedReader.h
/// Reads keyed archives.

#include <cstdint>
#include <exception>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/DictionaryKeys.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/ReadingLimits.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/platform/archive/KeyedUnarchiver.h>
#include <TQFoundation/platform/archive/detail/BinaryPropertyList.h>

namespace tq {

/// Creates objects when they are referred to, each once. A strong reference leads only to a
/// complete object, so the result contains no cycle of strong references.
class KeyedUnarchiver::Reader {
 public:
  using Node = detail::BinaryPropertyListReader::Node;
  using Kind = detail::BinaryPropertyListReader::Kind;
  using UID = std::uint64_t;

  Reader(detail::BinaryPropertyListReader list, std::size_t byteCount, const ReadingLimits& limits,
         const ClassFilter& mayInstantiate, UnreadContent* unread) noexcept;

  Ref<Object> readRoot();
  /// Returns the limit that was exceeded, if any.
  [[nodiscard]] std::optional<ReadingLimit> exceeded() const noexcept {
    if (!exceeded_ && list_.isExhausted()) return ReadingLimit::unfoldedPerByte;
    return exceeded_;
  }

  // Members of the record that is being read. After a failure each returns the same as for an
  // absent key: null, 0 or an empty result.

  [[nodiscard]] std::optional<Node> member(std::string_view key);
  [[nodiscard]] NumberValue number(std::string_view key);
  [[nodiscard]] std::optional<std::span<const std::byte>> bytes(std::string_view key);
  /// Returns a text that the caller copies or parses, at the price of its length.
  [[nodiscard]] Ref<String> text(std::string_view key);
  Ref<Object> object(const std::optional<Node>& reference, bool evenUnfinished = false);
  /// Returns the UIDs of an array; nullopt if one of them is null or out of range.
  [[nodiscard]] std::optional<std::vector<UID>> uids(std::string_view key);

  // Containers. Each returns null for an invalid record.

  Ref<Object> readArray();
  Ref<Object> readMutableArray();
  Ref<Object> readDictionary();
  Ref<Object> readMutableDictionary();
  /// Returns objects of which no two are equal. Containers are refused: comparing containers from
  /// outside can take unlimited time.
  /// @param copied  for keys of dictionaries, which must never change
  Ref<detail::DictionaryKeys> distinct(const std::vector<UID>& uids, bool copied);

  /// Pays for work that is proportional to `byteCount` bytes; see BinaryPropertyListReader::pay().
  [[nodiscard]] bool pay(std::size_t byteCount) noexcept { return list_.pay(byteCount); }

 private:
  using Keys = Ref<detail::DictionaryKeys>;

  enum class State : std::uint8_t { unread, open, read };
  struct Slot {
    Ref<Object> object;               // while open: the object that weak references get
    std::uint64_t unfolded : 56 = 0;  // when read: what it unfolds to, see unfold()
    State state : 8 = State::unread;
  };

  static_assert(sizeof(Slot) == 16);

  Ref<Object> fail() noexcept;
  Ref<Object> fail(ReadingLimit limit) noexcept;
  /// Adds to what the object being read unfolds to: values, and bytes of text and data. Returns
  /// false if the limit is exceeded.
  [[nodiscard]] bool unfold(std::uint64_t amount) noexcept;
  std::optional<Node> record(const std::optional<Node>& node);
  std::optional<std::uint64_t> indexOf(const Node& record, std::string_view key);
  std::optional<Node> valueAt(const Node& record, std::uint64_t index);
  std::optional<Node> value(const Node& record, std::string_view key);
  Ref<Object> resolve(UID uid, bool evenUnfinished);
  Ref<Object> make(Slot& slot, UID uid);
  Ref<Object> makeFromRecord(Slot& slot, const Node& node);
  Ref<Object> makeHost(const Class& hostClass);
  void reportUnasked(const Class& hostClass, const std::vector<bool>& asked);
  const Class* classAt(const std::optional<Node>& reference);
  Ref<Array> packedArray(const std::vector<UID>& uids);
  std::optional<std::pair<Keys, std::vector<UID>>> entries();

  detail::BinaryPropertyListReader list_;
  const ClassFilter& mayInstantiate_;
  UnreadContent* const unread_;
  Node objects_{};
  std::vector<Slot> slots_;  // by UID
  std::unordered_map<UID, const Class*> classes_;
  const Node* record_ = nullptr;  // of the object being read; must not be used after a failure
  Slot* slot_ = nullptr;          // of the object being read
  // The members that the host object being read has asked for, by index; null without unread_, and
  // for other objects. Must not be used after a failure.
  std::vector<bool>* asked_ = nullptr;
  std::uint64_t unfolded_ = 0;  // what the object being read unfolds to, so far
  const std::uint64_t mostUnfolded_;
  const std::uint64_t mostValues_;
  const int mostDepth_;
  int depth_ = 0;
  bool failed_ = false;
  std::optional<ReadingLimit> exceeded_;
  std::exception_ptr thrown_;  // by an initWithCoder, or because memory is exhausted
};

}  // namespace tq
