#include <TQFoundation/platform/files/FileReading.h>

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <new>
#include <string>

#include <TQFoundation/objects/FilledData.h>
#include <TQFoundation/platform/files/FileError.h>
#include <TQFoundation/platform/files/RegularFile.h>

namespace tq {
namespace {

using detail::FilledData;

constexpr std::size_t kLargestFile = std::size_t{1} << 36;

/// Reads to the end of the file. The size of `data` is a hint: files grow, and files of the kernel
/// report a size of 0.
/// @return 0 or the system's error number
int readAll(int descriptor, FilledData& data) {
  std::size_t length = 0;
  for (;;) {
    if (length == data.room().size()) data.grow(std::max<std::size_t>(4096, 2 * length));
    const std::span<std::byte> room = data.room().subspan(length);
    const ssize_t count = ::read(descriptor, room.data(), room.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    if (count == 0) break;
    length += static_cast<std::size_t>(count);
  }
  data.setLength(length);
  return 0;
}

}  // namespace

Ref<FileHandle> detail::openRegularFile(const URL& url, std::size_t& size, Ref<Error>* error) {
  const auto fail = [&](int errorNumber) {
    setOutError(error, fileError(FileUse::reading, url, errorNumber));
    return nullptr;
  };
  if (url.path().find('\0') != std::string::npos) return fail(EINVAL);  // a NUL would end the path
  // Non-blocking: a pipe without a writer is an error.
  const int descriptor = ::open(url.path().c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (descriptor < 0) return fail(errno);
  Ref<FileHandle> file = FileHandle::fileHandleWithFileDescriptor(descriptor, true);

  struct stat status {};
  if (::fstat(descriptor, &status) != 0) return fail(errno);
  if (S_ISDIR(status.st_mode)) return fail(EISDIR);
  if (!S_ISREG(status.st_mode)) {
    setOutError(error, fileError(FileUse::reading, url, EINVAL,
                                 "The file “" + std::string(url.lastPathComponent()) +
                                     "” couldn’t be opened because it is not a regular file."));
    return nullptr;
  }
  size = static_cast<std::size_t>(status.st_size);
  return file;
}

Ref<Data> dataWithContentsOfURL(const URL& url, Ref<Error>* error) {
  const auto fail = [&](int errorNumber) {
    setOutError(error, detail::fileError(detail::FileUse::reading, url, errorNumber));
    return nullptr;
  };
  std::size_t size = 0;
  const Ref<FileHandle> file = detail::openRegularFile(url, size, error);
  if (file == nullptr) return nullptr;
  if (size > kLargestFile) return fail(EFBIG);
  try {
    // One byte more than the size, so that the end is found without growing.
    const Ref<FilledData> data = makeRef<FilledData>(size + 1);
    const int failure = readAll(file->fileDescriptor(), *data);
    return failure == 0 ? Ref<Data>(data) : fail(failure);
  } catch (const std::bad_alloc&) {
    return fail(EFBIG);
  }
}

}  // namespace tq
