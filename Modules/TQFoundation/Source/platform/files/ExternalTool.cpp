#include <TQFoundation/platform/files/ExternalTool.h>

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <string.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <utility>

#include <TQFoundation/platform/files/FileHandle.h>
#include <TQFoundation/platform/files/StandardStreams.h>

namespace tq {
namespace {

using Clock = std::chrono::steady_clock;
using Code = ExternalToolErrorCode;

constexpr std::size_t kReadSize = std::size_t{1} << 16;

/// Owns a descriptor. Unlike a FileHandle, it needs no memory.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) noexcept : number_(number) {}
  ~Descriptor() { close(); }
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }

  [[nodiscard]] int get() const noexcept { return number_; }
  void close() noexcept {
    if (number_ >= 0) ::close(std::exchange(number_, -1));
  }

 private:
  int number_;
};

/// The two ends of a pipe. Child processes do not inherit them.
struct Pipe {
  Descriptor reading;
  Descriptor writing;

  /// @return 0 or the system's error number
  int open() noexcept {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return errno;
    reading = Descriptor(ends[0]);
    writing = Descriptor(ends[1]);
    return 0;
  }
};

void makeNonBlocking(const Descriptor& file) { ::fcntl(file.get(), F_SETFL, O_NONBLOCK); }

/// Keeps SIGPIPE from ending the process while this thread writes: blocks the signal, and removes
/// it if it arrived.
class BlockedSigPipe {
 public:
  BlockedSigPipe() {
    ::sigemptyset(&pipe_);
    ::sigaddset(&pipe_, SIGPIPE);
    sigset_t pending;
    ::sigpending(&pending);
    wasPending_ = ::sigismember(&pending, SIGPIPE) == 1;
    ::pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
  }
  ~BlockedSigPipe() {
    constexpr timespec kNow{};
    if (!wasPending_) {
      while (::sigtimedwait(&pipe_, nullptr, &kNow) < 0 && errno == EINTR) {
      }
    }
    ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  BlockedSigPipe(const BlockedSigPipe&) = delete;
  BlockedSigPipe& operator=(const BlockedSigPipe&) = delete;

 private:
  sigset_t pipe_;
  sigset_t before_;
  bool wasPending_;
};

/// The child's initial state: its streams, working directory, signals and process group.
class SpawnSetup {
 public:
  SpawnSetup(const std::string& folder, const Pipe& input, const Pipe& output,
             const Pipe& errorOutput) {
    keep(::posix_spawn_file_actions_init(&actions_));
    keep(::posix_spawnattr_init(&attributes_));
    const int streams[] = {input.reading.get(), output.writing.get(), errorOutput.writing.get()};
    for (int stream = 0; stream < 3; ++stream) {
      keep(::posix_spawn_file_actions_adddup2(&actions_, streams[stream], stream));
    }
    keep(::posix_spawn_file_actions_addclosefrom_np(&actions_, 3));
    if (!folder.empty()) {
      keep(::posix_spawn_file_actions_addchdir_np(&actions_, folder.c_str()));
    }
    sigset_t signals;
    ::sigemptyset(&signals);
    keep(::posix_spawnattr_setsigmask(&attributes_, &signals));
    ::sigfillset(&signals);
    keep(::posix_spawnattr_setsigdefault(&attributes_, &signals));
    keep(::posix_spawnattr_setpgroup(&attributes_, 0));
    keep(::posix_spawnattr_setflags(
        &attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP));
  }
  ~SpawnSetup() {
    ::posix_spawnattr_destroy(&attributes_);
    ::posix_spawn_file_actions_destroy(&actions_);
  }
  SpawnSetup(const SpawnSetup&) = delete;
  SpawnSetup& operator=(const SpawnSetup&) = delete;

