#include <TQFoundation/platform/files/FileHandle.h>

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include <string>

#include <TQFoundation/platform/files/FileError.h>
#include <TQFoundation/platform/files/StandardStreams.h>

namespace tq {
Ref<FileHandle> FileHandle::fileHandleForWritingToURL(const URL& url, Ref<Error>* error) {
  detail::occupyStandardStreams();
  int descriptor = -1;
  int failure = EINVAL;  // a NUL would end the path
  if (url.path().find('\0') == std::string::npos) {
    do {
      descriptor = ::open(url.path().c_str(), O_WRONLY | O_CLOEXEC);
      failure = errno;
    } while (descriptor < 0 && failure == EINTR);
  }
  if (descriptor < 0) {
    setOutError(error, detail::fileError(detail::FileUse::writing, url, failure));
    return nullptr;
  }
  return fileHandleWithFileDescriptor(descriptor, true);
}

Ref<FileHandle> FileHandle::fileHandleWithFileDescriptor(int descriptor, bool closeOnDealloc) {
  try {
    return Ref<FileHandle>::adopt(new FileHandle(descriptor, closeOnDealloc));
  } catch (...) {
    if (closeOnDealloc) ::close(descriptor);
    throw;
  }
}

FileHandle::~FileHandle() {
  if (closeOnDealloc_) closeFile();
}

// Closed once, even if close() fails: on Linux the descriptor is released even after EINTR, and a
// second attempt could close another thread's file.
void FileHandle::closeFile() noexcept {
  if (descriptor_ >= 0) ::close(descriptor_);
  descriptor_ = -1;
}

WriteResult writeOnce(int descriptor, std::span<const std::byte> bytes) noexcept {
  errno = 0;  // a short write does not set it, and must not report an older number
  const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
  return {count, errno};
}

}  // namespace tq
