#include <TQFoundation/platform/files/SafeFile.h>

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/file.h>
#include <unistd.h>

#include <memory>
#include <utility>

#include <TQFoundation/platform/files/FileHandle.h>
#include <TQFoundation/platform/files/StandardStreams.h>
#include <TQFoundation/platform/threads/Random.h>

namespace tq::detail {
namespace {

constexpr int kMostTries = 10'000;  // limit for names that exist already

/// A complete file has this name for the moment between getting a name and being renamed. If a file
/// has it while this process holds the lock of the folder, it was left by a process killed at that
/// moment.
constexpr const char* kPassingName = ".tq-replacement";

std::string randomName() { return ".tq-" + std::to_string(uniformRandom(~std::uint32_t{0})); }

/// Locks a folder against other replacements in it. Does not wait: another program may hold it.
class FolderLock {
 public:
  explicit FolderLock(const std::string& folder)
      : descriptor_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    isLocked_ = descriptor_ >= 0 && ::flock(descriptor_, LOCK_EX | LOCK_NB) == 0;
  }
  ~FolderLock() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

  [[nodiscard]] bool isLocked() const { return isLocked_; }

 private:
  int descriptor_;
  bool isLocked_;
};

/// A new file in the folder of the one that it replaces. It is removed unless it replaces that
/// file. It has no name until it is complete, if the file system supports that.
class Successor {
 public:
  Successor(const std::string& path, mode_t mode) : folder_(folderOfPath(path)) {
    occupyStandardStreams();
    descriptor_ = ::open(folder_.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, mode);
    ownPath_ = "/proc/self/fd/" + std::to_string(descriptor_);
    if (descriptor_ >= 0 && ::access(ownPath_.c_str(), F_OK) != 0) {
      ::close(std::exchange(descriptor_, -1));  // it could not get a name
    }
    for (int tries = 0; descriptor_ < 0 && tries < kMostTries; ++tries) {
      path_ = besidePath(randomName());
      descriptor_ = makeFile(path_, mode);
      if (errno != EEXIST) break;
    }
  }
  ~Successor() {
    if (descriptor_ < 0) return;
    if (!path_.empty()) ::unlink(path_.c_str());
    ::close(descriptor_);
  }
  Successor(const Successor&) = delete;
  Successor& operator=(const Successor&) = delete;

  [[nodiscard]] bool isOpen() const { return descriptor_ >= 0; }

  [[nodiscard]] int descriptor() const { return descriptor_; }

  /// Flushes the file to the disk and renames it to `place`.
  int take(const std::string& place) {
    if (::fsync(descriptor_) != 0) return errno;
    const FolderLock lock(folder_);
    if (path_.empty() && !getName(lock.isLocked())) return errno;
    if (::rename(path_.c_str(), place.c_str()) != 0) return errno;
    path_.clear();
    return 0;
  }

 private:
  [[nodiscard]] std::string besidePath(const std::string& name) const {
    return folder_.ends_with('/') ? folder_ + name : folder_ + "/" + name;
  }

  [[nodiscard]] bool link(const std::string& name) {
    const std::string path = besidePath(name);
    if (::linkat(AT_FDCWD, ownPath_.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) != 0) {
      return false;
    }
    path_ = path;
    return true;
  }

  /// @return false, with errno set, on failure
  [[nodiscard]] bool getName(bool isLocked) {
    if (isLocked) {
      ::unlink(besidePath(kPassingName).c_str());
      if (link(kPassingName)) return true;
      if (errno != EEXIST) return false;
    }
    for (int tries = 0; tries < kMostTries; ++tries) {
      if (link(randomName())) return true;
      if (errno != EEXIST) return false;
    }
    return false;
  }

  const std::string folder_;
  std::string ownPath_;  // of the file while it has no name
  std::string path_;     // empty while it has no name
  int descriptor_ = -1;
};

}  // namespace

bool hasPath(const URL& url) {
  return !url.path().empty() && url.path().find('\0') == std::string::npos;
}

std::string resolvedPath(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> end(::realpath(path.c_str(), nullptr), ::free);
  return end != nullptr ? std::string(end.get()) : path;
}

std::string folderOfPath(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

int makeFile(const std::string& path, mode_t mode) {
  occupyStandardStreams();
  return ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
}

int writeAll(int descriptor, std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    const WriteResult result = writeOnce(descriptor, bytes);
    if (result.count < 0 && result.errorNumber == EINTR) continue;
    if (result.count <= 0) return result.errorNumber != 0 ? result.errorNumber : EIO;
    bytes = bytes.subspan(static_cast<std::size_t>(result.count));
  }
  return 0;
}

int moveIntoPlace(int descriptor, const std::string& from, const std::string& to) {
  return ::fsync(descriptor) == 0 && ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

// Only the owner can read it until it has the old file's permissions.
int writeInPlace(const std::string& path, std::span<const std::byte> bytes,
                 const std::optional<FileAttributes>& before, mode_t mode) {
  Successor successor(path, before ? kOwnersOnly : mode);
  if (!successor.isOpen()) return errno;
  int failure = writeAll(successor.descriptor(), bytes);
  if (failure == 0 && before) failure = takeAttributes(successor.descriptor(), *before);
  if (failure == 0) failure = successor.take(path);
  return failure == 0 ? bringFolderToDisk(folderOfPath(path)) : failure;
}

int bringFolderToDisk(const std::string& folder) {
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return errno == EACCES ? 0 : errno;
  const int failure = ::fsync(descriptor) == 0 || errno == EINVAL ? 0 : errno;
  ::close(descriptor);
  return failure;
}

}  // namespace tq::detail
