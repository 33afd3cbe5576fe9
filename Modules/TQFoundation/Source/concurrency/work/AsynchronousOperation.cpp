#include <TQFoundation/concurrency/work/AsynchronousOperation.h>

#include <TQFoundation/objects/Exception.h>

namespace tq {

void AsynchronousOperation::start() {
  const auto self = share(*this);
  if (isFinished()) return;
  if (!isReady()) throw Exception(InvalidArgumentException, "start: the operation is not ready");
  if (hasStarted_.exchange(true)) {
    throw Exception(InvalidArgumentException, "start: the operation was started before");
  }
  if (isCancelled()) return finish();
  if (!beginExecuting()) return;  // it was finished meanwhile on another thread
  try {
    if (run() == Progress::finished) finish();
  } catch (...) {
    if (!isRunByQueue())
      finish();  // on a queue, no thread may see it finish before the process stops
    throw;
  }
}

bool AsynchronousOperation::isCancelled() const {
  // TQOperation's function does not know of cancel().
  return Operation::isCancelled() ||  // NOLINT(bugprone-parent-virtual-call)
         TQOperation::isCancelled();
}

void AsynchronousOperation::finish() { endExecuting(); }

}  // namespace tq
