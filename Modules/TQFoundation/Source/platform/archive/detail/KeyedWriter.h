#pragma once

/// @file KeyedWriter.h
/// Writes keyed archives.

#include <cstdint>
#include <exception>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <TQFoundation/objects/ChangeWatch.h>
#include <TQFoundation/objects/Hash.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/platform/archive/KeyedArchiver.h>
#include <TQFoundation/platform/archive/detail/BinaryPropertyList.h>

namespace tq {

/// Numbers objects in the order in which they are found. The objects that a record refers to come
/// before the record of its class, as on the platform.
class KeyedArchiver::Writer {
 public:
  using Node = detail::BinaryPropertyListWriter::Node;
  using UID = std::uint64_t;

  Ref<Data> archive(const Object& root);

  /// Returns the UID of an object; writes the object the first time.
  UID encode(const Object& object);
  UID encode(NumberValue number);

  Node reference(UID uid);

  /// Adds a host's value under its key. If this throws, the archive may be incomplete: it is not
  /// changed again, and later calls throw the same exception even if the host caught it.
  template <class MakeNode>
  void putForHost(std::string_view key, MakeNode&& makeNode);

  /// Adds a member to the record that is being written.
  void put(std::string_view key, Node value) { record_->emplace_back(keyNode(key), value); }
  void putObject(std::string_view key, const Object& object) {
    put(key, reference(encode(object)));
  }
  /// Adds a text that belongs to the object but is not an object. In the archive it becomes a
  /// string.
  /// @param what  names the text in the exception for one that is not UTF-8
  void putText(std::string_view key, std::string_view text, std::string_view what);
  /// Adds an array of the objects of a container, which the hosts among them may change and so make
  /// it fail.
  /// @param compared  whether a reader compares them: keys, and members of sets
  void putElements(std::string_view key, std::span<const Ref<Object>> objects, bool compared,
                   detail::ChangeWatch container = {});
  void putNumbers(std::string_view key, std::span<const NumberValue> numbers);

  /// Whether the objects that the record refers to may refer back to the object being written.
  /// A reader can resolve that only for objects that it creates before their contents.
  void allowReferencesBack(bool areAllowed) noexcept {
    object_->state = areAllowed ? State::open : State::hidden;
  }

  detail::BinaryPropertyListWriter list;

 private:
  using Record = std::vector<std::pair<Node, Node>>;

  enum class State : std::uint8_t {
    open,    // being written; the objects in it may refer to it
    hidden,  // being written; they may not
    written,
  };
  struct Known {
    Ref<Object> object;  // keeps the address from being used by another object
    UID uid = 0;
    int hostsAbove = 0;
    State state = State::open;
  };
  /// The document chooses the numbers; hostile ones could be chosen to collide.
  struct HashOfBits {
    std::size_t operator()(std::uint64_t bits) const noexcept { return detail::hashOfWord(bits); }
  };

  UID reserve();
  Node keyNode(std::string_view key);
  UID classUID(const Class& record);
  Node write(const Object& object, Known& known);
  template <class WriteMembers>
  Node writeRecord(const Object& object, Known& known, WriteMembers&& writeMembers);
  void requireHostInCycle(const Known& known) const;
  void requireNoFailure() const {
    if (failure_) std::rethrow_exception(failure_);
  }

  std::vector<Node> objects_;  // by UID
  std::vector<Node> uids_;     // by UID: the node of the UID itself, or kUnset
  std::unordered_map<const Object*, Known> known_;
  // From bits to UID, one map for each kind of number that the format distinguishes.
  std::unordered_map<std::uint64_t, UID, HashOfBits> numbers_[5];
  std::unordered_map<const Class*, UID> classes_;
  std::unordered_map<std::string, Node> keys_;
  Record* record_ = nullptr;  // of the object being written
  Known* object_ = nullptr;   // the object being written
  int depth_ = 0;
  int hosts_ = 0;  // number of host objects among those being written
  std::exception_ptr failure_;

  static constexpr Node kUnset = ~Node{0};
};

}  // namespace tq
