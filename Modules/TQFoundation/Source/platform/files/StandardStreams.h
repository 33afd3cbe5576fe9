#pragma once

/// @file StandardStreams.h
/// Keeps files apart from the standard streams.

namespace tq::detail {

/// Opens /dev/null in place of each standard stream that is closed. Otherwise the next file would
/// get its number, and what the process writes to the stream, such as a log message, would go into
/// the file. Called before a file, a pipe or a connection is opened to be written. Has no effect if
/// no descriptor is left: then the file cannot be opened either. Any thread.
void occupyStandardStreams() noexcept;

}  // namespace tq::detail
