#pragma once

/// @file Equality.h
/// Equality of containers.

#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/Object.h>

namespace tq::detail {

/// Returns whether two arrays, two dictionaries, two sets or two errors have equal contents.
///
/// Stack: bounded for containers of any depth. Containers in an object of the host are compared by
///        its isEqual(), with its own use of the stack.
/// Cost:  linear in the elements of the containers that exist, however often they are shared.
///        Members of sets and keys of dictionaries that are containers are also sorted. If numbers
///        are equal by rounding: linear in the pairs of containers that correspond to each other.
/// Keys:  each key and member equals one of the other container, and no two equal the same one.
[[nodiscard]] bool haveEqualContents(const Object& a, const Object& b);

/// Returns whether equal numbers have different values: an integer beyond 2^53 and the double to
/// which it is rounded. Therefore equality of numbers is not transitive: 2^53 and 2^53 + 1 both
/// equal the double 2^53.
[[nodiscard]] bool areEqualByRounding(NumberValue a, NumberValue b) noexcept;

}  // namespace tq::detail
