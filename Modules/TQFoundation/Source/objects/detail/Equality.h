#pragma once

/// @file Equality.h
/// Equality of containers.

#include <TQFoundation/objects/Object.h>

namespace tq::detail {

/// Returns whether two arrays, two dictionaries or two sets have equal contents.
///
/// Stack: bounded for containers of any depth. Exceptions: members of a set that has several,
///        keys of a dictionary that has several, and containers inside other objects.
/// Cost:  linear in the elements of the containers that exist, even if they are shared often, with
///        the same exceptions.
[[nodiscard]] bool haveEqualContents(const Object& a, const Object& b);

}  // namespace tq::detail
