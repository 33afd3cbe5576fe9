#pragma once

/// @file SharedGeneration.h
/// Two counters that processes share through a mapped file, with a lock for writers.

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace tq::detail {

/// The content of the mapped file. Any bytes are valid.
struct GenerationWords {
  std::atomic<std::uint64_t> generation;   ///< odd while a process writes, or died while writing
  std::atomic<std::uint64_t> incarnation;  ///< the number of times the database was replaced
};
static_assert(std::atomic<std::uint64_t>::is_always_lock_free, "the words lie in shared memory");

/// A mapped file of GenerationWords, whose disk space is allocated in advance. If another program
/// truncates the file while it is mapped, processes that access it stop with SIGBUS; only reading
/// without a mapping would avoid that. The lock is released if its holder dies.
///
/// Threads: one at a time; the words from any.
class SharedGeneration {
 public:
  /// Opens the file, or creates it. @return null on failure, with errno set
  [[nodiscard]] static std::unique_ptr<SharedGeneration> open(const std::string& path);
  ~SharedGeneration();
  SharedGeneration(const SharedGeneration&) = delete;
  SharedGeneration& operator=(const SharedGeneration&) = delete;

  [[nodiscard]] GenerationWords& words() const noexcept { return *words_; }

  /// Waits for the lock, at most 2 s.
  /// @return false, with errno set, if another process still holds it, or there are no locks
  [[nodiscard]] bool lock() noexcept;
  /// Locks without waiting. @return false on failure, as lock()
  [[nodiscard]] bool tryLock() noexcept;
  void unlock() noexcept;

  /// Returns false if the file was removed or replaced.
  [[nodiscard]] bool isAt(const std::string& path) const noexcept;

 private:
  struct File {
    dev_t device;
    ino_t inode;
    bool operator==(const File&) const = default;
  };
  SharedGeneration(int descriptor, File file, GenerationWords* words) noexcept
      : descriptor_(descriptor), file_(file), words_(words) {}

  int descriptor_;
  const File file_;
  GenerationWords* words_;
};

}  // namespace tq::detail
