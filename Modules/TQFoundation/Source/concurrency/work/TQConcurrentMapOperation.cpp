#include <TQFoundation/concurrency/work/TQConcurrentMapOperation.h>

#include <utility>
#include <vector>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/platform/operations/OperationQueue.h>

namespace tq {
namespace {

using Operations = std::vector<Ref<TQConcurrentMapOperation>>;

void complete(const Operations& operations, const ArrayMapOutcome& completion) {
  std::vector<Ref<Object>> results;
  results.reserve(operations.size());
  for (const Ref<TQConcurrentMapOperation>& each : operations) {
    if (each->failure() != nullptr) return completion(nullptr, each->failure());
    if (each->result() == nullptr) {
      return completion(nullptr, std::make_exception_ptr(Exception(
                                     InvalidArgumentException,
                                     "mapWithMaxConcurrencyCount: the block returned null")));
    }
    results.push_back(each->result());
  }
  completion(Array::arrayWithObjects(std::move(results)), nullptr);
}

}  // namespace

TQConcurrentMapOperation::TQConcurrentMapOperation(Ref<Object> object,
                                                   std::shared_ptr<const ArrayMapBlock> mapBlock)
    : object_(std::move(object)), mapBlock_(std::move(mapBlock)) {
  TQ_ASSERT(mapBlock_ != nullptr && *mapBlock_ != nullptr);
}

void TQConcurrentMapOperation::main() {
  try {
    result_ = (*mapBlock_)(*object_);
  } catch (...) {
    failure_ = std::current_exception();
  }
}

void mapWithMaxConcurrencyCount(const Array& array, std::ptrdiff_t maximum,
                                ArrayMapBlock usingBlock, ArrayMapOutcome completionBlock) {
  if (!usingBlock || !completionBlock) {
    throw Exception(InvalidArgumentException, "mapWithMaxConcurrencyCount: empty block");
  }
  const auto queue = OperationQueue::init();
  queue->setName("TQConcurrentMapOperation Queue");
  if (maximum > 0) queue->setMaxConcurrentOperationCount(maximum);

  const auto block = std::make_shared<const ArrayMapBlock>(std::move(usingBlock));
  Operations operations;
  operations.reserve(array.count());
  for (const Ref<Object>& object : array.objects()) {
    operations.push_back(makeRef<TQConcurrentMapOperation>(object, block));
  }
  const auto completing = BlockOperation::blockOperationWithBlock(
      [operations, completion = std::move(completionBlock)] { complete(operations, completion); });
  for (const auto& each : operations) completing->addDependency(*each);
  // Suspended until all are added: if adding fails, the queue ends without calling any block.
  queue->setSuspended(true);
  for (const auto& each : operations) queue->addOperation(*each);
  queue->addOperation(*completing);
  queue->setSuspended(false);
}

void mapWithMaxConcurrencyCount(const Array& array, std::ptrdiff_t maximum,
                                ArrayMapBlock usingBlock, ArrayMapCompletion completionBlock) {
  ArrayMapOutcome outcome;
  if (completionBlock) {
    outcome = [completion = std::move(completionBlock)](Ref<Array> results,
                                                        const std::exception_ptr& failure) {
      if (failure != nullptr) std::rethrow_exception(failure);  // leaves the operation
      completion(std::move(results));
    };
  }
  mapWithMaxConcurrencyCount(array, maximum, std::move(usingBlock), std::move(outcome));
}

}  // namespace tq
