#pragma once

/// @file Equality.h
/// Equality of containers.

#include <TQFoundation/objects/Object.h>

namespace tq::detail {

/// Returns whether two arrays, two dictionaries or two sets have equal contents.
///
/// Stack: containers of any depth, except members of sets and keys of dictionaries that have more
///        than one of them, and containers inside of other objects.
/// Cost:  linear in the elements of the containers that exist, however often they are shared, with
///        the same exceptions.
[[nodiscard]] bool haveEqualContents(const Object& a, const Object& b);

}  // namespace tq::detail
