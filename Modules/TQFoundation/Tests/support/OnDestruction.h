#pragma once

#include <TQFoundation/objects/Class.h>

#include "support/Test.h"

namespace tq::test {

/// An object that calls a function in its destructor.
class OnDestruction final : public Subclass<OnDestruction> {
 public:
  static constexpr std::string_view className = "OnDestruction";
  explicit OnDestruction(std::function<void()> function) : function_(std::move(function)) {}
  ~OnDestruction() override { function_(); }

 private:
  const std::function<void()> function_;
};

}  // namespace tq::test