  /// @return 0 or the system's error number
  int spawn(const ExternalTool& tool, pid_t& child) const {
    if (failure_ != 0) return failure_;
    std::vector<char*> arguments{const_cast<char*>(tool.program.c_str())};
    for (const std::string& argument : tool.arguments) {
      arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    return ::posix_spawnp(&child, tool.program.c_str(), &actions_, &attributes_, arguments.data(),
                          environ);
  }

 private:
  void keep(int failure) noexcept {
    if (failure_ == 0) failure_ = failure;
  }

  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
  int failure_ = 0;  // the first error; a step that failed must be reported
};

/// A tool. Everything that can fail is done before it is started. The destructor kills its
/// group and waits for it, unless it has ended.
class Run {
 public:
  explicit Run(const ExternalTool& tool) : tool_(tool) {}

  /// @return 0 or the system's error number
  int start() {
    detail::occupyStandardStreams();
    Pipe input;
    Pipe output;
    Pipe errorOutput;
    for (Pipe* const pipe : {&input, &output, &errorOutput}) {
      if (const int failure = pipe->open(); failure != 0) return failure;
    }
    pid_t child = -1;
    const int failure =
        SpawnSetup(tool_.workingFolder, input, output, errorOutput).spawn(tool_, child);
    if (failure != 0) return failure;
    child_ = child;

    // Only the child holds its own ends from here on.
    input_ = std::move(input.writing);
    streams_[0].file = std::move(output.reading);
    streams_[1].file = std::move(errorOutput.reading);
    makeNonBlocking(input_);
    for (Stream& stream : streams_) makeNonBlocking(stream.file);
    if (tool_.input.empty()) input_.close();
    const double seconds = tool_.timeoutSeconds;
    constexpr double kLongest = 1e9;  // about 31 years
    if (seconds > 0 && seconds < kLongest) {
      deadline_ = Clock::now() + std::chrono::nanoseconds(static_cast<std::int64_t>(seconds * 1e9));
    }
    // Without support in the kernel, the end is detected by polling.
    end_ = Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, child_, 0)));
    return 0;
  }
  ~Run() {
    if (child_ < 0 || hasEnded_) return;
    ::kill(-child_, SIGKILL);
    ::kill(child_, SIGKILL);  // it may have moved to another group
    while (::waitpid(child_, &status_, 0) < 0 && errno == EINTR) {
    }
  }
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  /// Waits until the tool ends. @return the reason why it must be killed, or its status is unknown
  std::optional<Code> waitForEnd() {
    for (;;) {
      // Checked first, so that all output from before the end is read below. The status is
      // collected last: until then, the number of the group belongs to it, and the group can be
      // killed.
      const bool ends = isEnding();
      writeInput();
      for (Stream& stream : streams_) {
        if (!readOutput(stream)) return Code::tooMuchOutput;
      }
      if (ends) return collectStatus();
      if (deadline_ && Clock::now() >= *deadline_) return Code::timedOut;
      waitForEvents();
    }
  }

  [[nodiscard]] ExternalToolResult result() const {
    ExternalToolResult result;
    result.output = streams_[0].bytes;
    result.errorOutput = streams_[1].bytes;
    if (WIFSIGNALED(status_)) {
      result.exitStatus = -1;
      result.signal = WTERMSIG(status_);
    } else {
      result.exitStatus = WEXITSTATUS(status_);
    }
    return result;
  }

 private:
  /// Returns whether the tool has ended, or cannot be waited for.
  bool isEnding() {
    siginfo_t info{};
    const int result =
        ::waitid(P_PID, static_cast<id_t>(child_), &info, WEXITED | WNOHANG | WNOWAIT);
    hasEnded_ = result < 0;  // another part of the program took its exit status
    return hasEnded_ || info.si_pid != 0;
  }

  std::optional<Code> collectStatus() {
    hasEnded_ = true;
    pid_t ended = -1;
    do {
      ended = ::waitpid(child_, &status_, 0);
    } while (ended < 0 && errno == EINTR);
    return ended < 0 ? std::optional(Code::unknownEnd) : std::nullopt;
  }

  struct Stream {
    Descriptor file;
    Ref<MutableData> bytes = MutableData::data();
  };

  void writeInput() {
    while (input_.get() >= 0) {
      const std::span<const std::byte> rest = tool_.input.subspan(written_);
      const WriteResult result =
          rest.empty() ? WriteResult{-1, EPIPE} : writeOnce(input_.get(), rest);
      if (result.count > 0) {
        written_ += static_cast<std::size_t>(result.count);
      } else if (result.errorNumber == EAGAIN) {
        return;
      } else if (result.errorNumber != EINTR) {
        input_.close();  // all is written, or the reader has closed its end
      }
    }
  }

  /// Reads the available output. @return false if it exceeds the limit
  bool readOutput(Stream& stream) const {
    while (stream.file.get() >= 0) {
      const std::span<std::byte> space = stream.bytes->spareRoom(kReadSize);
      const ssize_t count = ::read(stream.file.get(), space.data(), space.size());
      if (count < 0 && errno == EINTR) continue;
      if (count < 0 && errno == EAGAIN) return true;
      if (count <= 0) {
        stream.file.close();
        return true;
      }
      stream.bytes->commit(static_cast<std::size_t>(count));
      if (stream.bytes->length() > tool_.mostOutputBytes) return false;
    }
    return true;
  }

  // poll() skips negative descriptors.
  void waitForEvents() const {
    using namespace std::chrono;
    constexpr milliseconds kPollInterval(20);
    constexpr milliseconds kLong(60'000);
    std::array<pollfd, 4> events{{{input_.get(), POLLOUT, 0},
                                  {streams_[0].file.get(), POLLIN, 0},
                                  {streams_[1].file.get(), POLLIN, 0},
                                  {end_.get(), POLLIN, 0}}};
    milliseconds wait = end_.get() >= 0 ? kLong : kPollInterval;
    if (deadline_) wait = std::min(wait, ceil<milliseconds>(*deadline_ - Clock::now()));
    ::poll(events.data(), events.size(), static_cast<int>(std::max<std::int64_t>(wait.count(), 0)));
  }

  const ExternalTool& tool_;
  pid_t child_ = -1;
  Descriptor input_;
  Descriptor end_;  // readable when the tool has ended; not open if it must be polled for
  std::array<Stream, 2> streams_;
  std::optional<Clock::time_point> deadline_;
  std::size_t written_ = 0;
  int status_ = 0;
  bool hasEnded_ = false;
};

