#pragma once

#include <TQFoundation/objects/Class.h>

#include "support/Test.h"

namespace tq::test {

/// An object that calls a function in its destructor.
struct OnDestruction final : Subclass<OnDestruction> {
  static constexpr std::string_view className = "OnDestruction";
  explicit OnDestruction(std::function<void()> function) : function_(std::move(function)) {}
  ~OnDestruction() override { function_(); }
  const std::function<void()> function_;
};

}  // namespace tq::test
