#include <TQFoundation/platform/files/StandardStreams.h>

#include <fcntl.h>
#include <unistd.h>

namespace tq::detail {

void occupyStandardStreams() noexcept {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (::fcntl(stream, F_GETFD) >= 0) continue;
    const int unused = ::open("/dev/null", O_RDWR);  // gets the lowest free number
    if (unused > STDERR_FILENO) ::close(unused);     // another thread was faster
  }
}

}  // namespace tq::detail
