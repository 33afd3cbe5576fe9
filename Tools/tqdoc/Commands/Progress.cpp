#include "Commands/Progress.h"

#include <unistd.h>

#include <iostream>
#include <string>

#include "Commands/Command.h"

namespace tqdoc {

Progress::Progress(std::size_t total) : total_(total), onTerminal_(::isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() { wipe(); }

void Progress::step(std::string_view name) {
  ++done_;
  const auto now = std::chrono::steady_clock::now();
  if (!onTerminal_ || now - drawn_ < std::chrono::milliseconds(100)) return;
  drawn_ = now;
  constexpr std::size_t kWidth = 30;
  constexpr std::size_t kNameWidth = 35;
  const std::size_t filled = total_ == 0 ? kWidth : kWidth * done_ / total_;
  std::cerr << "\r\x1b[K[" << std::string(filled, '#') << std::string(kWidth - filled, '.') << "] "
            << done_ << "/" << total_ << " "
            << printable(name.substr(name.size() - std::min(name.size(), kNameWidth)))
            << std::flush;
  shown_ = true;
}

void Progress::wipe() {
  if (shown_) std::cerr << "\r\x1b[K" << std::flush;
  shown_ = false;
}

}  // namespace tqdoc
