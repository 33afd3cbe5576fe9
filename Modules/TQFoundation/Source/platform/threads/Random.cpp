#include <TQFoundation/platform/threads/Random.h>

#include <stdlib.h>

namespace tq {

std::uint32_t uniformRandom(std::uint32_t below) noexcept { return ::arc4random_uniform(below); }

}  // namespace tq
