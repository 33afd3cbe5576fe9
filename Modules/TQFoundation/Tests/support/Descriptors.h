#pragma once

#include <sys/resource.h>

#include <algorithm>

// The sanitizer of undefined behaviour opens pipes, and reports valid objects if it cannot.
#if defined(__has_feature)
#if __has_feature(undefined_behavior_sanitizer)
#define TQ_TEST_NEEDS_DESCRIPTORS
#endif
#endif

namespace tq::test {

/// Lets this process open no descriptor of this number or above. Has no effect if the tests need
/// descriptors themselves.
inline void allowDescriptors([[maybe_unused]] rlim_t count) {
#ifndef TQ_TEST_NEEDS_DESCRIPTORS
  rlimit limit{};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = std::min(count, limit.rlim_max);
  ::setrlimit(RLIMIT_NOFILE, &limit);
#endif
}

}  // namespace tq::test
