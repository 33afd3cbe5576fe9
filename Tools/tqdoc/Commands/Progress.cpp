#include "Commands/Progress.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>

#include "Commands/Command.h"

namespace tqdoc {

Progress::Progress(std::size_t total) : total_(total), onTerminal_(::isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() { wipe(); }

void Progress::step(std::string_view name) {
  if (!onTerminal_) return;
  const std::scoped_lock guard(mutex_);
  ++done_;
  name_ = name;
}

void Progress::draw() {
  const auto now = std::chrono::steady_clock::now();
  if (!onTerminal_ || now - drawn_ < std::chrono::milliseconds(100)) return;
  drawn_ = now;
  constexpr std::size_t kWidth = 30;
  constexpr std::size_t kNameWidth = 35;
  std::string name;
  std::size_t done = 0;
  {
    const std::scoped_lock guard(mutex_);
    done = done_;
    name = name_.substr(name_.size() - std::min(name_.size(), kNameWidth));
  }
  const std::size_t filled = total_ == 0 ? kWidth : kWidth * done / total_;
  std::cerr << "\r\x1b[K[" << std::string(filled, '#') << std::string(kWidth - filled, '.') << "] "
            << done << "/" << total_ << " " << printable(name) << std::flush;
  shown_ = true;
}

void Progress::wipe() {
  if (shown_) std::cerr << "\r\x1b[K" << std::flush;
  shown_ = false;
}

}  // namespace tqdoc
