#include <TQFoundation/concurrency/work/TimerBlock.h>

#include <utility>

#include <TQFoundation/objects/Exception.h>

namespace tq {
namespace {

class BoxedBlock final : public Subclass<BoxedBlock> {
 public:
  static constexpr std::string_view className = "TimerBlock";
  explicit BoxedBlock(TimerBlock block) : run(std::move(block)) {}
  const TimerBlock run;
};

}  // namespace

Ref<Timer> scheduledTimerWithTimeInterval(double seconds, bool repeats, TimerBlock block_ch) {
  Ref<Object> userInfo;
  if (block_ch) userInfo = makeRef<BoxedBlock>(std::move(block_ch));
  return Timer::scheduledTimerWithTimeInterval(seconds, TQExecuteSimpleBlock, std::move(userInfo),
                                               repeats);
}

void TQExecuteSimpleBlock(Timer& timer) {
  if (timer.userInfo() == nullptr) return;
  // Keeps both alive: the block may invalidate the timer, which then releases it.
  const auto held = share(timer);
  const Ref<BoxedBlock> block(objectCast<BoxedBlock>(timer.userInfo()));
  if (block == nullptr) {
    throw Exception(InvalidArgumentException, "TQExecuteSimpleBlock: the user info is not a block");
  }
  block->run(timer);
}

}  // namespace tq
