#include <TQFoundation/concurrency/locks/UnfairLock.h>

#include <TQFoundation/concurrency/locks/detail/UnfairWord.h>
#include <TQFoundation/platform/threads/ThreadSystem.h>

namespace tq {

using Word = detail::UnfairWord<detail::ThreadSystem>;

void UnfairLock::lockSlowly(std::uint32_t self, std::uint32_t found) noexcept {
  Word::lockSlowly(word_, self, found);
}

void UnfairLock::unlockSlowly(std::uint32_t self, std::uint32_t found) noexcept {
  Word::unlockSlowly(word_, self, found);
}

}  // namespace tq
