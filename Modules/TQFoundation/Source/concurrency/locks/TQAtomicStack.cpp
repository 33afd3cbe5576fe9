#include <TQFoundation/concurrency/locks/TQAtomicStack.h>

#include <TQFoundation/concurrency/locks/detail/StackNodes.h>
#include <TQFoundation/concurrency/locks/detail/TaggedStack.h>
#include <TQFoundation/platform/threads/Thread.h>

namespace tq {
namespace {

struct StackSystem {
  using Word64 = std::atomic<std::uint64_t>;

  static std::atomic<std::uint32_t>& link(std::uint32_t node) noexcept {
    return detail::stackNode(node).next;
  }

  // Another thread has just changed the head. Pausing lets it finish more operations, which costs
  // less than competing for the cache line.
  static void relax() noexcept {
    for (int i = 0; i < 16; ++i) relaxProcessor();
  }
};

}  // namespace

struct TQAtomicStack::Head {
  void push(Object& object) {
    const std::uint32_t node = detail::allocateStackNode();
    detail::stackNode(node).element = &object;
    nodes.push(node);
  }

  /// Returns the object without a reference, or null.
  Object* pop() noexcept {
    const std::uint32_t node = nodes.pop();
    if (node == 0) return nullptr;
    auto* const object = static_cast<Object*>(detail::stackNode(node).element);
    detail::freeStackNode(node);
    return object;
  }

  detail::TaggedStack<StackSystem> nodes;
};

TQAtomicStack::TQAtomicStack() : cacheQueueHead_(new Head) {}

TQAtomicStack::~TQAtomicStack() {
  while (cacheQueueHead_->pop() != nullptr) {
  }
  delete cacheQueueHead_;
}

void TQAtomicStack::push(Object& object) { cacheQueueHead_->push(object); }

Ref<Object> TQAtomicStack::pop() noexcept { return Ref<Object>(cacheQueueHead_->pop()); }

}  // namespace tq
