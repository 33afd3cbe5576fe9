#pragma once

/// @file KeyedReader.h
/// What reads keyed archives.

#include <cstdint>
#include <exception>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/DictionaryKeys.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/platform/archive/KeyedUnarchiver.h>
#include <TQFoundation/platform/archive/detail/BinaryPropertyList.h>

namespace tq {

namespace detail::keyed {

using Node = BinaryPropertyListReader::Node;
using Kind = BinaryPropertyListReader::Kind;
using UID = std::uint64_t;

}  // namespace detail::keyed

/// Makes objects as they are asked for, each once. Every strong reference leads to an object that
/// was finished before, so what comes out holds no cycle of them.
class KeyedUnarchiver::Reader {
 public:
  using Node = detail::keyed::Node;
  using UID = detail::keyed::UID;

  explicit Reader(detail::BinaryPropertyListReader list) noexcept : list_(list) {}

  Ref<Object> readRoot();

  /// The member of the object being read; none once the archive has turned out to be bad.
  [[nodiscard]] std::optional<Node> member(std::string_view key);
  Ref<Object> object(const std::optional<Node>& reference, bool evenUnfinished = false);
  [[nodiscard]] NumberValue number(std::string_view key);

 private:
  enum class State : std::uint8_t { unread, open, read };
  struct Slot {
    Ref<Object> object;  // while open: what may be referred to already
    State state = State::unread;
  };
  Ref<Object> fail() noexcept;
  std::optional<Node> record(const std::optional<Node>& node);
  std::optional<Node> value(const Node& record, std::string_view key);
  Ref<Object> resolve(UID uid, bool evenUnfinished);
  Ref<Object> make(Slot& slot, UID uid);
  Ref<Object> makeFromRecord(Slot& slot, const Node& node);
  const Class* classAt(const std::optional<Node>& reference);

  Ref<Object> makeHost(Slot& slot, const Class& record);

  // The records of the library's own classes.
  Ref<Object> makeString();
  Ref<Object> makeData(const Class& record);
  Ref<Object> makeArray(Slot& slot);
  Ref<Object> makeMutableArray(Slot& slot);
  Ref<Object> makeDictionary(Slot& slot, const Class& record);
  Ref<Object> makeSet();
  Ref<Object> makeDate();
  Ref<Object> makeValue();
  Ref<Object> makeOtherValue();
  Ref<Object> makeError();
  Ref<Object> makeUUID();
  Ref<Object> makeURL();

  std::optional<std::vector<UID>> uids(std::string_view key);
  Ref<Array> packedArray(const std::vector<UID>& uids);
  Ref<detail::DictionaryKeys> distinct(const std::vector<UID>& uids, bool copied);
  Ref<String> text(std::string_view key);

  detail::BinaryPropertyListReader list_;
  Node objects_{};
  std::vector<Slot> slots_;  // by UID
  std::unordered_map<UID, const Class*> classes_;
  const Node* record_ = nullptr;  // of the object being read; not to be used after a failure
  int depth_ = 0;
  bool failed_ = false;
  std::exception_ptr thrown_;  // by an initWithCoder, or for want of memory
};

}  // namespace tq
