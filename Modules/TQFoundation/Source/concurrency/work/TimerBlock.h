#pragma once

/// @file TimerBlock.h
/// Timers that run a block.

#include <functional>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Ref.h>
#include <TQFoundation/platform/loops/Timer.h>

namespace tq {

/// The block of a timer. Receives the timer that fires.
using TimerBlock = std::function<void(Timer&)>;

/// Schedules a timer on the calling thread's run loop that runs a copy of `block_ch`. The block is
/// stored as the timer's user info until the timer is invalid. A timer with an empty block does
/// nothing. Otherwise like Timer::scheduledTimerWithTimeInterval().
TQ_EXPORT Ref<Timer> scheduledTimerWithTimeInterval(double seconds, bool repeats,
                                                    TimerBlock block_ch);

/// The action of such timers: runs the block in the timer's user info. The block may invalidate the
/// timer. Does nothing if the user info is null.
/// @throws Exception (InvalidArgumentException) if the user info is not a block
TQ_EXPORT void TQExecuteSimpleBlock(Timer& timer);

}  // namespace tq
