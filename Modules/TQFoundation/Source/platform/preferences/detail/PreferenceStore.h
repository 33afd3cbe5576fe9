#pragma once

/// @file PreferenceStore.h
/// One domain of preferences: its entries in memory, and their database.

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

/// The entries of a domain. Every change raises a generation that all processes share, by way of a
/// mapped file beside the database:
///
/// | generation | means |
/// |---|---|
/// | even, as of one's own copy | the copy is what the database holds |
/// | even, another one | read the database |
/// | odd, and the lock is held | somebody writes: what the database holds is good, but not kept |
/// | odd, and the lock is free | a writer died: whoever sees it first makes it even again |
///
/// Each thread holds the last copy it has seen, so that a read takes no lock and no count: it
/// compares the generation and looks into the copy. The first read after a change makes a new copy,
/// at a pointer an entry.
///
/// Files that somebody removes are missed at the first change a second or more after they were seen
/// last, or when all is to be saved. They are then made anew with what was written since they were
/// seen; entries from before are gone. Looking at each change would cost a fifth of a commit.
///
/// Threads: any. A forked child must not use its parent's stores.
class PreferenceStore {
 public:
  /// The store of this path (without extension), shared within the process. An empty path gives a
  /// new store that keeps its entries in memory.
  [[nodiscard]] static std::shared_ptr<PreferenceStore> at(const std::string& path);

  explicit PreferenceStore(std::string path);
  ~PreferenceStore();

  /// The entries of this moment; lent until the thread's next call on any store.
  [[nodiscard]] const Dictionary& entries() {
    const Slot& slot = slots[slot_];
    // Acquire: a change that the words tell of is seen by whoever then looks for it.
    const GenerationWords& words = *words_.load(std::memory_order_acquire);
    if (slot.edition == edition_.load(std::memory_order_acquire) &&
        slot.generation == words.generation.load(std::memory_order_acquire)) [[likely]] {
      return *slot.entries;
    }
    return refresh();
  }

  /// Sets the value, or removes it when none. It must be immutable, `bytes` what stands for it.
  /// What cannot be written stays in memory, is tried again with the next change, and is told to
  /// the log.
  void set(std::string_view key, Ref<Object> value, Ref<Data> bytes);

  /// Writes what could not be written before. @return false when it still cannot
  [[nodiscard]] bool synchronize(Ref<Error>* error);

 private:
  using Clock = std::chrono::steady_clock;

  /// What a thread knows of a store. No destructor, so that reading it needs no check. More stores
  /// than slots share them, and drive each other out.
  struct Slot {
    std::uint64_t edition = 0;
    std::uint64_t generation = 0;
    const Dictionary* entries = nullptr;
  };
  struct SlotOwner;
  static constexpr std::size_t kSlots = 8;
  static thread_local constinit std::array<Slot, kSlots> slots [[gnu::tls_model("initial-exec")]];

  /// Odd, and so never the generation of a copy.
  static constexpr std::uint64_t kUnknown = ~std::uint64_t{0};

  const Dictionary& refresh();
  [[nodiscard]] Ref<Dictionary> merged() const TQ_REQUIRES(lock_);
  void changedInMemory() TQ_REQUIRES(lock_);
  [[nodiscard]] std::uint64_t settledGeneration() TQ_REQUIRES(lock_);
  void load(std::uint64_t generation) TQ_REQUIRES(lock_);
  void look() TQ_REQUIRES(lock_);
  [[nodiscard]] bool flush() TQ_REQUIRES(lock_);
  [[nodiscard]] bool mapGeneration() TQ_REQUIRES(lock_);
  void closeFormerDatabase() TQ_REQUIRES(lock_);
  [[nodiscard]] bool openToRead() TQ_REQUIRES(lock_);
  [[nodiscard]] bool openToWrite() TQ_REQUIRES(lock_);
  [[nodiscard]] bool setAside() TQ_REQUIRES(lock_);
  void complain(std::string_view what, std::string_view why) TQ_REQUIRES(lock_);

  struct Message {
    LogLevel level;
    std::string text;
  };
  static void tell(const std::vector<Message>& messages);

  const std::size_t slot_;
  const std::string path_;
  GenerationWords ownWords_{};  ///< always 0; until the shared ones are there
  std::atomic<GenerationWords*> words_;
  /// Another number for every state of this store that the generation does not tell of. No two
  /// stores ever have the same.
  std::atomic<std::uint64_t> edition_;

  Lock lock_;
  std::unique_ptr<SharedGeneration> shared_ TQ_GUARDED_BY(lock_);
  /// Those whose file is gone: a thread may be looking into their words.
  std::vector<std::unique_ptr<SharedGeneration>> former_ TQ_GUARDED_BY(lock_);
  PreferenceDatabase database_ TQ_GUARDED_BY(lock_);
  std::uint64_t incarnation_ TQ_GUARDED_BY(lock_) = 0;  ///< of the database that is open
  Ref<MutableDictionary> entries_ TQ_GUARDED_BY(lock_);
  std::uint64_t entriesGeneration_ TQ_GUARDED_BY(lock_) = kUnknown;
  Ref<Dictionary> snapshot_
      TQ_GUARDED_BY(lock_);  ///< a copy of entries_ and unsaved_; none when stale
  PreferenceChanges unsaved_ TQ_GUARDED_BY(lock_);
  PreferenceChanges recent_ TQ_GUARDED_BY(lock_);  ///< saved since the files were looked for
  Clock::time_point looked_ TQ_GUARDED_BY(lock_);
  std::string complaint_ TQ_GUARDED_BY(lock_);          ///< empty once all is well again
  std::vector<Message> messages_ TQ_GUARDED_BY(lock_);  ///< told once the lock is free
};

}  // namespace tq::detail
