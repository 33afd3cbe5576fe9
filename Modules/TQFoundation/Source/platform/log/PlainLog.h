#pragma once

/// @file PlainLog.h
/// Plain log messages: one line on standard error.

#include <functional>
#include <string_view>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Receives the message as it was given, without date and process.
using PlainLogSink = std::function<void(std::string_view message)>;

/// Writes "date time process[pid:thread] message" to standard error with one write, and a line feed
/// unless the message ends in one. If a sink is set, it receives the message instead. Any thread.
TQ_EXPORT void plainLog(std::string_view message);

/// Sends all messages to `sink`. An empty sink restores standard error.
///
/// Threads: any. The sink is called on the thread that logs, with no lock held; several threads may
/// call it at the same time.
///
/// @return the previous sink
TQ_EXPORT PlainLogSink setPlainLogSink(PlainLogSink sink);

}  // namespace tq
