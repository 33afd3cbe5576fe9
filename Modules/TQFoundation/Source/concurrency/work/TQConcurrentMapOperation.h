#pragma once

/// @file TQConcurrentMapOperation.h
/// Maps whose blocks may block: each element is an operation of a queue.

#include <cstddef>
#include <exception>
#include <functional>
#include <memory>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/ArrayConveniences.h>
#include <TQFoundation/platform/operations/Operation.h>

namespace tq {

/// Calls its block with its element. Threads: result() and failure() once it has finished.
class TQ_EXPORT TQConcurrentMapOperation final
    : public Subclass<TQConcurrentMapOperation, Operation> {
 public:
  static constexpr std::string_view className = "TQConcurrentMapOperation";

  /// @param mapBlock  shared by the operations of a map; an empty one stops the process
  TQConcurrentMapOperation(Ref<Object> object, std::shared_ptr<const ArrayMapBlock> mapBlock);

  /// The element, which main() hands to the block.
  [[nodiscard]] const Ref<Object>& object() const noexcept { return object_; }
  /// The block's answer; none before main() has run, or when it threw.
  [[nodiscard]] const Ref<Object>& result() const noexcept { return result_; }
  /// What it calls.
  [[nodiscard]] const ArrayMapBlock& mapBlock() const noexcept { return *mapBlock_; }
  /// What the block threw.
  [[nodiscard]] const std::exception_ptr& failure() const noexcept { return failure_; }

  /// Stores the block's answer, or what it throws: nothing leaves the operation.
  void main() override;

 private:
  const Ref<Object> object_;
  Ref<Object> result_;
  const std::shared_ptr<const ArrayMapBlock> mapBlock_;
  std::exception_ptr failure_;
};

/// Told the answers in the elements' order.
using ArrayMapCompletion = std::function<void(Ref<Array> results)>;
/// The same; or none, and what the first element in order threw whose block did. A block that
/// answers none counts as one that throws Exception (InvalidArgumentException), as in map().
using ArrayMapOutcome = std::function<void(Ref<Array> results, std::exception_ptr failure)>;

/// Calls the block for each element on an operation queue of its own and returns at once. When all
/// have been called, `completionBlock` is called, once, on one of the queue's threads. The elements
/// and both blocks are held until then.
///
/// @param maximum  how many blocks run at once; 0 or less leaves it to the queue
/// @throws Exception (InvalidArgumentException) for an empty block, before anything is run
/// With an ArrayMapCompletion, which cannot be told of it, a block that throws stops the process.
TQ_EXPORT void mapWithMaxConcurrencyCount(const Array& array, std::ptrdiff_t maximum,
                                          ArrayMapBlock usingBlock,
                                          ArrayMapCompletion completionBlock);
TQ_EXPORT void mapWithMaxConcurrencyCount(const Array& array, std::ptrdiff_t maximum,
                                          ArrayMapBlock usingBlock,
                                          ArrayMapOutcome completionBlock);

}  // namespace tq
