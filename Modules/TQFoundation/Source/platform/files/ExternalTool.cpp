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

namespace tq {
namespace {

using Clock = std::chrono::steady_clock;
using Code = ExternalToolErrorCode;

constexpr std::size_t kReadSize = std::size_t{1} << 16;

/// The two ends of a pipe. Child processes do not inherit them.
struct Pipe {
  Ref<FileHandle> reading;
  Ref<FileHandle> writing;

  static std::optional<Pipe> make() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return std::nullopt;
    Pipe pipe;
    pipe.reading = FileHandle::fileHandleWithFileDescriptor(ends[0], true);
    pipe.writing = FileHandle::fileHandleWithFileDescriptor(ends[1], true);
    return pipe;
  }
};

void makeNonBlocking(const FileHandle& file) {
  ::fcntl(file.fileDescriptor(), F_SETFL, O_NONBLOCK);
}

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
    ::posix_spawn_file_actions_init(&actions_);
    ::posix_spawnattr_init(&attributes_);
    const int streams[] = {input.reading->fileDescriptor(), output.writing->fileDescriptor(),
                           errorOutput.writing->fileDescriptor()};
    for (int stream = 0; stream < 3; ++stream) {
      ::posix_spawn_file_actions_adddup2(&actions_, streams[stream], stream);
    }
    ::posix_spawn_file_actions_addclosefrom_np(&actions_, 3);
    if (!folder.empty()) ::posix_spawn_file_actions_addchdir_np(&actions_, folder.c_str());
    sigset_t signals;
    ::sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&attributes_, &signals);
    ::sigfillset(&signals);
    ::posix_spawnattr_setsigdefault(&attributes_, &signals);
    ::posix_spawnattr_setpgroup(&attributes_, 0);
    ::posix_spawnattr_setflags(
        &attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
  }
  ~SpawnSetup() {
    ::posix_spawnattr_destroy(&attributes_);
    ::posix_spawn_file_actions_destroy(&actions_);
  }
  SpawnSetup(const SpawnSetup&) = delete;
  SpawnSetup& operator=(const SpawnSetup&) = delete;

  /// @return 0 or the system's error number
  int spawn(const ExternalTool& tool, pid_t& child) const {
    std::vector<char*> arguments{const_cast<char*>(tool.program.c_str())};
    for (const std::string& argument : tool.arguments) {
      arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    return ::posix_spawnp(&child, tool.program.c_str(), &actions_, &attributes_, arguments.data(),
                          environ);
  }

 private:
  posix_spawn_file_actions_t actions_;
  posix_spawnattr_t attributes_;
};

/// A started tool. The destructor kills its group and waits for it, unless it has ended.
class Run {
 public:
  Run(const ExternalTool& tool, Pipe input, Pipe output, Pipe errorOutput, pid_t child)
      : tool_(tool), child_(child), input_(std::move(input.writing)) {
    streams_[0].file = std::move(output.reading);
    streams_[1].file = std::move(errorOutput.reading);
    makeNonBlocking(*input_);
    for (Stream& stream : streams_) makeNonBlocking(*stream.file);
    if (tool.input.empty()) input_->closeFile();
    const double seconds = tool.timeoutSeconds;
    constexpr double kLongest = 1e9;  // about 31 years
    if (seconds > 0 && seconds < kLongest) {
      deadline_ = Clock::now() + std::chrono::nanoseconds(static_cast<std::int64_t>(seconds * 1e9));
    }
    // Without support in the kernel, the end is polled for.
    const auto end = static_cast<int>(::syscall(SYS_pidfd_open, child, 0));
    end_ = FileHandle::fileHandleWithFileDescriptor(end, end >= 0);
  }
  ~Run() {
    if (hasEnded_) return;
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
      // Checked first, so that all output from before the end is read below.
      const pid_t ended = ::waitpid(child_, &status_, WNOHANG);
      hasEnded_ = ended != 0;
      writeInput();
      for (Stream& stream : streams_) {
        if (!readOutput(stream)) return Code::tooMuchOutput;
      }
      if (hasEnded_) return ended < 0 ? std::optional(Code::unknownEnd) : std::nullopt;
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
  struct Stream {
    Ref<FileHandle> file;
    Ref<MutableData> bytes = MutableData::data();
  };

  void writeInput() {
    while (input_->fileDescriptor() >= 0) {
      const std::span<const std::byte> rest = tool_.input.subspan(written_);
      const WriteResult result =
          rest.empty() ? WriteResult{-1, EPIPE} : writeOnce(input_->fileDescriptor(), rest);
      if (result.count > 0) {
        written_ += static_cast<std::size_t>(result.count);
      } else if (result.errorNumber == EAGAIN) {
        return;
      } else if (result.errorNumber != EINTR) {
        input_->closeFile();  // all is written, or the reader is gone
      }
    }
  }

  /// Reads the available output. @return false if it exceeds the limit
  bool readOutput(Stream& stream) const {
    while (stream.file->fileDescriptor() >= 0) {
      const std::span<std::byte> space = stream.bytes->spareRoom(kReadSize);
      const ssize_t count = ::read(stream.file->fileDescriptor(), space.data(), space.size());
      if (count < 0 && errno == EINTR) continue;
      if (count < 0 && errno == EAGAIN) return true;
      if (count <= 0) {
        stream.file->closeFile();
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
    std::array<pollfd, 4> events{{{input_->fileDescriptor(), POLLOUT, 0},
                                  {streams_[0].file->fileDescriptor(), POLLIN, 0},
                                  {streams_[1].file->fileDescriptor(), POLLIN, 0},
                                  {end_->fileDescriptor(), POLLIN, 0}}};
    milliseconds wait = end_->fileDescriptor() >= 0 ? kLong : kPollInterval;
    if (deadline_) wait = std::min(wait, ceil<milliseconds>(*deadline_ - Clock::now()));
    ::poll(events.data(), events.size(), static_cast<int>(std::max<std::int64_t>(wait.count(), 0)));
  }

  const ExternalTool& tool_;
  const pid_t child_;
  Ref<FileHandle> input_;
  Ref<FileHandle> end_;
  std::array<Stream, 2> streams_;
  std::optional<Clock::time_point> deadline_;
  std::size_t written_ = 0;
  int status_ = 0;
  bool hasEnded_ = false;
};

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
    return fail(error, tool, Code::cannotStart,
                "could not be started: " + std::string(::strerrordesc_np(errorNumber)));
  };
  if (holdsNul(tool)) return cannotStart(EINVAL);  // it would end the C string
  auto input = Pipe::make();
  auto output = Pipe::make();
  auto errorOutput = Pipe::make();
  if (!input || !output || !errorOutput) return cannotStart(errno);
  pid_t child = -1;
  const int failure =
      SpawnSetup(tool.workingFolder, *input, *output, *errorOutput).spawn(tool, child);
  if (failure != 0) return cannotStart(failure);

  input->reading->closeFile();  // the child's ends: from here on, only the child holds them
  output->writing->closeFile();
  errorOutput->writing->closeFile();
  const BlockedSigPipe blocked;
  Run run(tool, *std::move(input), *std::move(output), *std::move(errorOutput), child);
  const std::optional<Code> fault = run.waitForEnd();
  if (!fault) return run.result();
  return fail(error, tool, *fault, sentenceOf(*fault));
}

}  // namespace tq
