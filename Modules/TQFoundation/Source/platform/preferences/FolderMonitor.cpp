#include <TQFoundation/platform/preferences/detail/FolderMonitor.h>

#include <errno.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

namespace tq::detail {
namespace {

constexpr std::uint32_t kLoss = IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED | IN_Q_OVERFLOW;
constexpr std::uint32_t kOfFolderAbove = IN_CREATE | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF;
constexpr std::uint32_t kOfFolder = kOfFolderAbove | IN_MODIFY | IN_DELETE | IN_MOVED_FROM;
constexpr int kMostTries = 1000;  // for folders that others keep creating and removing

}  // namespace

FolderMonitor::FolderMonitor(std::string folder, std::vector<std::string> prefixes)
    : folder_(std::move(folder)),
      prefixes_(std::move(prefixes)),
      descriptor_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)),
      path_(folder_) {
  watch();
}

FolderMonitor::~FolderMonitor() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

// Goes up to a folder that exists. If the next one below it appears before the watch begins, goes
// down again. Nothing is allocated: no path is longer than the folder's.
void FolderMonitor::watch() noexcept {
  const int before = std::exchange(watch_, -1);
  std::size_t length = folder_.size();
  for (int tries = 0; tries < kMostTries; ++tries) {
    isFolder_ = length == folder_.size();
    path_.assign(folder_, 0, length);
    watch_ = ::inotify_add_watch(descriptor_, path_.c_str(),
                                 IN_ONLYDIR | (isFolder_ ? kOfFolder : kOfFolderAbove));
    if (watch_ < 0) {
      const std::size_t slash = folder_.rfind('/', length - 1);
      const bool isMissing = errno == ENOENT || errno == ENOTDIR;
      if (!isMissing || slash == std::string::npos || length <= 1) break;
      length = std::max<std::size_t>(slash, 1);
      continue;
    }
    if (isFolder_) break;
    length = std::min(folder_.find('/', length + 1), folder_.size());
    path_.assign(folder_, 0, length);
    if (::access(path_.c_str(), F_OK) != 0) break;
    ::inotify_rm_watch(descriptor_, watch_);
  }
  if (before >= 0 && before != watch_) ::inotify_rm_watch(descriptor_, before);
}

bool FolderMonitor::takeReports() noexcept {
  alignas(inotify_event) std::array<char, 4096> reports;
  bool isOurs = false;
  bool isLost = false;
  for (ssize_t count; (count = ::read(descriptor_, reports.data(), reports.size())) > 0;) {
    for (std::size_t at = 0; at < static_cast<std::size_t>(count);) {
      inotify_event report{};
      std::memcpy(&report, reports.data() + at, sizeof report);
      const std::string_view name(report.len != 0 ? reports.data() + at + sizeof report : "");
      at += sizeof report + report.len;
      if (report.wd != watch_ && report.wd >= 0) continue;  // of a former watch
      isLost = isLost || !isFolder_ || (report.mask & kLoss) != 0;
      const auto isPrefix = [name](const std::string& each) { return name.starts_with(each); };
      isOurs = isOurs || isLost || std::ranges::any_of(prefixes_, isPrefix);
    }
  }
  if (isLost || !isWatching()) watch();
  return isOurs;
}

}  // namespace tq::detail
