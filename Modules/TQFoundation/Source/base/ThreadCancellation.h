#pragma once

/// @file ThreadCancellation.h
/// The exception of a cancelled thread.

#include <cxxabi.h>

#include <exception>

namespace tq {

/// Unwinds the stack of a thread that pthread_cancel() ends. A handler that catches everything must
/// throw it again, or the process stops. libc++ has no such type and does not support cancelled
/// threads.
#ifdef __GLIBCXX__
using ThreadCancellation = abi::__forced_unwind;
#else
struct ThreadCancellation {};
#endif

}  // namespace tq
