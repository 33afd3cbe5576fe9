#pragma once

/// @file TQLogging.h
/// The host application's log channels.

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/platform/log/LogChannel.h>

namespace tq {

/// The channels by name, each made at its first use. Subsystems are "com.korvan.xcode" and
/// "com.korvan.rendering". Any thread.
class TQ_EXPORT TQLogging {
 public:
  TQLogging() = delete;

  /// Drawing and making pixels; subsystem ".rendering".
  [[nodiscard]] static LogChannel& renderingLog();
  [[nodiscard]] static LogChannel& rasterisationLog();
  /// The disabled channel while usesHighFrequencySignposts() is off.
  [[nodiscard]] static LogChannel& quartzImpositorLog();

  /// The document model, its history, editing, collaboration and the application around them;
  /// subsystem ".xcode".
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

  /// Off in every build.
  [[nodiscard]] static bool usesHighFrequencySignposts() noexcept { return false; }
};

}  // namespace tq
