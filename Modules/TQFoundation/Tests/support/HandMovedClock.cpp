// The program's own definition of clock_gettime() replaces the C library's, for every library in
// the process.

#include <support/HandMovedClock.h>

#include <dlfcn.h>
#include <time.h>

extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock,
                                                                    timespec* time) noexcept {
  const auto* const fake = tq::test::HandMovedClock::current();
  if (fake != nullptr && (clock == CLOCK_MONOTONIC || clock == CLOCK_REALTIME)) {
    const auto nanoseconds = fake->now().count();
    *time = {nanoseconds / 1'000'000'000, nanoseconds % 1'000'000'000};
    return 0;
  }
  static const auto real =
      reinterpret_cast<int (*)(clockid_t, timespec*)>(dlsym(RTLD_NEXT, "clock_gettime"));
  const int result = real(clock, time);
  if (clock == CLOCK_REALTIME) time->tv_sec += tq::test::wallClockOffset;
  return result;
}
