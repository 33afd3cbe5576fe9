#include <TQFoundation/platform/log/PlainLog.h>

#include <errno.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <string>
#include <utility>

#include <TQFoundation/objects/UTF.h>
#include <TQFoundation/platform/log/detail/SinkSlot.h>

namespace tq {
namespace {

using SinkSlot = detail::SinkSlot<std::string_view>;

SinkSlot& sinkSlot() {
  static auto& slot = *new SinkSlot;  // never destroyed: threads may outlive main
  return slot;
}

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

/// Returns whether a character could break the line, control the terminal, or make a text look like
/// another one.
bool isDisruptive(char32_t point) noexcept {
  const auto isBetween = [point](char32_t first, char32_t last) {
    return point >= first && point <= last;
  };
  return point < U' ' || isBetween(0x7F, 0x9F) || isBetween(0x2028, 0x202E) ||
         isBetween(0x2066, 0x2069);
}

void appendEscaped(std::string& line, char32_t value, bool isByte) {
  constexpr std::pair<char32_t, const char*> kShort[] = {
      {U'\n', "\\n"}, {U'\r', "\\r"}, {U'\t', "\\t"}};
  for (const auto& [point, escape] : kShort) {
    if (point == value) {
      line += escape;
      return;
    }
  }
  const auto number = static_cast<std::uint32_t>(value);
  line += isByte ? fmt::format("\\x{:02x}", number) : fmt::format("\\u{:04x}", number);
}

std::string escaped(std::string_view message) {
  const bool endsLine = message.ends_with('\n');
  std::string line;
  line.reserve(message.size());
  for (std::string_view rest = message.substr(0, message.size() - (endsLine ? 1 : 0));
       !rest.empty();) {
    const detail::DecodedPoint point = detail::decodePoint(rest);
    const std::size_t length = std::max<std::size_t>(point.byteCount, 1);
    if (point.byteCount == 0) {
      appendEscaped(line, static_cast<unsigned char>(rest[0]), true);
    } else if (isDisruptive(point.value) || point.isSurrogate()) {
      appendEscaped(line, point.value, length == 1);
    } else {
      line += rest.substr(0, length);
    }
    rest.remove_prefix(length);
  }
  if (endsLine) line += '\n';
  return line;
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
  const std::string message = escaped(given);
  if (sinkSlot().call(message)) return;
  static std::atomic<bool> isCut = false;  // the last line could only be written in part
  const bool wasCut = isCut.exchange(false);
  std::string line = wasCut ? "\n" : "";
  line.append(timestamp()).append(" ").append(program_invocation_short_name);
  line.append("[").append(std::to_string(::getpid()));
  line.append(":").append(std::to_string(::gettid())).append("] ").append(message);
  if (!line.ends_with('\n')) line += '\n';
  const std::size_t missing = writeAll(line);
  if (missing != 0 && (wasCut || missing != line.size())) isCut = true;
}

PlainLogSink setPlainLogSink(PlainLogSink sink) { return sinkSlot().replace(std::move(sink)); }

}  // namespace tq
