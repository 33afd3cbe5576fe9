#pragma once

/// @file LogChannel.h
/// Log channels: messages by subsystem, category and level.

#include <atomic>
#include <concepts>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Object.h>

namespace tq {

/// The severity of a message, lowest first.
enum class LogLevel : std::uint8_t { debug, info, default_, error, fault };

/// Returns "debug", "info", "default", "error" or "fault".
[[nodiscard]] TQ_EXPORT std::string_view nameOf(LogLevel level) noexcept;

/// A message for a sink. Its texts are valid until the sink returns.
struct LogMessage {
  std::string_view subsystem;  ///< of the channel
  std::string_view category;   ///< of the channel
  LogLevel level;              ///< as logged
  std::string_view text;       ///< the message with its arguments filled in
};
/// Receives messages instead of the system. Several threads may call it at the same time.
using LogSink = std::function<void(const LogMessage&)>;

/// Sends all messages that pass their channel's level to `sink`. An empty sink restores the system.
///
/// Threads:    any. The sink is called on the thread that logs, with no lock held; several threads
///             may call it at the same time. The previous sink may still run on other threads
///             when this returns, and is destroyed at a later replacement: it must own what it
///             uses.
/// Exceptions: an exception that leaves the sink is dropped, so that a message never makes the
///             function fail that logs it.
///
/// @return the previous sink
TQ_EXPORT LogSink setLogSink(LogSink sink);

/// An argument of a message: a number, a boolean, a character, a text, or an object, which is
/// formatted as its description. A null C string is formatted as "(null)". Other pointers are not
/// accepted.
class LogArgument {
 public:
  /// The types that arguments are stored as.
  using Held = std::variant<bool, char, std::int64_t, std::uint64_t, float, double,
                            std::string_view, const Object*>;

  /// Refers to texts and objects, which must be valid until the message is written.
  LogArgument(std::integral auto value) noexcept  // NOLINT: implicit
      : held_(static_cast<Kept<decltype(value)>>(value)) {}
  LogArgument(std::floating_point auto value) noexcept  // NOLINT
      : held_(static_cast<Kept<decltype(value)>>(value)) {}
  LogArgument(std::convertible_to<std::string_view> auto const& text) noexcept  // NOLINT
      : held_(viewOf(text)) {}
  LogArgument(const Object& object) noexcept : held_(&object) {}  // NOLINT

  /// Returns the stored value.
  [[nodiscard]] const Held& held() const noexcept { return held_; }

 private:
  template <class T, class... Types>
  static constexpr bool isAnyOf = (std::same_as<T, Types> || ...);
  template <class T>
  using Integer = std::conditional_t<std::signed_integral<T>, std::int64_t, std::uint64_t>;
  template <class T>
  using Kept = std::conditional_t<isAnyOf<T, bool, char, float>, T,
                                  std::conditional_t<std::integral<T>, Integer<T>, double>>;

  template <class Text>
  static std::string_view viewOf(const Text& text) noexcept {
    if constexpr (std::convertible_to<const Text&, const char*>) {
      const char* const start = text;
      return start != nullptr ? std::string_view(start) : "(null)";
    } else {
      return std::string_view(text);
    }
  }

  Held held_;
};

/// A channel for the messages of one subsystem and category. The process has one object for each
/// pair, which is never destroyed.
///
/// A message that passes the channel's level goes to the host's sink (setLogSink()). Without a
/// sink, it goes to the system's journal if standard error is connected to the journal, with the
/// fields SUBSYSTEM, CATEGORY and PRIORITY to filter on; otherwise to plainLog(), as one line with
/// control characters escaped. The connection of standard error is checked once, at the first
/// message without a sink.
///
/// Threads: any.
/// Cost:    one relaxed load if the level is disabled.
class TQ_EXPORT LogChannel {
 public:
  /// Returns the channel of this subsystem and category.
  /// @param subsystem  a reverse-DNS label
  [[nodiscard]] static LogChannel& channel(std::string_view subsystem, std::string_view category);

  /// Returns a channel that drops every message. setLevel() has no effect on it.
  [[nodiscard]] static LogChannel& disabled();

  LogChannel(const LogChannel&) = delete;
  LogChannel& operator=(const LogChannel&) = delete;

  /// The subsystem and the category of the channel.
  [[nodiscard]] const std::string& subsystem() const noexcept { return subsystem_; }
  [[nodiscard]] const std::string& category() const noexcept { return category_; }

  /// Returns whether messages of this level are logged.
  [[nodiscard]] bool isEnabled(LogLevel level) const noexcept {
    // Relaxed: the level publishes no other memory.
    return static_cast<std::uint8_t>(level) >= lowest_.load(std::memory_order_relaxed);
  }

  /// Enables this level and all higher ones. Initially LogLevel::default_.
  void setLevel(LogLevel lowest) noexcept;

  /// Logs the text unchanged.
  void log(LogLevel level, std::string_view text) const {
    if (isEnabled(level)) write(level, text);
  }
  /// The same. A null pointer is logged as "(null)".
  void log(LogLevel level, const char* text) const {
    log(level, std::string_view(text != nullptr ? text : "(null)"));
  }

  /// Logs `format` with its "{}" replaced, like std::format. A format that does not fit its
  /// arguments is logged unchanged, followed by the reason. An exception of an object's description
  /// reaches the caller.
  template <class... Arguments>
  requires(sizeof...(Arguments) != 0) void log(LogLevel level, std::string_view format,
                                               const Arguments&... arguments) const {
    if (!isEnabled(level)) return;
    const LogArgument list[] = {LogArgument(arguments)...};
    write(level, format, list);
  }

 private:
  static constexpr std::uint8_t kNothing = 0xFF;

  LogChannel(std::string_view subsystem, std::string_view category, std::uint8_t lowest)
      : subsystem_(subsystem), category_(category), lowest_(lowest) {}

  void write(LogLevel level, std::string_view text) const;
  void write(LogLevel level, std::string_view format, std::span<const LogArgument> arguments) const;

  const std::string subsystem_;
  const std::string category_;
  std::atomic<std::uint8_t> lowest_;
};

}  // namespace tq
