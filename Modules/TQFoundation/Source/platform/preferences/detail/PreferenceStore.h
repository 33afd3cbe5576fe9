#pragma once

/// @file PreferenceStore.h
/// A domain of preferences: its entries in memory and their database.

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/platform/log/LogChannel.h>
#include <TQFoundation/platform/preferences/detail/PreferenceDatabase.h>
#include <TQFoundation/platform/preferences/detail/SharedGeneration.h>
#include <TQFoundation/platform/threads/Lock.h>

namespace tq::detail {

/// The entries of a domain. Every change increments a generation number that the processes of the
/// user share:
///
/// | generation | meaning |
/// |---|---|
/// | even, equal to that of our copy | the copy equals the database |
/// | even, another number | the database must be read |
/// | odd, and the lock is held | a process writes: read the database, but do not keep the copy |
/// | odd, and the lock is free | a writer died: the first process that sees it makes it even |
///
/// If there is nothing to share (see SharedGeneration), the number stays odd, and each read asks
/// the database whether it has changed, which takes about 50 times as long.
///
/// Each thread retains the last copy that it has seen. So a read takes no lock and retains nothing:
/// it compares the generation and searches the copy. The first read after a change makes a new
/// copy, which takes a pointer for each entry.
///
/// Removed and replaced files are noticed at the first change that comes a second or more after the
/// last check, and by synchronize(). A removed database is created again, and one that was replaced
/// by an older copy is used, with the changes since that check; older entries are lost. A symbolic
/// link that was changed counts as a replaced database. A truncated or lost file counts as damage:
/// all entries that this process knows are saved again. A check at each change would cost a fifth
/// of a commit.
///
/// Threads: any. A forked child must not use its parent's stores.
class PreferenceStore {
 public:
  /// Returns the store of this absolute path (without extension), shared within the process. A name
  /// without a folder cannot be saved. An empty path returns a new store in memory.
  [[nodiscard]] static std::shared_ptr<PreferenceStore> at(const std::string& path);

  explicit PreferenceStore(std::string path);
  ~PreferenceStore();

  /// Returns the current entries. Valid until this thread's next call on any store.
  [[nodiscard]] const Dictionary& entries() {
    const Slot& slot = slots[slot_];
    // Acquire: a thread that sees a new generation also sees the change.
    const GenerationWords& words = *words_.load(std::memory_order_acquire);
    if (slot.edition == edition_.load(std::memory_order_acquire) &&
        slot.generation == words.generation.load(std::memory_order_acquire)) [[likely]] {
      return *slot.entries;
    }
    return refresh();
  }

  /// Sets the value, which must be immutable, or removes the entry if it is null. `bytes` is the
  /// serialised value. A change that cannot be saved is kept in memory, saved with the next change
  /// if possible, and reported to the log.
  void set(std::string_view key, Ref<Object> value, Ref<Data> bytes);

  /// Saves the changes that could not be saved before. @return false if they cannot be saved
  [[nodiscard]] bool synchronize(Ref<Error>* error);

  /// Makes the next read see the changes of all processes, also of those with other shared words.
  /// @return false if a process may write at this moment
  [[nodiscard]] bool noticeChanges();

  /// Returns the path of the database, and that of its target if it is a symbolic link.
  [[nodiscard]] std::vector<std::string> files() const;

 private:
  using Clock = std::chrono::steady_clock;

  /// A thread's copy of a store. It has no destructor, so that access needs no initialisation
  /// check. If there are more stores than slots, stores share a slot and replace each other's copy.
  struct Slot {
    std::uint64_t edition = 0;
    std::uint64_t generation = 0;
    const Dictionary* entries = nullptr;
  };
  struct SlotOwner;
  static constexpr std::size_t kSlots = 8;
  static thread_local constinit std::array<Slot, kSlots> slots [[gnu::tls_model("initial-exec")]];

  /// Odd, so it is never the generation of a copy.
  static constexpr std::uint64_t kUnknown = ~std::uint64_t{0};

  const Dictionary& refresh();
  [[nodiscard]] Ref<Dictionary> merged() const TQ_REQUIRES(lock_);
  void changedInMemory() TQ_REQUIRES(lock_);
  [[nodiscard]] std::uint64_t settledGeneration() TQ_REQUIRES(lock_);
  void load(std::uint64_t generation) TQ_REQUIRES(lock_);
  void look() TQ_REQUIRES(lock_);
  [[nodiscard]] bool flush() TQ_REQUIRES(lock_);
  [[nodiscard]] PreferenceDatabase::Result save() TQ_REQUIRES(lock_);
  [[nodiscard]] PreferenceDatabase::Result saveWhatFits() TQ_REQUIRES(lock_);
  void keepSaved(PreferenceChanges& saved) TQ_REQUIRES(lock_);
  [[nodiscard]] PreferenceDatabase::Result readEntries() TQ_REQUIRES(lock_);
  void shareGeneration() TQ_REQUIRES(lock_);
  void stopSharing() TQ_REQUIRES(lock_);
  [[nodiscard]] bool makeFolder() TQ_REQUIRES(lock_);
  void closeFormerDatabase() TQ_REQUIRES(lock_);
  [[nodiscard]] bool openToRead() TQ_REQUIRES(lock_);
  [[nodiscard]] bool openToWrite() TQ_REQUIRES(lock_);
  [[nodiscard]] bool setAside(const std::string& reason) TQ_REQUIRES(lock_);
  void saveAllAgain() TQ_REQUIRES(lock_);
  void complain(std::string_view what, std::string_view why) TQ_REQUIRES(lock_);

  struct Message {
    LogLevel level;
    std::string text;
  };
  static void tell(const std::vector<Message>& messages);

  const std::size_t slot_;
  const std::string path_;
  const std::string folder_;
  /// Used while no words are shared. Even for a store in memory, otherwise odd.
  GenerationWords ownWords_{};
  std::atomic<GenerationWords*> words_;
  /// A number that changes with each state that the generation does not cover. No two stores ever
  /// have the same edition.
  std::atomic<std::uint64_t> edition_;

  Lock lock_;
  std::unique_ptr<SharedGeneration> shared_ TQ_GUARDED_BY(lock_);
  /// Words of removed folders: a thread may still read them.
  std::vector<std::unique_ptr<SharedGeneration>> former_ TQ_GUARDED_BY(lock_);
  PreferenceDatabase database_ TQ_GUARDED_BY(lock_);
  std::uint64_t incarnation_ TQ_GUARDED_BY(lock_) = 0;  ///< of the open database
  Ref<MutableDictionary> entries_ TQ_GUARDED_BY(lock_);
  std::uint64_t entriesGeneration_ TQ_GUARDED_BY(lock_) = kUnknown;
  /// A copy of entries_ and unsaved_; null if stale.
  Ref<Dictionary> snapshot_ TQ_GUARDED_BY(lock_);
  PreferenceChanges unsaved_ TQ_GUARDED_BY(lock_);
  PreferenceChanges recent_ TQ_GUARDED_BY(lock_);  ///< saved since the last check of the files
  Clock::time_point looked_ TQ_GUARDED_BY(lock_);
  std::string complaint_ TQ_GUARDED_BY(lock_);          ///< empty after a success
  std::vector<Message> messages_ TQ_GUARDED_BY(lock_);  ///< logged after the lock is released
};

}  // namespace tq::detail
