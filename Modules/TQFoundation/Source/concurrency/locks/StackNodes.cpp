#include <TQFoundation/concurrency/locks/detail/StackNodes.h>

#include <new>
#include <utility>

#include <TQFoundation/concurrency/locks/UnfairLock.h>
#include <TQFoundation/platform/memory/AddressRange.h>
#include <TQFoundation/platform/threads/Lock.h>

// Free nodes are handed between the process and its threads kBatch at a time; the common case
// touches the thread's own few alone.

namespace tq::detail {

constinit std::atomic<StackNode*> stackNodes{nullptr};
thread_local constinit OwnNodes ownNodes;

namespace {

constexpr std::uint32_t kMostNodes = 1 << 26;  // 1 GiB of addresses
constexpr std::uint32_t kGrowth = 4096;        // 64 KiB of nodes
constexpr std::uint32_t kBatch = OwnNodes::kMost / 2;

/// All nodes that no stack and no thread has, linked through `next`.
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
  /// Whether allocate() just takes one.
  [[nodiscard]] bool hasOne() const noexcept TQ_REQUIRES(lock) {
    return first_ != 0 || next_ < usable_;
  }

  UnfairLock lock;

 private:
  // Number 0 names no node. Zeroed memory is a row of nodes.
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
  static auto& all = *new SharedNodes;  // never destroyed: threads may outlive main
  return all;
}

void giveBack(std::uint32_t count) noexcept {
  SharedNodes& all = shared();
  const Locked guard(all.lock);
  for (; count > 0; --count) all.free(ownNodes.numbers[--ownNodes.count]);
}

// Gives the thread's nodes back when it ends. Destructors that run later keep none.
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
