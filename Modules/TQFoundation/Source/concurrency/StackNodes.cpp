#include <TQFoundation/concurrency/detail/StackNodes.h>

#include <array>
#include <bit>
#include <mutex>
#include <new>
#include <utility>

#include <TQFoundation/concurrency/UnfairLock.h>
#include <TQFoundation/platform/Lock.h>

// Nodes lie in blocks that double in size: block k holds the numbers of k bits, so nothing ever
// moves. Free nodes are handed between the process and its threads in chains of kChain, linked
// through `next`; the common case touches the thread's own chain alone.

namespace tq::detail {
namespace {

constexpr std::uint32_t kFirstNumber = 1024;  // smaller numbers name no node
constexpr std::uint32_t kChain = 32;

std::array<std::atomic<StackNode*>, 33> blocks;

std::atomic<StackNode*>& blockOf(std::uint32_t number) noexcept {
  return blocks[static_cast<std::size_t>(std::bit_width(number))];
}

struct Chain {
  std::uint32_t first = 0;
  std::uint32_t count = 0;

  void push(std::uint32_t number) noexcept {
    stackNode(number).next.store(first, std::memory_order_relaxed);
    first = number;
    ++count;
  }
  std::uint32_t pop() noexcept {
    --count;
    return std::exchange(first, stackNode(first).next.load(std::memory_order_relaxed));
  }
};

struct Shared {
  UnfairLock lock;
  Chain free TQ_GUARDED_BY(lock);
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
    // Release: whoever learns a number of the block learns it from this thread or through a stack.
    blockOf(number).store(new StackNode[number], std::memory_order_release);
  }
  ++all.nextNumber;
  return number;
}

// The free nodes of one thread, given back when it ends.
struct Own {
  Chain chain;
  bool isGone = false;

  ~Own() {
    giveBack(chain.count);
    isGone = true;  // destructors that run later use the process's nodes
  }

  void giveBack(std::uint32_t count) noexcept {
    if (count == 0) return;
    Shared& all = shared();
    const Locked guard(all.lock);
    while (count-- > 0) all.free.push(chain.pop());
  }

  void fetch() {
    Shared& all = shared();
    const Locked guard(all.lock);
    while (chain.count < kChain && all.free.count > 0) chain.push(all.free.pop());
    while (chain.count < kChain) {
      if (chain.count > 0 && all.nextNumber == 0) return;
      chain.push(newNumber(all));
    }
  }
};

[[gnu::tls_model("initial-exec")]] thread_local Own own;

}  // namespace

StackNode& stackNode(std::uint32_t number) noexcept {
  // Relaxed: the number came with a happens-before edge from the thread that made the block.
  StackNode* const block = blockOf(number).load(std::memory_order_relaxed);
  return block[number ^ std::bit_floor(number)];
}

std::uint32_t allocateStackNode() {
  if (own.chain.count == 0) own.fetch();
  const std::uint32_t number = own.chain.pop();
  if (own.isGone) own.giveBack(own.chain.count);
  return number;
}

void freeStackNode(std::uint32_t number) noexcept {
  own.chain.push(number);
  if (own.isGone || own.chain.count > 2 * kChain) {
    own.giveBack(own.isGone ? own.chain.count : kChain);
  }
}

}  // namespace tq::detail
