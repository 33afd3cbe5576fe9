#pragma once

/// @file Describe.h
/// Limit of the depth of nested descriptions.

namespace tq::detail {

/// Counts one level of nesting on this thread during its lifetime.
class DescriptionLevel {
 public:
  DescriptionLevel() noexcept { ++depth_; }
  ~DescriptionLevel() { --depth_; }
  DescriptionLevel(const DescriptionLevel&) = delete;
  DescriptionLevel& operator=(const DescriptionLevel&) = delete;

  [[nodiscard]] static bool isTooDeep() noexcept { return depth_ > 32; }

 private:
  inline static thread_local constinit int depth_ = 0;
};

}  // namespace tq::detail
