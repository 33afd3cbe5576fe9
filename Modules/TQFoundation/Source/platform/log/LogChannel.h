#pragma once

/// @file LogChannel.h
/// Messages by subject and weight.

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

/// How much a message weighs, lightest first.
enum class LogLevel : std::uint8_t { debug, info, default_, error, fault };

/// "debug", "info", "default", "error" or "fault".
[[nodiscard]] TQ_EXPORT std::string_view nameOf(LogLevel level) noexcept;

/// A message on its way to the sink; the texts live until the sink returns.
struct LogMessage {
  std::string_view subsystem;  ///< the channel's
  std::string_view category;   ///< the channel's
  LogLevel level;              ///< as logged
  std::string_view text;       ///< the message, its arguments filled in
};
/// Takes messages in place of the system; may be called by several threads at once.
using LogSink = std::function<void(const LogMessage&)>;

/// Everything that channels let through goes to `sink` from now on; an empty one means the system
/// again. @return the sink before
/// Threads: any; the sink is called on the thread that logs, with no lock held, several at a time.
TQ_EXPORT LogSink setLogSink(LogSink sink);

/// A value for a "{}" of a message: a number, a boolean, a character, text, or an object by its
/// description. Borrows text and objects. A pointer is none of these.
class LogArgument {
 public:
  /// What an argument is kept as.
  using Held = std::variant<bool, char, std::int64_t, std::uint64_t, float, double,
                            std::string_view, const Object*>;

  /// Borrows texts and objects until the message is written.
  LogArgument(std::integral auto value) noexcept  // NOLINT: taken as is
      : held_(static_cast<Kept<decltype(value)>>(value)) {}
  LogArgument(std::floating_point auto value) noexcept  // NOLINT
      : held_(static_cast<Kept<decltype(value)>>(value)) {}
  LogArgument(std::convertible_to<std::string_view> auto const& text) noexcept  // NOLINT
      : held_(std::string_view(text)) {}
  LogArgument(const Object& object) noexcept : held_(&object) {}  // NOLINT

  /// The value.
  [[nodiscard]] const Held& held() const noexcept { return held_; }

 private:
  template <class T, class... Types>
  static constexpr bool isAnyOf = (std::same_as<T, Types> || ...);
  template <class T>
  using Integer = std::conditional_t<std::signed_integral<T>, std::int64_t, std::uint64_t>;
  template <class T>
  using Kept = std::conditional_t<isAnyOf<T, bool, char, float>, T,
                                  std::conditional_t<std::integral<T>, Integer<T>, double>>;

  Held held_;
};

/// Where messages of one subject go. One object for each subsystem and category in the process,
/// never destroyed.
///
/// A message that passes the channel's level goes to the host's sink (setLogSink()); without one to
/// the system's journal, when standard error leads there, with SUBSYSTEM, CATEGORY and PRIORITY as
/// fields to filter on; else as one line to plainLog(). Where standard error leads is asked once,
/// at the first message that no sink takes.
///
/// Threads: any. Cost: a level that is off takes one relaxed load.
class TQ_EXPORT LogChannel {
 public:
  /// @param subsystem  a reverse-DNS label
  [[nodiscard]] static LogChannel& channel(std::string_view subsystem, std::string_view category);

  /// Enabled for no level, whatever setLevel() is told: drops everything.
  [[nodiscard]] static LogChannel& disabled();

  LogChannel(const LogChannel&) = delete;
  LogChannel& operator=(const LogChannel&) = delete;

  /// What it was found by.
  [[nodiscard]] const std::string& subsystem() const noexcept { return subsystem_; }
  [[nodiscard]] const std::string& category() const noexcept { return category_; }

  /// Relaxed: a level says nothing of other memory.
  [[nodiscard]] bool isEnabled(LogLevel level) const noexcept {
    return static_cast<std::uint8_t>(level) >= lowest_.load(std::memory_order_relaxed);
  }

  /// Lets this level and the heavier ones through; LogLevel::default_ at first.
  void setLevel(LogLevel lowest) noexcept;

  /// Logs the text as it stands.
  void log(LogLevel level, std::string_view text) const {
    if (isEnabled(level)) write(level, text);
  }

  /// Logs `format` with its "{}" replaced, as std::format does it. A format that does not fit its
  /// arguments is logged as it stands, with what is wrong with it.
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
