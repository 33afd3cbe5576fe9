#include <TQFoundation/platform/log/PlainLog.h>

#include <errno.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <ctime>
#include <string>
#include <utility>

#include <TQFoundation/platform/log/detail/SinkSlot.h>
#include <TQFoundation/platform/text/PrintableText.h>

namespace tq {
namespace {

std::string timestamp() {
  using namespace std::chrono;
  const auto now = system_clock::now();
  const std::time_t seconds = system_clock::to_time_t(now);
  const auto millis = duration_cast<milliseconds>(now.time_since_epoch()).count() % 1000;
  std::tm local{};
  localtime_r(&seconds, &local);
  char text[40];
  const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  const std::string fraction = std::to_string(1000 + millis);
  return std::string(text, length) + "." + fraction.substr(1);
}

/// @return the number of bytes that could not be written: standard error is closed, its disk full
std::size_t writeAll(std::string_view text) noexcept {
  while (!text.empty()) {
    const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) break;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return text.size();
}

}  // namespace

void plainLog(std::string_view given) {
  const bool endsLine = given.ends_with('\n');
  std::string message = printableText(given.substr(0, given.size() - (endsLine ? 1 : 0)));
  if (endsLine) message += '\n';
  if (detail::SinkSlot<std::string_view>::shared().call(message)) return;
  static std::atomic<bool> isCut = false;  // the last line could only be written in part
  const bool wasCut = isCut.exchange(false);
  std::string line = wasCut ? "\n" : "";
  line.append(timestamp()).append(" ").append(printableText(program_invocation_short_name));
  line.append("[").append(std::to_string(::getpid()));
  line.append(":").append(std::to_string(::gettid())).append("] ").append(message);
  if (!line.ends_with('\n')) line += '\n';
  const std::size_t missing = writeAll(line);
  if (missing != 0 && (wasCut || missing != line.size())) isCut = true;
}

PlainLogSink setPlainLogSink(PlainLogSink sink) {
  return detail::SinkSlot<std::string_view>::shared().replace(std::move(sink));
}

}  // namespace tq
