#pragma once

/// @file ExternalTool.h
/// Other programs, run to their end.

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

/// Domain of errors that say why a tool could not be run to its end, and their codes.
inline constexpr std::string_view ExternalToolErrorDomain = "com.korvan.ExternalTool";
enum class ExternalToolErrorCode : std::int64_t {
  cannotStart = 1,    ///< no such program, not permitted, no process to be had
  timedOut = 2,       ///< killed after its time
  tooMuchOutput = 3,  ///< killed for writing more than it may
  unknownEnd = 4,     ///< ended, but how cannot be learnt: somebody else has waited for it
};

/// A program to be run, what it is told, and what it may take.
struct ExternalTool {
  /// A path, or a name that is looked for in $PATH.
  std::string program;
  /// One argument each, exactly as given: no shell sees them.
  std::vector<std::string> arguments;
  /// What it reads; lent until it has ended. A tool that ends or closes its input earlier is fine.
  std::span<const std::byte> input;
  /// This process's own when empty.
  std::string workingFolder;
  /// 0 or less, or not a number: as long as it takes.
  double timeoutSeconds = 0;
  /// For each of its two streams.
  std::size_t mostOutputBytes = std::size_t{1} << 28;
};

/// What a program wrote and how it ended.
struct ExternalToolResult {
  /// What it wrote to standard output, and to standard error. Never none.
  Ref<Data> output;
  Ref<Data> errorOutput;
  int exitStatus = 0;  ///< 0...255; -1 when a signal ended it
  int signal = 0;      ///< the one that ended it, or 0
};

/// Runs the tool: starts it without a shell, feeds it and collects both of its streams at once, and
/// waits for its end. What others that it started write later is not waited for.
///
/// The tool gets this process's environment, no other open files, and signals as they are by
/// default; it leads a process group of its own. When its time is over it is killed, and with it
/// all of that group; what it moved to other groups is not met. Blocks; any thread, several at a
/// time. The host must not wait for children that are not its own, nor ignore SIGCHLD, which has
/// the system do so: then each tool ends with unknownEnd.
///
/// @return none, with an error, when it could not be run to its end; a tool that fails is a result
[[nodiscard]] TQ_EXPORT std::optional<ExternalToolResult> runExternalTool(
    const ExternalTool& tool, Ref<Error>* error = nullptr);

}  // namespace tq
