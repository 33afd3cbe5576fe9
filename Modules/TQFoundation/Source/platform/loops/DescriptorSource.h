#pragma once

/// @file DescriptorSource.h
/// Calls a function on a run loop when a descriptor can be read.

#include <functional>

#include <TQFoundation/platform/loops/RunLoop.h>

namespace tq::detail {

/// Calls a function in each pass of a run loop in which the descriptor can be read, in every mode.
/// The function must read all that there is, and may destroy the source.
///
/// Threads: that of the loop.
class DescriptorSource {
 public:
  /// @param descriptor  must stay open while the source lives
  /// @param canRead     an exception that leaves it stops the process
  DescriptorSource(RunLoop& loop, int descriptor, std::function<void()> canRead);
  ~DescriptorSource();
  DescriptorSource(const DescriptorSource&) = delete;
  DescriptorSource& operator=(const DescriptorSource&) = delete;

 private:
  void* const source_;  ///< of GLib
};

}  // namespace tq::detail
