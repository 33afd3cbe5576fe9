#include <TQFoundation/concurrency/locks/detail/StackNodes.h>

#include <new>
#include <utility>

#include <TQFoundation/concurrency/locks/UnfairLock.h>
#include <TQFoundation/platform/memory/AddressRange.h>
#include <TQFoundation/platform/threads/Lock.h>

// Threads keep some free nodes of their own and exchange them with the process-wide list, kBatch at
// a time. The common case uses only the thread's own nodes.

namespace tq::detail {

constinit std::atomic<StackNode*> stackNodes{nullptr};
thread_local constinit OwnNodes ownNodes;

namespace {

constexpr std::uint32_t kMostNodes = 1 << 26;  // 1 GiB of address space
constexpr std::uint32_t kGrowth = 4096;        // 64 KiB of nodes
constexpr std::uint32_t kBatch = OwnNodes::kMost / 2;

/// The free nodes that no thread keeps, linked through `next`.
class SharedNodes {
 public:
  /// @throws std::bad_alloc
  [[nodiscard]] std::uint32_t allocate() TQ_REQUIRES(lock) {
    if (first_ == 0) return made();
    return std::exchange(first_, stackNode(first_).next.load(std::memory_order_relaxed));
  }
  void free(std::uint32_t number) noexcept TQ_REQUIRES(lock) {
    stackNode(number).next.store(first_, std::memory_order_relaxed);
    first_ = number;
  }
  /// True if allocate() neither maps memory nor throws.
  [[nodiscard]] bool hasOne() const noexcept TQ_REQUIRES(lock) {
    return first_ != 0 || next_ < usable_;
  }

  UnfairLock lock;

 private:
  // Number 0 is no node. Zeroed memory is an array of valid nodes.
  std::uint32_t made() TQ_REQUIRES(lock) {
    if (stackNodes.load(std::memory_order_relaxed) == nullptr) {
      stackNodes.store(static_cast<StackNode*>(reserveRange(kMostNodes * sizeof(StackNode))),
                       std::memory_order_release);
    }
    if (next_ >= usable_) {
      if (usable_ == kMostNodes) throw std::bad_alloc();
      growRange(&stackNode(usable_), kGrowth * sizeof(StackNode));
      usable_ += kGrowth;
    }
    return next_++;
  }

  std::uint32_t first_ TQ_GUARDED_BY(lock) = 0;
  std::uint32_t next_ TQ_GUARDED_BY(lock) = 1;
  std::uint32_t usable_ TQ_GUARDED_BY(lock) = 0;
};

SharedNodes& shared() noexcept {
  static auto& all = *new SharedNodes;  // never destroyed: threads may run after main returns
  return all;
}

void giveBack(std::uint32_t count) noexcept {
  SharedNodes& all = shared();
  const Locked guard(all.lock);
  for (; count > 0; --count) all.free(ownNodes.numbers[--ownNodes.count]);
}

// Returns the thread's nodes when it ends. Thread-local destructors that run later use the shared
// list.
struct AtThreadEnd {
  ~AtThreadEnd() {
    isGone = true;
    ownNodes.most = 0;
    giveBack(ownNodes.count);
  }
  bool isGone = false;
};
thread_local AtThreadEnd atThreadEnd;

void beginKeeping() noexcept {
  if (!atThreadEnd.isGone) ownNodes.most = OwnNodes::kMost;
}

}  // namespace

std::uint32_t allocateSharedStackNode() {
  beginKeeping();
  SharedNodes& all = shared();
  const Locked guard(all.lock);
  while (ownNodes.most > 0 && ownNodes.count < kBatch && all.hasOne()) {
    ownNodes.numbers[ownNodes.count++] = all.allocate();
  }
  return all.allocate();
}

void freeSharedStackNode(std::uint32_t number) noexcept {
  beginKeeping();
  if (ownNodes.most > 0 && ownNodes.count == ownNodes.most) giveBack(kBatch);
  if (ownNodes.count < ownNodes.most) {
    ownNodes.numbers[ownNodes.count++] = number;
    return;
  }
  SharedNodes& all = shared();
  const Locked guard(all.lock);
  all.free(number);
}

}  // namespace tq::detail
