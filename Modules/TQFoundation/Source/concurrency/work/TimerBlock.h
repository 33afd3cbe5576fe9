#pragma once

/// @file TimerBlock.h
/// Timers that run a block.

#include <functional>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Ref.h>
#include <TQFoundation/platform/loops/Timer.h>

namespace tq {

/// What a timer does when it fires; told the timer.
using TimerBlock = std::function<void(Timer&)>;

/// A timer on the calling thread's run loop that runs a copy of `block_ch`, kept as its user info
/// until it is invalid. An empty block makes a timer that does nothing. The rest is as for
/// Timer::scheduledTimerWithTimeInterval().
TQ_EXPORT Ref<Timer> scheduledTimerWithTimeInterval(double seconds, bool repeats,
                                                    TimerBlock block_ch);

/// The action of such timers: runs the block in the timer's user info, which may invalidate the
/// timer. Without user info it does nothing.
/// @throws Exception (InvalidArgumentException) when the user info is no block
TQ_EXPORT void TQExecuteSimpleBlock(Timer& timer);

}  // namespace tq
