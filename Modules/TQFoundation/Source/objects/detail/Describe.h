#pragma once

/// @file Describe.h
/// How deep a description goes into nested containers.

namespace tq::detail {

/// One level of nesting on this thread, for as long as it lives.
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
