#pragma once

/// @file Progress.h
/// A bar on the terminal while work goes on.

#include <chrono>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

#include <TQFoundation/TQFoundation.h>

namespace tqdoc {

/// Draws itself on standard error when that is a terminal, ten times a second at the most, and
/// wipes itself off at the end; does nothing otherwise.
class Progress final : public tq::Subclass<Progress> {
 public:
  static constexpr std::string_view className = "TQDocProgress";

  explicit Progress(std::size_t total);
  ~Progress() override;

  /// One more is done. Any thread.
  void step(std::string_view name);

  /// Shows what is done so far. One thread, as is wipe().
  void draw();

  /// Takes the bar away so that something else can be printed; draw() brings it back.
  void wipe();

 private:
  const std::size_t total_;
  const bool onTerminal_;
  bool shown_ = false;
  std::chrono::steady_clock::time_point drawn_;

  std::mutex mutex_;
  std::size_t done_ = 0;  // both by the mutex
  std::string name_;
};

}  // namespace tqdoc
