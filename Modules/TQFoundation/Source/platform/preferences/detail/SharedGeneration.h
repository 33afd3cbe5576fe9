#pragma once

/// @file SharedGeneration.h
/// Two counters that processes share, and the lock of those who write them.

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace tq::detail {

/// What stands in the mapped file; any content makes sense.
struct GenerationWords {
  std::atomic<std::uint64_t> generation;   ///< odd while somebody writes, or died while writing
  std::atomic<std::uint64_t> incarnation;  ///< how often the database has been replaced
};
static_assert(std::atomic<std::uint64_t>::is_always_lock_free, "the words lie in shared memory");

/// A mapped file of GenerationWords, with its room on the disk taken beforehand. Somebody who cuts
/// the file while it is mapped stops the processes that look into it (SIGBUS): nothing but giving
/// up the mapping would help. The lock goes when its holder dies. Threads: one at a time, but for
/// the words.
class SharedGeneration {
 public:
  /// Makes the file where there is none. @return none on failure, with errno set
  [[nodiscard]] static std::unique_ptr<SharedGeneration> open(const std::string& path);
  ~SharedGeneration();
  SharedGeneration(const SharedGeneration&) = delete;
  SharedGeneration& operator=(const SharedGeneration&) = delete;

  [[nodiscard]] GenerationWords& words() const noexcept { return *words_; }

  /// Waits for the lock, 2 s at most. @return false, with errno set, when somebody else still holds
  /// it, and when there are no locks here
  [[nodiscard]] bool lock() noexcept;
  /// False when somebody else holds it, too.
  [[nodiscard]] bool tryLock() noexcept;
  void unlock() noexcept;

  /// False when the file was removed, or another one put in its place.
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
