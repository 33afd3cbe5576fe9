// The program's own definitions of these calls replace the C library's, for every library in the
// process.

#include <support/FailingSystemCalls.h>

#include <dlfcn.h>

using tq::test::FailingSystemCalls;

#define TQ_FAILING_CALL(name, Result, parameters, arguments, ...)                             \
  extern "C" __attribute__((visibility("default"))) Result name parameters {                  \
    static const auto real = reinterpret_cast<Result(*) parameters>(dlsym(RTLD_NEXT, #name)); \
    return FailingSystemCalls::fails(__VA_ARGS__) ? -1 : real arguments;                      \
  }
TQ_FAILING_CALL(pwrite, ssize_t, (int fd, const void* bytes, size_t count, off_t at),
                (fd, bytes, count, at), at + static_cast<off_t>(count))
TQ_FAILING_CALL(pwrite64, ssize_t, (int fd, const void* bytes, size_t count, off64_t at),
                (fd, bytes, count, at), at + static_cast<off_t>(count))
TQ_FAILING_CALL(fsync, int, (int fd), (fd))
TQ_FAILING_CALL(fdatasync, int, (int fd), (fd))
TQ_FAILING_CALL(ftruncate, int, (int fd, off_t length), (fd, length))
TQ_FAILING_CALL(ftruncate64, int, (int fd, off64_t length), (fd, length))
TQ_FAILING_CALL(rename, int, (const char* from, const char* to), (from, to))
TQ_FAILING_CALL(linkat, int,
                (int fromFolder, const char* from, int toFolder, const char* to, int flags),
                (fromFolder, from, toFolder, to, flags))
TQ_FAILING_CALL(fsetxattr, int,
                (int fd, const char* name, const void* value, size_t size, int flags),
                (fd, name, value, size, flags))
#undef TQ_FAILING_CALL

#define TQ_FAILING_CALL(name, Result, parameters, arguments)                                   \
  extern "C" __attribute__((visibility("default"))) Result name parameters {                   \
    static const auto real = reinterpret_cast<Result(*) parameters>(dlsym(RTLD_NEXT, #name));  \
    return FailingSystemCalls::countsAll && FailingSystemCalls::fails() ? -1 : real arguments; \
  }
struct stat;
TQ_FAILING_CALL(open, int, (const char* path, int flags, mode_t mode), (path, flags, mode))
TQ_FAILING_CALL(read, ssize_t, (int fd, void* bytes, size_t count), (fd, bytes, count))
TQ_FAILING_CALL(pipe2, int, (int* ends, int flags), (ends, flags))
TQ_FAILING_CALL(lstat, int, (const char* path, struct stat* status), (path, status))
TQ_FAILING_CALL(fstat, int, (int fd, struct stat* status), (fd, status))
TQ_FAILING_CALL(flock, int, (int fd, int operation), (fd, operation))
TQ_FAILING_CALL(fchown, int, (int fd, uid_t user, gid_t group), (fd, user, group))
TQ_FAILING_CALL(fchmod, int, (int fd, mode_t mode), (fd, mode))
TQ_FAILING_CALL(fremovexattr, int, (int fd, const char* name), (fd, name))
TQ_FAILING_CALL(llistxattr, ssize_t, (const char* path, char* names, size_t size),
                (path, names, size))
TQ_FAILING_CALL(lgetxattr, ssize_t, (const char* path, const char* name, void* value, size_t size),
                (path, name, value, size))
#undef TQ_FAILING_CALL

extern "C" __attribute__((visibility("default"))) ssize_t write(int fd, const void* bytes,
                                                                size_t count) {
  static const auto real = reinterpret_cast<FailingSystemCalls::Write>(dlsym(RTLD_NEXT, "write"));
  if (FailingSystemCalls::fails()) return -1;
  const FailingSystemCalls::Write instead = FailingSystemCalls::insteadOfWrite;
  return (instead != nullptr ? instead : real)(fd, bytes, count);
}
