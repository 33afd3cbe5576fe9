#pragma once

/// @file Equality.h
/// Equality of containers.

#include <TQFoundation/objects/Object.h>

namespace tq::detail {

/// Returns whether two arrays, two dictionaries, two sets or two errors have equal contents.
///
/// Stack: bounded for containers of any depth. Containers in an object of the host are compared by
///        its isEqual(), with its own use of the stack.
/// Cost:  linear in the elements of the containers that exist, however often they are shared.
///        Members of sets and keys of dictionaries that are containers are also sorted.
[[nodiscard]] bool haveEqualContents(const Object& a, const Object& b);

}  // namespace tq::detail