/// Returns what could not be done. The system reports one error for the tool and for its folder.
std::string startFault(const ExternalTool& tool, int errorNumber) {
  std::string fault = "could not be started";
  const std::string& folder = tool.workingFolder;
  if (!folder.empty() && ::euidaccess((folder + "/.").c_str(), X_OK) != 0) {
    fault += " in the folder “" + folder + "”";
  }
  return fault + ": " + ::strerrordesc_np(errorNumber);
}

std::nullopt_t fail(Ref<Error>* error, const ExternalTool& tool, Code code,
                    const std::string& what) {
  setOutError(error,
              Error::errorWithDomain(ExternalToolErrorDomain, static_cast<std::int64_t>(code),
                                     "The tool “" + tool.program + "” " + what + "."));
  return std::nullopt;
}

const char* sentenceOf(Code fault) {
  if (fault == Code::timedOut) return "did not end in time";
  if (fault == Code::tooMuchOutput) return "wrote more than its limit";
  return "ended, but another part of this program took its exit status";
}

bool holdsNul(const ExternalTool& tool) {
  const auto hasNul = [](const std::string& text) { return text.find('\0') != std::string::npos; };
  return hasNul(tool.program) || hasNul(tool.workingFolder) ||
         std::ranges::any_of(tool.arguments, hasNul);
}

}  // namespace

std::optional<ExternalToolResult> runExternalTool(const ExternalTool& tool, Ref<Error>* error) {
  const auto cannotStart = [&](int errorNumber) {
    return fail(error, tool, Code::cannotStart, startFault(tool, errorNumber));
  };
  if (holdsNul(tool)) return cannotStart(EINVAL);  // a NUL would end the C string
  const BlockedSigPipe blocked;
  Run run(tool);
  if (const int failure = run.start(); failure != 0) return cannotStart(failure);
  const std::optional<Code> fault = run.waitForEnd();
  if (!fault) return run.result();
  return fail(error, tool, *fault, sentenceOf(*fault));
}

}  // namespace tq
