#pragma once

/// @file Progress.h
/// A bar on the terminal while work goes on.

#include <chrono>
#include <cstddef>
#include <string_view>

namespace tqdoc {

/// Draws itself on standard error when that is a terminal, ten times a second at the most, and
/// wipes itself off at the end; does nothing otherwise. One thread at a time.
class Progress {
 public:
  explicit Progress(std::size_t total);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// One more is done.
  void step(std::string_view name);

  /// Takes the bar away so that something else can be printed; the next step draws it again.
  void wipe();

 private:
  std::size_t total_;
  std::size_t done_ = 0;
  bool onTerminal_;
  bool shown_ = false;
  std::chrono::steady_clock::time_point drawn_;
};

}  // namespace tqdoc
