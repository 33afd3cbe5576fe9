#pragma once

/// @file ValueNumbers.h
/// Numbers objects by value.

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

#include <TQFoundation/objects/Object.h>

namespace tq::detail {

/// Gives equal objects the same number and different ones different numbers. The number of a
/// container follows from the numbers of what it contains, so each container is visited once,
/// innermost first, however often it is shared and however deep it is.
///
/// Numbers: equal only if they have the same value. With those that are equal by rounding, the
///          result would depend on the order of visits.
/// Cost:   linear in the objects, except that the members of a set and the entries of a dictionary
///         are sorted. Bounded stack.
/// Cycles: a container that contains itself equals only itself.
/// The objects must exist and stay unchanged as long as the numbers are used.
class ValueNumbers {
 public:
  using Number = std::uint64_t;

  [[nodiscard]] Number of(const Object& object);

 private:
  using Content = std::vector<Number>;
  struct HashOfContent {
    std::size_t operator()(const Content& content) const noexcept;
  };

  Number numberOfLeaf(const Object& leaf);
  Number numberOfContainer(const Object& container);
  Number numberOfContent(Content content);
  [[nodiscard]] Number numberInside(const Object& object) const;

  Number last_ = 0;
  std::unordered_map<const Object*, Number> numbers_;  // 0 for a container that is not finished
  std::unordered_map<Content, Number, HashOfContent> contents_;
  std::unordered_multimap<std::size_t, std::pair<const Object*, Number>> leaves_;  // by hash
};

}  // namespace tq::detail
