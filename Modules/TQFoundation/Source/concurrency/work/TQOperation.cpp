#include <TQFoundation/concurrency/work/TQOperation.h>

#include <TQFoundation/platform/threads/MonitorReservation.h>
#include <TQFoundation/platform/threads/ObjectMonitor.h>

namespace tq {
namespace {

/// Holds the object's monitor, but no reference to the object: a destructor may read its state.
class Inside {
 public:
  explicit Inside(const Object& object) : object_(object) { monitorEnter(&object_); }
  ~Inside() { monitorExit(&object_); }
  Inside(const Inside&) = delete;
  Inside& operator=(const Inside&) = delete;

 private:
  const Object& object_;
};

}  // namespace

// The monitor is reserved, so that no getter or setter fails when memory is exhausted. A queue
// calls them where nothing can report a failure.
TQOperation::TQOperation() { detail::reserveMonitor(*this); }

TQOperation::~TQOperation() { detail::unreserveMonitor(*this); }

// Holds the monitor, so that no other thread sees a state between the changes. Dependents and
// waiting threads are notified of the end after the monitor is left, because they run observers of
// other operations. An observer may change the state again: then the outermost call notifies them.
template <class Changes>
void TQOperation::together(const Changes& changes) {
  const Ref<Operation> self = hold();
  bool isOver = false;
  {
    const Inside monitor(*this);
    struct Depth {
      explicit Depth(unsigned& all) : count(++all) {}
      ~Depth() { --count; }
      unsigned& count;
    } const depth(changes_);
    changes();
    isOver = depth.count == 1 && finished_;
  }
  if (isOver && isFinished()) noticeFinished();
}

void TQOperation::change(bool TQOperation::*flag, bool value, std::string_view key) {
  together([&] {
    if (this->*flag == value) return;
    willChangeValueForKey(key);
    this->*flag = value;
    notify(key, Change::did);
  });
}

bool TQOperation::beginExecuting() {
  bool hasBegun = false;
  together([&] {
    if (finished_) return;
    setExecuting(true);
    hasBegun = !finished_;  // an observer may have finished it
    if (!hasBegun) setExecuting(false);
  });
  return hasBegun;
}

void TQOperation::endExecuting() {
  together([&] {
    setExecuting(false);
    setFinished(true);
  });
}

bool TQOperation::read(bool TQOperation::*flag) const {
  const Inside monitor(*this);
  return this->*flag;
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
