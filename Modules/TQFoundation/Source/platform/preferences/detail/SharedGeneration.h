#pragma once

/// @file SharedGeneration.h
/// Counters that the processes of a user share, with a lock for writers.

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace tq::detail {

/// The shared counters. Any values are valid.
struct GenerationWords {
  std::atomic<std::uint64_t> generation;   ///< odd while a process writes, or died while writing
  std::atomic<std::uint64_t> incarnation;  ///< the number of times the database was replaced
  std::atomic<std::uint64_t> isRetired;    ///< not 0: new processes use another segment
};
static_assert(std::atomic<std::uint64_t>::is_always_lock_free, "the words are in shared memory");

/// A System V shared memory segment with GenerationWords, found by the folder's device and inode.
///
/// The words are not in a mapped file, because a process that reads a mapped file after another
/// program has truncated it is killed by SIGBUS. The kernel has no call that shortens a segment,
/// and a removed segment stays valid for the processes that have attached it. A segment needs no
/// disk space, no permission to write in the folder, and no descriptor. The last process that
/// closes it removes it. If processes end without closing it, it stays for the next one: 4 KiB
/// until the user's session ends.
///
/// Only the owner of the folder and the superuser share words, and only if no other user can write
/// in the folder. Processes in another IPC namespace have other words.
///
/// Threads: one at a time; the words from any.
class SharedGeneration {
 public:
  /// Opens the words of the store `name` in `folder`, or creates them.
  /// @return null on failure, with errno set
  [[nodiscard]] static std::unique_ptr<SharedGeneration> open(const std::string& folder,
                                                              const std::string& name);
  ~SharedGeneration();
  SharedGeneration(const SharedGeneration&) = delete;
  SharedGeneration& operator=(const SharedGeneration&) = delete;

  [[nodiscard]] GenerationWords& words() const noexcept;

  /// Waits for the lock, at most 2 s. The lock is released if its holder dies.
  /// @return false, with errno set, if another process still holds it
  [[nodiscard]] bool lock() noexcept;
  /// Locks without waiting. @return false on failure, as lock()
  [[nodiscard]] bool tryLock() noexcept;
  void unlock() noexcept;

  /// Returns false if a new process would open other words for this folder.
  [[nodiscard]] bool isOf(const std::string& folder) const noexcept;

 private:
  struct Segment;
  /// The store that the words belong to.
  struct Identity {
    dev_t device = 0;
    ino_t inode = 0;
    std::uint64_t name = 0;
    bool operator==(const Identity&) const = default;
  };
  SharedGeneration(int id, Segment* segment) noexcept : id_(id), segment_(segment) {}

  [[nodiscard]] static std::unique_ptr<SharedGeneration> attach(int id, const Identity& identity,
                                                                bool isNew);

  const int id_;
  Segment* const segment_;
};

}  // namespace tq::detail
