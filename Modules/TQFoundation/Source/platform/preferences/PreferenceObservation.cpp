#include <TQFoundation/platform/preferences/PreferenceObservation.h>

#include <algorithm>
#include <filesystem>
#include <list>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include <TQFoundation/objects/String.h>
#include <TQFoundation/platform/loops/DescriptorSource.h>
#include <TQFoundation/platform/loops/Timer.h>
#include <TQFoundation/platform/preferences/UserDefaults.h>
#include <TQFoundation/platform/preferences/detail/FolderMonitor.h>
#include <TQFoundation/platform/preferences/detail/PreferenceStore.h>

// The kernel reports a write to a database before its commit is complete. The generation is odd
// meanwhile, so the store is read again, after longer and longer pauses, until it is even.
//
// If a database is a symbolic link, its target's folder is watched, too. A link that is changed is
// noticed in its own folder, and the new target is watched from then on.

namespace tq {
namespace {

constexpr double kFirstPause = 0.01;  // seconds
constexpr double kLongestPause = 1;

std::string nameOf(const Object& key) {
  return std::string(static_cast<const String&>(key).view());
}

/// Returns the sorted keys of the entries that are in only one of the tables, or differ.
std::vector<std::string> differences(const Dictionary& before, const Dictionary& now) {
  std::vector<std::string> keys;
  for (const auto& [key, value] : now) {
    const Object* const old = before.objectForKey(key);
    if (old != &value && (old == nullptr || !old->isEqual(value))) keys.push_back(nameOf(key));
  }
  for (const auto& [key, value] : before) {
    if (now.objectForKey(key) == nullptr) keys.push_back(nameOf(key));
  }
  std::ranges::sort(keys);
  return keys;
}

}  // namespace

/// Retained by the observation, and by its timer while one is pending.
class PreferenceObservation::Watcher final : public Subclass<Watcher> {
 public:
  static constexpr std::string_view className = "PreferenceWatcher";

  Watcher(Ref<UserDefaults> defaults, Handler handler)
      : defaults_(std::move(defaults)),
        handler_(std::make_shared<const Handler>(std::move(handler))) {
    watchFiles();
    const bool isSettled = defaults_->noticeChanges();  // after the first watch, so that no change
    entries_ = defaults_->dictionaryRepresentation();   // comes between them
    if (!isSettled || !isWatching()) readSoon(kFirstPause);
  }

  void end() {
    watches_.clear();
    if (const Ref<Timer> timer = std::exchange(timer_, nullptr)) timer->invalidate();
    handler_ = nullptr;
  }

 private:
  /// The names of files, by folder.
  using Files = std::map<std::string, std::vector<std::string>>;
  struct Watch {
    Watch(const std::string& folder, const std::vector<std::string>& names)
        : monitor(folder, names) {}

    detail::FolderMonitor monitor;
    std::optional<detail::DescriptorSource> source;
  };

  void watchFiles() {
    Files files;
    for (const auto level : {UserDefaults::kOwn, UserDefaults::kGlobal}) {
      for (const std::filesystem::path path : defaults_->levels_[level]->files()) {
        if (path.has_parent_path()) files[path.parent_path()].push_back(path.filename());
      }
    }
    if (files == files_) return;
    watches_.clear();
    files_.clear();
    for (const auto& [folder, names] : files) {
      Watch& watch = watches_.emplace_back(folder, names);
      if (watch.monitor.descriptor() < 0) continue;
      watch.source.emplace(RunLoop::current(), watch.monitor.descriptor(), [this, &watch] {
        if (watch.monitor.takeReports()) readSoon(kFirstPause);
      });
    }
    files_ = std::move(files);
  }
  [[nodiscard]] bool isWatching() const {
    return std::ranges::all_of(watches_, &detail::FolderMonitor::isWatching, &Watch::monitor);
  }

  // Without memory for a timer, the change is reported with the next one.
  void readSoon(double pause) noexcept {
    if (timer_ != nullptr) return;
    try {
      pause_ = pause;
      timer_ = Timer::scheduledTimerWithTimeInterval(
          pause, [](Timer& timer) { static_cast<Watcher*>(timer.userInfo())->read(); },
          share(*this), false);
    } catch (const std::bad_alloc&) {
    }
  }

  /// Calls the handler if entries have changed. It may release this object.
  void read() {
    const Ref<Watcher> self = share(*this);
    const std::shared_ptr<const Handler> handler = handler_;
    timer_ = nullptr;
    for (Watch& watch : watches_) {  // tries again
      if (!watch.monitor.isWatching()) static_cast<void>(watch.monitor.takeReports());
    }
    std::vector<std::string> keys;
    bool isSettled = false;
    try {
      watchFiles();
      isSettled = defaults_->noticeChanges();
      Ref<Dictionary> now = defaults_->dictionaryRepresentation();
      keys = differences(*entries_, *now);
      entries_ = std::move(now);
    } catch (const std::bad_alloc&) {
      isSettled = false;
    }
    if (!isWatching()) {
      readSoon(kLongestPause);
    } else if (!isSettled && pause_ < kLongestPause) {
      readSoon(std::min(2 * pause_, kLongestPause));
    }
    if (!keys.empty()) (*handler)(keys);
  }

  const Ref<UserDefaults> defaults_;
  std::shared_ptr<const Handler> handler_;  // null after the end
  Files files_;
  std::list<Watch> watches_;
  Ref<Dictionary> entries_;  // as last seen
  Ref<Timer> timer_;         // pending
  double pause_ = kFirstPause;
};

PreferenceObservation::PreferenceObservation(Ref<Watcher> watcher) noexcept
    : watcher_(std::move(watcher)) {}

PreferenceObservation::~PreferenceObservation() { invalidate(); }

void PreferenceObservation::invalidate() { watcher_->end(); }

Ref<PreferenceObservation> UserDefaults::observeChanges(PreferenceObservation::Handler handler) {
  return Ref<PreferenceObservation>::adopt(new PreferenceObservation(
      makeRef<PreferenceObservation::Watcher>(share(*this), std::move(handler))));
}

}  // namespace tq
