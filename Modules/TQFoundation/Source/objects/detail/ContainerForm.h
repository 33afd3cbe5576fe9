#pragma once

/// @file ContainerForm.h
/// The containers among the value classes.

#include <cstdint>

#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/Object.h>
#include <TQFoundation/objects/Set.h>

namespace tq::detail {

/// The containers of the library. An error is one, because its user info may hold another error.
enum class ContainerForm : std::uint8_t { none, array, dictionary, set, error };

/// Returns the container that an object is.
[[nodiscard]] inline ContainerForm containerFormOf(const Object& object) noexcept {
  if (object.kind() == ObjectKind::array) return ContainerForm::array;
  if (object.kind() == ObjectKind::dictionary) return ContainerForm::dictionary;
  if (object.kind() != ObjectKind::other) return ContainerForm::none;
  const Class* const itsClass = &object.objectClass();
  if (itsClass == &classOf<Set>) return ContainerForm::set;
  return itsClass == &classOf<Error> ? ContainerForm::error : ContainerForm::none;
}

}  // namespace tq::detail
