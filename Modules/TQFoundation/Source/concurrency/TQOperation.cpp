#include <TQFoundation/concurrency/TQOperation.h>

#include <TQFoundation/concurrency/Lockable.h>
#include <TQFoundation/concurrency/ObjectSynchronizer.h>

namespace tq {

void TQOperation::change(bool TQOperation::*flag, bool value, std::string_view key) {
  sync(ObjectSynchronizer(share(*this)), [&] {
    if (this->*flag == value) return;
    willChangeValueForKey(key);
    this->*flag = value;
    didChangeValueForKey(key);
  });
}

bool TQOperation::read(bool TQOperation::*flag) const {
  return sync(ObjectSynchronizer(Ref(const_cast<TQOperation*>(this))), [&] { return this->*flag; });
}

void TQOperation::setFinished(bool finished) {
  change(&TQOperation::finished_, finished, isFinishedKey);
}
void TQOperation::setExecuting(bool executing) {
  change(&TQOperation::executing_, executing, isExecutingKey);
}
void TQOperation::setCancelled(bool cancelled) {
  change(&TQOperation::cancelled_, cancelled, isCancelledKey);
}

bool TQOperation::isFinished() const { return read(&TQOperation::finished_); }
bool TQOperation::isExecuting() const { return read(&TQOperation::executing_); }
bool TQOperation::isCancelled() const { return read(&TQOperation::cancelled_); }

}  // namespace tq
