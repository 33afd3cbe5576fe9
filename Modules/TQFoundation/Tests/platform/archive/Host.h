#pragma once

#include <TQFoundation/platform/archive/KeyedArchiver.h>
#include <TQFoundation/platform/archive/KeyedUnarchiver.h>

#include "support/Objects.h"
#include "support/Test.h"

namespace tq::test {

/// A host class with keyed coding: a tree whose nodes know their parent. A node with the name
/// "forgiving" continues if its content throws.
struct Host final : Subclass<Host> {
  static constexpr std::string_view className = "tq::test::Host";
  static constexpr std::string_view codingName = "Host";

  Host() = default;

  void encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeObject(String::of(name), "name");
    try {
      coder.encodeObject(content, "content");
    } catch (...) {
      if (name != "forgiving") throw;
    }
    const Ref<Object> held = back.lock();
    coder.encodeObject(held, "back");
    coder.encodeBool(flag, "flag");
    coder.encodeInteger(integer, "integer");
    coder.encodeFloat(single, "single");
    coder.encodeDouble(number, "$number");
    coder.encodeBytes(std::as_bytes(std::span(name)), "bytes");
  }

  bool initWithCoder(KeyedUnarchiver& coder) {
    const Ref<String> text = coder.decodeObjectOfClass<String>("name");
    if (!text) return false;
    name = text->view();
    try {
      content = coder.decodeObjectForKey("content");
    } catch (...) {
      if (name != "forgiving") throw;
    }
    back = coder.decodeWeakObjectForKey<Object>("back");
    flag = coder.decodeBoolForKey("flag");
    integer = coder.decodeIntegerForKey("integer");
    single = coder.decodeFloatForKey("single");
    number = coder.decodeDoubleForKey("$number");
    const std::span<const std::byte> read = coder.decodeBytesForKey("bytes");
    bytes.assign(reinterpret_cast<const char*>(read.data()), read.size());
    knowsAbsentKeys = !coder.containsValueForKey("absent") &&
                      coder.containsValueForKey("$number") && !coder.decodeObjectForKey("absent") &&
                      !coder.decodeBoolForKey("absent") && coder.decodeDoubleForKey("absent") == 0;
    return true;
  }

  std::string name;
  Ref<Object> content;
  Weak<Object> back;
  bool flag = false;
  std::int64_t integer = 0;
  float single = 0;
  double number = 0;
  std::string bytes;
  bool knowsAbsentKeys = false;
};

inline Ref<Host> makeHost(std::string_view name, Ref<Object> content = nullptr) {
  Class::registerClass<Host>();
  Ref<Host> host = makeRef<Host>();
  host->name = name;
  host->content = std::move(content);
  return host;
}

}  // namespace tq::test
