#pragma once

// Threads that cannot be created, or whose creation takes long, on demand. Include it once per
// executable: it replaces the system's function. A sanitizer's function is used if there is one.

#include <dlfcn.h>
#include <errno.h>
#include <pthread.h>

#include <atomic>

namespace tq::test {
inline std::atomic<bool> hasThreads = true;
inline constinit std::atomic<void (*)()> afterCreation{[] {}};  // called by the creating thread
using CreateThread = int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
}  // namespace tq::test

extern "C" __attribute__((weak)) tq::test::CreateThread __interceptor_pthread_create;
extern "C" __attribute__((visibility("default"))) int pthread_create(pthread_t* thread,
                                                                     const pthread_attr_t* how,
                                                                     void* (*run)(void*),
                                                                     void* argument) noexcept {
  static tq::test::CreateThread* const real =
      __interceptor_pthread_create != nullptr
          ? __interceptor_pthread_create
          : reinterpret_cast<tq::test::CreateThread*>(dlsym(RTLD_NEXT, "pthread_create"));
  const int result = tq::test::hasThreads ? real(thread, how, run, argument) : EAGAIN;
  tq::test::afterCreation.load()();
  return result;
}
