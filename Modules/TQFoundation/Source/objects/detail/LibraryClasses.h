#pragma once

/// @file LibraryClasses.h
/// The library's own classes by the names that archives give them.

#include <span>
#include <string_view>

namespace tq {
class Class;
}

namespace tq::detail {

struct NamedClass {
  std::string_view name;
  const Class* record;
};

/// Every class that archives may name without a host having registered it. Declared here for the
/// registry, defined in the platform room, which knows all of them.
[[nodiscard]] std::span<const NamedClass> libraryClasses() noexcept;

}  // namespace tq::detail
