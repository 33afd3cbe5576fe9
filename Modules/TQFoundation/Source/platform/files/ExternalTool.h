#pragma once

/// @file ExternalTool.h
/// Runs an external program and waits for it.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/Error.h>

namespace tq {

/// The domain of errors of runExternalTool(), and their codes.
inline constexpr std::string_view ExternalToolErrorDomain = "com.korvan.ExternalTool";
enum class ExternalToolErrorCode : std::int64_t {
  cannotStart = 1,    ///< no such program or folder, no permission, or no new process
  timedOut = 2,       ///< killed at its time-out
  tooMuchOutput = 3,  ///< killed because its output exceeded the limit
  unknownEnd = 4,     ///< ended, but another part of this process collected its exit status
};

/// A program to run, with its arguments, its input and its limits.
struct ExternalTool {
  /// A path, or a name that is searched in $PATH. A relative path begins at workingFolder.
  std::string program;
  /// The arguments, passed exactly as given: no shell interprets them.
  std::vector<std::string> arguments = {};
  /// Its standard input. Must stay valid until runExternalTool() returns. A tool may end or close
  /// its input before it has read all of it.
  std::span<const std::byte> input = {};
  /// Its working directory. If empty, that of this process.
  std::string workingFolder = {};
  /// No time-out if 0, negative or NaN.
  double timeoutSeconds = 0;
  /// The limit for each of its two output streams.
  std::size_t mostOutputBytes = std::size_t{1} << 28;
};

/// The output and the exit status of a program.
struct ExternalToolResult {
  /// The bytes that it wrote to standard output and to standard error. Never null.
  Ref<Data> output;
  Ref<Data> errorOutput;
  int exitStatus = 0;  ///< 0 to 255; -1 if a signal ended it
  int signal = 0;      ///< the signal that ended it, or 0
};

/// Runs a tool and waits until it ends: starts it without a shell, writes its input and collects
/// both output streams at the same time. Output that its own child processes write later is not
/// collected.
///
/// The tool inherits the environment of this process, but no open files except its three streams;
/// all signals have their default action. It leads its own process group. At the time-out, and if
/// its output exceeds the limit, it is killed with its whole group; processes that it moved to
/// other groups are not. Standard streams that this process has closed are opened on /dev/null.
///
/// Blocks. Threads: any, several at the same time. The host must not wait for child processes that
/// it did not start, and must not ignore SIGCHLD: each tool would report unknownEnd.
///
/// @return null, with an error, if the tool could not be started or was killed; a tool that fails
///         returns a result with its exit status
[[nodiscard]] TQ_EXPORT std::optional<ExternalToolResult> runExternalTool(
    const ExternalTool& tool, Ref<Error>* error = nullptr);

}  // namespace tq
