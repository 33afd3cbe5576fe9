#pragma once

/// @file Set.h
/// Sets of distinct objects, in insertion order.

#include <cstddef>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

namespace detail {
struct Construction;
class DictionaryKeys;
}  // namespace detail

/// An immutable set in insertion order. It retains its members, which are distinct and never null.
/// A member must not change in a way that affects isEqual().
///
/// Cost: up to 8 members are searched linearly, more are hashed.
/// Threads: any.
class TQ_EXPORT Set final : public Subclass<Set> {
 public:
  static constexpr std::string_view className = "Set";
  static constexpr std::string_view codingName = "NSSet";

  /// Returns an empty set.
  [[nodiscard]] static Ref<Set> set();
  /// Creates a set. Of equal objects, it contains the first.
  /// @throws Exception (InvalidArgumentException) if one is null
  [[nodiscard]] static Ref<Set> setWithObjects(std::span<const Ref<Object>> objects);
  [[nodiscard]] static Ref<Set> setWithObjects(std::initializer_list<Ref<Object>> objects);

  ~Set() override;

  [[nodiscard]] std::size_t count() const noexcept;

  /// Returns the member that equals `object`, or null. The set owns it.
  [[nodiscard]] Object* member(const Object& object) const;
  [[nodiscard]] bool containsObject(const Object& object) const {
    return member(object) != nullptr;
  }

  /// The members in insertion order. Valid while the set exists.
  [[nodiscard]] std::span<const Ref<Object>> allObjects() const noexcept;
  [[nodiscard]] Array::Iterator begin() const noexcept;
  [[nodiscard]] Array::Iterator end() const noexcept {
    return Array::Iterator(allObjects().data() + count());
  }

  /// Returns true if each member equals one of the other set, in any order. Depth and cost: see
  /// Array::isEqual().
  [[nodiscard]] bool isEqual(const Object& other) const override;
  /// Combines all members; containers among them contribute only their count. Cost: linear.
  [[nodiscard]] std::size_t hash() const override;
  /// Returns "{(a, b)}", with the limits of Array::description().
  [[nodiscard]] std::string description() const override;

 private:
  friend struct detail::Construction;

  explicit Set(Ref<detail::DictionaryKeys> members) noexcept;

  Ref<detail::DictionaryKeys> members_;
};

}  // namespace tq
