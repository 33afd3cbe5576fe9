#pragma once

/// @file TQAssert.h
/// Broken preconditions stop the process, in every build.

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Writes one line to standard error and aborts (SIGABRT):
///
///     Assertion failed: (<condition>), function <function>, file Modules/…/<family>, line <line>.
///
/// @param function   the function whose precondition is broken
/// @param file       path of the source; only its stem, the family's name, is printed
/// @param condition  the text of the condition that did not hold
/// Any thread. Allocates nothing, so it also works when memory is exhausted.
[[noreturn]] TQ_EXPORT void assertionFailed(const char* function, const char* file, int line,
                                            const char* condition) noexcept;

}  // namespace tq

/// Stops the process when `condition` is false. Stays active in release builds.
#define TQ_ASSERT(condition)                         \
  (__builtin_expect(static_cast<bool>(condition), 1) \
       ? static_cast<void>(0)                        \
       : ::tq::assertionFailed(__func__, __FILE__, __LINE__, #condition))
