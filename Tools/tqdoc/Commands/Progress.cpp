#include "Commands/Progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <string>
#include <string_view>

#include "Commands/Command.h"

namespace tqdoc {
namespace {

[[nodiscard]] std::size_t columnsOfTerminal() {
  winsize size{};
  const bool isKnown = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return isKnown ? size.ws_col : 80;
}

/// Returns the last `most` characters of UTF-8 text. Each is assumed to take one column.
[[nodiscard]] std::string_view tail(std::string_view text, std::size_t most) {
  std::size_t at = text.size();
  for (std::size_t i = text.size(); i > 0 && most > 0; --i) {
    const bool begins = (static_cast<unsigned char>(text[i - 1]) & 0xc0) != 0x80;
    if (!begins) continue;
    at = i - 1;
    --most;
  }
  return text.substr(at);
}

}  // namespace

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
  constexpr std::size_t kWidest = 30;
  std::string name;
  std::size_t done = 0;
  {
    const std::scoped_lock guard(mutex_);
    done = done_;
    name = name_;
  }
  // Leaves one column free: some terminals wrap after a full line.
  const std::size_t columns = columnsOfTerminal() - 1;
  const std::size_t width = std::min(kWidest, columns / 3);
  const std::size_t filled = total_ == 0 ? width : width * done / total_;
  std::string line = "[" + std::string(filled, '#') + std::string(width - filled, '.') + "] " +
                     std::to_string(done) + "/" + std::to_string(total_) + " ";
  line += tail(tq::printableText(name), columns - std::min(columns, line.size()));
  std::cerr << "\r\x1b[K" << line << std::flush;
  shown_ = true;
}

void Progress::wipe() {
  if (shown_) std::cerr << "\r\x1b[K" << std::flush;
  shown_ = false;
}

}  // namespace tqdoc
