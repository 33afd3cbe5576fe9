#pragma once

/// @file Set.h
/// Distinct objects.

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
class DictionaryKeys;
}

/// An immutable set. Holds its members strongly, none of them null and no two of them equal, in the
/// order in which they were given. Members must not change in what makes them equal.
///
/// Cost: up to 8 members are searched one by one, more are hashed.
/// Threads: any.
class TQ_EXPORT Set final : public Subclass<Set> {
 public:
  static constexpr std::string_view className = "Set";
  static constexpr std::string_view codingName = "NSSet";

  /// A set without elements.
  [[nodiscard]] static Ref<Set> set();
  /// Of equal objects the first is kept.
  /// @throws Exception (InvalidArgumentException) when one is none
  [[nodiscard]] static Ref<Set> setWithObjects(std::span<const Ref<Object>> objects);
  [[nodiscard]] static Ref<Set> setWithObjects(std::initializer_list<Ref<Object>> objects);

  ~Set() override;

  [[nodiscard]] std::size_t count() const noexcept;

  /// The member that equals `object`, lent; null when there is none.
  [[nodiscard]] Object* member(const Object& object) const;
  [[nodiscard]] bool containsObject(const Object& object) const {
    return member(object) != nullptr;
  }

  /// The elements in the order in which they came. Lent; good while the set lives.
  [[nodiscard]] std::span<const Ref<Object>> allObjects() const noexcept;
  [[nodiscard]] Array::Iterator begin() const noexcept;
  [[nodiscard]] Array::Iterator end() const noexcept {
    return Array::Iterator(allObjects().data() + count());
  }

  /// Same members, in any order.
  [[nodiscard]] bool isEqual(const Object& other) const override;
  /// Of all members, of containers among them the count alone. Cost: linear.
  [[nodiscard]] std::size_t hash() const override;
  /// "{(a, b)}", 32 levels deep at the most.
  [[nodiscard]] std::string description() const override;

 private:
  explicit Set(Ref<detail::DictionaryKeys> members) noexcept;

  Ref<detail::DictionaryKeys> members_;
};

}  // namespace tq
