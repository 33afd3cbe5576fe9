#pragma once

/// @file PlainLog.h
/// Plain log messages: one line on standard error.

#include <functional>
#include <string_view>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Receives the message, escaped, without date and process.
using PlainLogSink = std::function<void(std::string_view message)>;

/// Writes "date time process[pid:thread] message" to standard error with one write, and a line feed
/// unless the message ends in one. If a sink is set, it receives the message instead. Any thread.
///
/// A message with any text stays one line: control characters, line and paragraph separators,
/// characters that reverse the direction of text, and bytes that are not UTF-8 are escaped: "\n",
/// "\x1b", "\u202e". A line feed at the end of the message is not escaped, and neither are
/// backslashes. After a line that could only be written in part, such as on a full disk, the next
/// message begins a new line.
TQ_EXPORT void plainLog(std::string_view message);

/// The same. A null pointer is written as "(null)".
inline void plainLog(const char* message) {
  plainLog(std::string_view(message != nullptr ? message : "(null)"));
}

/// Sends all messages to `sink`. An empty sink restores standard error.
///
/// Threads:    any. The sink is called on the thread that logs, with no lock held; several threads
///             may call it at the same time. The previous sink may still run on other threads
///             when this returns, and is destroyed at a later replacement: it must own what it
///             uses.
/// Exceptions: an exception that leaves the sink is dropped, so that a message never makes the
///             function fail that logs it.
///
/// @return the previous sink
TQ_EXPORT PlainLogSink setPlainLogSink(PlainLogSink sink);

}  // namespace tq
