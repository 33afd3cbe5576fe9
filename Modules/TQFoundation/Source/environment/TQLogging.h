#pragma once

/// @file TQLogging.h
/// Log channels of the host application.

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/platform/log/LogChannel.h>

namespace tq {

/// The channels by name. Each is created at its first use. The subsystems are "com.korvan.xcode"
/// and "com.korvan.rendering". Threads: any.
class TQ_EXPORT TQLogging {
 public:
  TQLogging() = delete;

  /// Rendering and rasterisation; subsystem ".rendering".
  [[nodiscard]] static LogChannel& renderingLog();
  [[nodiscard]] static LogChannel& rasterisationLog();
  /// The disabled channel if usesHighFrequencySignposts() is false.
  [[nodiscard]] static LogChannel& quartzImpositorLog();

  /// Document model, history, editing, collaboration and application; subsystem ".xcode".
  [[nodiscard]] static LogChannel& modelLog();
  [[nodiscard]] static LogChannel& historyLog();
  [[nodiscard]] static LogChannel& influenceRectLog();
  [[nodiscard]] static LogChannel& applicationLog();
  [[nodiscard]] static LogChannel& poiLog();
  [[nodiscard]] static LogChannel& collaborationOpenerLog();
  [[nodiscard]] static LogChannel& collaborationLog();
  [[nodiscard]] static LogChannel& presenceLog();
  [[nodiscard]] static LogChannel& authenticationRefreshLog();
  [[nodiscard]] static LogChannel& keychainLog();

  /// Returns false in every build.
  [[nodiscard]] static bool usesHighFrequencySignposts() noexcept { return false; }
};

}  // namespace tq
