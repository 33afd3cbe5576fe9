#pragma once

/// @file Progress.h
/// A progress bar on the terminal.

#include <chrono>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

#include <TQFoundation/TQFoundation.h>

namespace tqdoc {

/// Draws on standard error if it is a terminal, at most ten times a second, and erases itself at
/// the end. Otherwise does nothing.
class Progress final : public tq::Subclass<Progress> {
 public:
  static constexpr std::string_view className = "TQDocProgress";

  explicit Progress(std::size_t total);
  ~Progress() override;

  /// Counts one finished item. Any thread.
  void step(std::string_view name);

  /// Draws the bar. Only one thread may call draw() and wipe().
  void draw();

  /// Erases the bar, so that other text can be printed; draw() shows it again.
  void wipe();

 private:
  const std::size_t total_;
  const bool onTerminal_;
  bool shown_ = false;
  std::chrono::steady_clock::time_point drawn_;

  std::mutex mutex_;
  std::size_t done_ = 0;  // mutex_ guards done_ and name_
  std::string name_;
};

}  // namespace tqdoc
