#pragma once

/// @file TQConcurrentMapOperation.h
/// Asynchronous maps on an operation queue.

#include <cstddef>
#include <exception>
#include <functional>
#include <memory>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Array.h>
#include <TQFoundation/platform/operations/Operation.h>

namespace tq {

/// An operation that calls its block with its element. Threads: result() and failure() may be read
/// after it has finished.
class TQ_EXPORT TQConcurrentMapOperation final
    : public Subclass<TQConcurrentMapOperation, Operation> {
 public:
  static constexpr std::string_view className = "TQConcurrentMapOperation";

  /// @param mapBlock  shared by all operations of a map; must not be empty, or the process stops
  TQConcurrentMapOperation(Ref<Object> object, std::shared_ptr<const ArrayMapBlock> mapBlock);

  /// Returns the element.
  [[nodiscard]] const Ref<Object>& object() const noexcept { return object_; }
  /// Returns the result of the block. Null before main() has run, or if the block threw.
  [[nodiscard]] const Ref<Object>& result() const noexcept { return result_; }
  /// Returns the block.
  [[nodiscard]] const ArrayMapBlock& mapBlock() const noexcept { return *mapBlock_; }
  /// Returns the exception of the block, or null.
  [[nodiscard]] const std::exception_ptr& failure() const noexcept { return failure_; }

  /// Calls the block and stores its result or its exception. Never throws.
  void main() override;

 private:
  const Ref<Object> object_;
  Ref<Object> result_;
  const std::shared_ptr<const ArrayMapBlock> mapBlock_;
  std::exception_ptr failure_;
};

/// Receives the results in the order of the elements.
using ArrayMapCompletion = std::function<void(Ref<Array> results)>;
/// Receives the results in the order of the elements. If a block threw, `results` is null and
/// `failure` is the exception of the first such element. A block that returns null counts as one
/// that throws Exception (InvalidArgumentException), as in Array::map().
using ArrayMapOutcome = std::function<void(Ref<Array> results, std::exception_ptr failure)>;

/// Calls the block for each element on a new operation queue, and returns at once. The block may
/// block its thread. After the last call, `completionBlock` is called once, on a thread of the
/// queue. The elements and both blocks are kept alive until then.
///
/// @param maximum  how many blocks may run concurrently; 0 or less leaves the choice to the queue
/// @throws Exception (InvalidArgumentException) for an empty block, before any element is visited
/// An ArrayMapCompletion cannot receive failures: with it, a block that throws or returns null
/// stops the process.
TQ_EXPORT void mapWithMaxConcurrencyCount(const Array& array, std::ptrdiff_t maximum,
                                          ArrayMapBlock usingBlock,
                                          ArrayMapCompletion completionBlock);
TQ_EXPORT void mapWithMaxConcurrencyCount(const Array& array, std::ptrdiff_t maximum,
                                          ArrayMapBlock usingBlock,
                                          ArrayMapOutcome completionBlock);

}  // namespace tq
