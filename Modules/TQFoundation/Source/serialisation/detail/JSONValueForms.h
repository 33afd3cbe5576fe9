#pragma once

/// @file JSONValueForms.h
/// The JSON forms of the value classes.

#include <TQFoundation/objects/Class.h>

namespace tq::detail {

/// Returns the steps that the JSON archive itself supplies for objects of `theClass`. All entries
/// are null for a class that is not a value class.
[[nodiscard]] const JSONCoding& jsonFormOf(const Class& theClass) noexcept;

}  // namespace tq::detail
