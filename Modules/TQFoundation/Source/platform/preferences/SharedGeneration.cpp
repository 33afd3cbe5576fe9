#include <TQFoundation/platform/preferences/detail/SharedGeneration.h>

#include <errno.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <thread>

namespace tq::detail {
namespace {

constexpr mode_t kOwnerOnly = 0600;
constexpr off_t kSize = 4096;  // a page, so that the whole mapping is inside the file

constexpr auto kPatience = std::chrono::seconds(2);  // the limit for a stopped holder
constexpr auto kLongestNap = std::chrono::milliseconds(1);

bool lockFile(int descriptor, int how) noexcept {
  int result;
  do {
    result = ::flock(descriptor, how);
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

}  // namespace

std::unique_ptr<SharedGeneration> SharedGeneration::open(const std::string& path) {
  const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kOwnerOnly);
  if (descriptor < 0) return nullptr;
  // Also if the file is long enough: writing to a hole in it would stop the process on a full disk.
  // The file is never truncated, because other processes map it.
  int failure;
  do {
    failure = ::posix_fallocate(descriptor, 0, kSize);
  } while (failure == EINTR);
  void* memory = MAP_FAILED;
  struct stat status {};
  if (failure == 0) {
    if (::fstat(descriptor, &status) == 0) {
      memory = ::mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    }
    failure = errno;
  }
  if (memory == MAP_FAILED) {
    ::close(descriptor);
    errno = failure;
    return nullptr;
  }
  return std::unique_ptr<SharedGeneration>(new SharedGeneration(
      descriptor, {status.st_dev, status.st_ino}, static_cast<GenerationWords*>(memory)));
}

SharedGeneration::~SharedGeneration() {
  ::munmap(words_, kSize);
  ::close(descriptor_);
}

// File locks have no timed wait, so the lock is tried repeatedly, at first at intervals as short as
// a commit.
bool SharedGeneration::lock() noexcept {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  std::chrono::microseconds nap(20);
  while (!tryLock()) {
    if (errno != EWOULDBLOCK || std::chrono::steady_clock::now() >= deadline) return false;
    std::this_thread::sleep_for(nap);
    nap = std::min<std::chrono::microseconds>(2 * nap, kLongestNap);
  }
  return true;
}

bool SharedGeneration::tryLock() noexcept { return lockFile(descriptor_, LOCK_EX | LOCK_NB); }
void SharedGeneration::unlock() noexcept { lockFile(descriptor_, LOCK_UN); }

bool SharedGeneration::isAt(const std::string& path) const noexcept {
  struct stat there {};
  return ::stat(path.c_str(), &there) == 0 && file_ == File{there.st_dev, there.st_ino};
}

}  // namespace tq::detail
