#pragma once

/// @file PlainLog.h
/// The plain log call: one line on standard error, for what has no channel of its own.

#include <functional>
#include <string_view>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Takes the message as it was given, without date and process.
using PlainLogSink = std::function<void(std::string_view message)>;

/// Writes "date time process[pid:thread] message" in one piece, with a line feed where the message
/// does not end in one. Goes to the sink instead, when one is set. Any thread.
TQ_EXPORT void plainLog(std::string_view message);

/// Everything logged from now on goes to `sink`, an empty one means standard error again.
/// @return the sink before, so that a test can put it back
/// Threads: any; the sink is called on the thread that logs, with no lock held, several at a time.
TQ_EXPORT PlainLogSink setPlainLogSink(PlainLogSink sink);

}  // namespace tq
