#pragma once

/// @file TQAssert.h
/// Assertions that stop the process, in every build.

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Writes one line to standard error and aborts (SIGABRT):
///
///     Assertion failed: (<condition>), function <function>, file Modules/…/<family>, line <line>.
///
/// @param function   the function whose precondition does not hold
/// @param file       path of the source file; only the name without extension is printed
/// @param condition  source text of the condition
///
/// Any thread. It allocates nothing, so it also works when memory is exhausted.
[[noreturn]] TQ_EXPORT void assertionFailed(const char* function, const char* file, int line,
                                            const char* condition) noexcept;

}  // namespace tq

/// Stops the process if `condition` is false, in release builds too.
#define TQ_ASSERT(condition)                         \
  (__builtin_expect(static_cast<bool>(condition), 1) \
       ? static_cast<void>(0)                        \
       : ::tq::assertionFailed(__func__, __FILE__, __LINE__, #condition))
