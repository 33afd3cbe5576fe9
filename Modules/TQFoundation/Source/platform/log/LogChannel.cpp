#include <TQFoundation/platform/log/LogChannel.h>

#include <fmt/format.h>
#include <glib.h>
#include <unistd.h>

#include <map>
#include <memory>
#include <utility>
#include <vector>

#include <TQFoundation/platform/log/PlainLog.h>
#include <TQFoundation/platform/log/detail/SinkSlot.h>
#include <TQFoundation/platform/threads/Lock.h>

namespace tq {
namespace {

/// The level of the journal that corresponds to one of ours.
struct JournalLevel {
  GLogLevelFlags flag;
  const char* priority;
};

JournalLevel journalLevel(LogLevel level) noexcept {
  switch (level) {
    case LogLevel::debug:
      return {G_LOG_LEVEL_DEBUG, "7"};
    case LogLevel::info:
      return {G_LOG_LEVEL_INFO, "6"};
    case LogLevel::default_:
      return {G_LOG_LEVEL_MESSAGE, "5"};
    case LogLevel::error:
      return {G_LOG_LEVEL_CRITICAL, "3"};
    case LogLevel::fault:
      break;
  }
  return {G_LOG_LEVEL_CRITICAL, "2"};
}

bool writeToJournal(const LogMessage& message) {
  static const bool isJournal = g_log_writer_is_journald(STDERR_FILENO) != FALSE;
  if (!isJournal) return false;
  const auto field = [](const char* key, std::string_view value) {
    return GLogField{key, value.data(), static_cast<gssize>(value.size())};
  };
  const JournalLevel level = journalLevel(message.level);
  const GLogField fields[] = {field("MESSAGE", message.text), field("PRIORITY", level.priority),
                              field("GLIB_DOMAIN", message.subsystem),
                              field("SUBSYSTEM", message.subsystem),
                              field("CATEGORY", message.category)};
  return g_log_writer_journald(level.flag, fields, std::size(fields), nullptr) ==
         G_LOG_WRITER_HANDLED;
}

void deliver(const LogMessage& message) {
  if (detail::SinkSlot<const LogMessage&>::shared().call(message)) return;
  if (writeToJournal(message)) return;
  plainLog(fmt::format("[{}:{}] {}: {}", message.subsystem, message.category, nameOf(message.level),
                       message.text));
}

/// Converts a value for the formatting library. Objects are described only here, after the level
/// has been checked.
struct Formatted {
  std::vector<std::string>& descriptions;  // reserved, so that views of them stay valid
  std::string_view operator()(const Object* object) const {
    return descriptions.emplace_back(object->description());
  }
  template <class T>
  T operator()(T value) const {
    return value;
  }
};

}  // namespace

std::string_view nameOf(LogLevel level) noexcept {
  constexpr std::string_view kNames[] = {"debug", "info", "default", "error", "fault"};
  return kNames[static_cast<std::size_t>(level)];
}

LogSink setLogSink(LogSink sink) {
  return detail::SinkSlot<const LogMessage&>::shared().replace(std::move(sink));
}

LogChannel& LogChannel::channel(std::string_view subsystem, std::string_view category) {
  struct Channels {
    Lock lock;
    std::map<std::pair<std::string, std::string>, std::unique_ptr<LogChannel>> all
        TQ_GUARDED_BY(lock);
  };
  static auto& channels = *new Channels;  // never destroyed: threads may outlive main
  const Locked guard(channels.lock);
  auto& channel = channels.all[{std::string(subsystem), std::string(category)}];
  if (channel == nullptr) {
    channel.reset(
        new LogChannel(subsystem, category, static_cast<std::uint8_t>(LogLevel::default_)));
  }
  return *channel;
}

LogChannel& LogChannel::disabled() {
  static auto& channel = *new LogChannel("", "", kNothing);
  return channel;
}

void LogChannel::setLevel(LogLevel lowest) noexcept {
  if (this != &disabled()) {
    lowest_.store(static_cast<std::uint8_t>(lowest), std::memory_order_relaxed);
  }
}

void LogChannel::write(LogLevel level, std::string_view text) const {
  deliver({subsystem_, category_, level, text});
}

void LogChannel::write(LogLevel level, std::string_view format,
                       std::span<const LogArgument> arguments) const {
  constexpr std::size_t kUsual = 8;
  using Argument = fmt::basic_format_arg<fmt::format_context>;
  fmt::basic_memory_buffer<Argument, kUsual> list;
  std::vector<std::string> descriptions;
  for (const LogArgument& argument : arguments) {
    if (std::holds_alternative<const Object*>(argument.held()) && descriptions.empty()) {
      descriptions.reserve(arguments.size());
    }
    std::visit(
        [&](auto value) {
          const auto plain = Formatted{descriptions}(value);
          const auto store = fmt::make_format_args(plain);
          list.push_back(fmt::format_args(store).get(0));
        },
        argument.held());
  }
  fmt::memory_buffer text;
  try {
    fmt::vformat_to(fmt::appender(text), format,
                    fmt::format_args(list.data(), static_cast<int>(list.size())));
  } catch (const fmt::format_error& error) {
    text.clear();
    fmt::format_to(fmt::appender(text), "{} ({})", format, error.what());
  }
  write(level, {text.data(), text.size()});
}

}  // namespace tq
