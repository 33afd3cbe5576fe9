#include <TQFoundation/platform/preferences/detail/SharedGeneration.h>

#include <errno.h>
#include <pthread.h>
#include <sys/ipc.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <new>
#include <string_view>
#include <thread>

namespace tq::detail {
namespace {

constexpr int kOwnerOnly = 0600;
constexpr mode_t kOthersWrite = S_IWGRP | S_IWOTH;
constexpr int kAttempts = 16;  // keys of other programs, and segments that are just being removed

constexpr auto kPatience = std::chrono::seconds(2);  // the limit for a stopped holder
constexpr auto kLongestNap = std::chrono::milliseconds(1);

/// Calls `isDone` at intervals, which are as short as a commit at first.
template <class Condition>
bool waitUntil(Condition isDone) {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  std::chrono::microseconds nap(20);
  while (!isDone()) {
    if (std::chrono::steady_clock::now() >= deadline) return false;
    std::this_thread::sleep_for(nap);
    nap = std::min<std::chrono::microseconds>(2 * nap, kLongestNap);
  }
  return true;
}

/// 64-bit FNV-1a.
std::uint64_t hash(std::string_view bytes) noexcept {
  std::uint64_t sum = 0xCBF29CE484222325;
  for (const char byte : bytes) sum = (sum ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
  return sum;
}

}  // namespace

struct SharedGeneration::Segment {
  std::atomic<std::uint64_t> isReady;  ///< 0 until its creator has set the rest
  Identity identity;
  GenerationWords words;
  pthread_mutex_t mutex;  ///< robust: it can be locked again if its holder died
};

GenerationWords& SharedGeneration::words() const noexcept { return segment_->words; }

std::unique_ptr<SharedGeneration> SharedGeneration::open(const std::string& folder,
                                                         const std::string& name) {
  struct stat status {};
  if (::stat(folder.c_str(), &status) != 0) return nullptr;
  const uid_t user = ::geteuid();
  if ((status.st_mode & kOthersWrite) != 0 || (user != status.st_uid && user != 0)) {
    errno = EACCES;
    return nullptr;
  }
  const Identity identity{status.st_dev, status.st_ino, hash(name)};
  const std::uint64_t sum =
      hash(std::string_view(reinterpret_cast<const char*>(&identity), sizeof identity));
  auto key = static_cast<key_t>(sum >> 33);  // positive
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    if (key == IPC_PRIVATE) ++key;
    int id = ::shmget(key, sizeof(Segment), IPC_CREAT | IPC_EXCL | kOwnerOnly);
    const bool isNew = id >= 0;
    if (!isNew && errno != EEXIST) return nullptr;
    if (!isNew) id = ::shmget(key, sizeof(Segment), kOwnerOnly);
    shmid_ds state{};
    if (id >= 0 && ::shmctl(id, IPC_STAT, &state) == 0) {
      const bool isOurs =
          isNew || (state.shm_perm.uid == status.st_uid && state.shm_segsz == sizeof(Segment) &&
                    (state.shm_perm.mode & 0777) == kOwnerOnly);
      if (isNew && user != status.st_uid) {
        state.shm_perm.uid = status.st_uid;
        ::shmctl(id, IPC_SET, &state);
      }
      if (auto opened = isOurs ? attach(id, identity, isNew) : nullptr) return opened;
      if (isOurs && errno == EAGAIN) continue;  // removed meanwhile
    } else if (errno == EIDRM || errno == ENOENT) {
      continue;
    }
    ++key;  // another program's
  }
  return nullptr;
}

/// @return null if the segment was removed meanwhile, with errno = EAGAIN, or cannot be used
std::unique_ptr<SharedGeneration> SharedGeneration::attach(int id, const Identity& identity,
                                                           bool isNew) {
  void* const memory = ::shmat(id, nullptr, 0);
  if (memory == reinterpret_cast<void*>(-1)) {
    if (errno == EIDRM || errno == EINVAL) errno = EAGAIN;
    return nullptr;
  }
  auto* const segment = static_cast<Segment*>(memory);  // zeros, if new
  if (isNew) {
    segment->identity = identity;
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    pthread_mutex_init(&segment->mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
    segment->isReady.store(1);
  }
  // A creator that was killed leaves a segment that is never ready. A suspended one finds it
  // retired.
  if (!waitUntil([&] { return segment->isReady.load() != 0; })) segment->words.isRetired.store(1);
  const bool isOver = segment->words.isRetired.load() != 0;
  if (!isOver && segment->identity == identity) {
    return std::unique_ptr<SharedGeneration>(new SharedGeneration(id, segment));
  }
  if (isOver) ::shmctl(id, IPC_RMID, nullptr);
  ::shmdt(memory);
  errno = isOver ? EAGAIN : EEXIST;
  return nullptr;
}

// A process may attach the segment between the count and the removal. It finds the words retired.
SharedGeneration::~SharedGeneration() {
  shmid_ds state{};
  if (::shmctl(id_, IPC_STAT, &state) == 0 && state.shm_nattch == 1) {
    ::shmctl(id_, IPC_RMID, nullptr);
    words().isRetired.store(1);
    words().generation.fetch_add(2);
  }
  ::shmdt(segment_);
}

bool SharedGeneration::lock() noexcept {
  return waitUntil([this] { return tryLock(); });
}

bool SharedGeneration::tryLock() noexcept {
  const int result = pthread_mutex_trylock(&segment_->mutex);
  if (result == EOWNERDEAD) pthread_mutex_consistent(&segment_->mutex);
  errno = result == EBUSY ? EWOULDBLOCK : result;
  return result == 0 || result == EOWNERDEAD;
}

void SharedGeneration::unlock() noexcept { pthread_mutex_unlock(&segment_->mutex); }

bool SharedGeneration::isOf(const std::string& folder) const noexcept {
  struct stat status {};
  shmid_ds state{};
  return ::stat(folder.c_str(), &status) == 0 && segment_->identity.device == status.st_dev &&
         segment_->identity.inode == status.st_ino && words().isRetired.load() == 0 &&
         ::shmctl(id_, IPC_STAT, &state) == 0 && (state.shm_perm.mode & SHM_DEST) == 0;
}

}  // namespace tq::detail
