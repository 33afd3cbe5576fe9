#include <TQFoundation/concurrency/detail/StackNodes.h>

#include <new>

#include <TQFoundation/concurrency/UnfairLock.h>
#include <TQFoundation/platform/Lock.h>

// Free nodes are handed between the process and its threads kBatch at a time; the common case
// touches the thread's own chain alone.

namespace tq::detail {

constinit std::array<std::atomic<StackNode*>, 33> stackBlocks{};
thread_local constinit OwnNodes ownNodes;

namespace {

constexpr std::uint32_t kFirstNumber = 1024;  // smaller numbers name no node
constexpr std::uint32_t kBatch = 32;

struct Shared {
  UnfairLock lock;
  NodeChain free TQ_GUARDED_BY(lock);
  std::uint32_t nextNumber TQ_GUARDED_BY(lock) = kFirstNumber;
};

Shared& shared() noexcept {
  static auto& all = *new Shared;  // never destroyed: threads may outlive main
  return all;
}

std::uint32_t newNumber(Shared& all) TQ_REQUIRES(all.lock) {
  const std::uint32_t number = all.nextNumber;
  if (number == 0) throw std::bad_alloc();  // all of 2^32 are in use
  if (std::has_single_bit(number)) {
    stackBlocks[static_cast<std::size_t>(std::bit_width(number))].store(new StackNode[number],
                                                                        std::memory_order_release);
  }
  ++all.nextNumber;
  return number;
}

// Gives the thread's nodes back when it ends. Destructors that run later keep none.
struct AtThreadEnd {
  ~AtThreadEnd() {
    isGone = true;
    ownNodes.most = 0;
    giveBackStackNodes();
  }
  bool isGone = false;
};
thread_local AtThreadEnd atThreadEnd;

void beginKeeping() noexcept {
  if (!atThreadEnd.isGone) ownNodes.most = 2 * kBatch;
}

}  // namespace

void fetchStackNodes() {
  beginKeeping();
  NodeChain& own = ownNodes.chain;
  const std::uint32_t wanted = ownNodes.most == 0 ? 1 : kBatch;
  Shared& all = shared();
  const Locked guard(all.lock);
  while (own.count < wanted && all.free.count > 0) own.push(all.free.pop());
  while (own.count < wanted && (own.count == 0 || all.nextNumber != 0)) own.push(newNumber(all));
}

void giveBackStackNodes() noexcept {
  beginKeeping();
  NodeChain& own = ownNodes.chain;
  Shared& all = shared();
  const Locked guard(all.lock);
  while (own.count > ownNodes.most / 2) all.free.push(own.pop());
}

}  // namespace tq::detail
