#pragma once

/// @file Null.h
/// The object that stands for no object where one is required.

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

/// One instance per process, equal only to itself. Threads: any.
class TQ_EXPORT Null final : public Subclass<Null> {
 public:
  static constexpr std::string_view className = "Null";
  static constexpr std::string_view codingName = "NSNull";

  /// The one object that stands for nothing in arrays and dictionaries. The same on every call.
  [[nodiscard]] static Ref<Null> null();

  [[nodiscard]] std::string description() const override { return "<null>"; }

 private:
  Null() noexcept : Subclass(ObjectKind::null) {}
};

}  // namespace tq
