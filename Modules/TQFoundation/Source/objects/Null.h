#pragma once

/// @file Null.h
/// Null, a placeholder object for containers, which cannot hold null pointers.

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

/// A placeholder for no object. One instance per process, equal only to itself. Threads: any.
class TQ_EXPORT Null final : public Subclass<Null> {
 public:
  static constexpr std::string_view className = "Null";
  static constexpr std::string_view codingName = "NSNull";
  ~Null() override;

  /// Returns the only instance.
  [[nodiscard]] static Ref<Null> null();

  [[nodiscard]] std::string description() const override { return "<null>"; }

 private:
  Null() noexcept : Subclass(ObjectKind::null) {}
};

}  // namespace tq
