#include <TQFoundation/platform/preferences/PreferenceObservation.h>

#include <algorithm>
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

  Watcher(Ref<UserDefaults> defaults, const std::string& folder, std::vector<std::string> files,
          Handler handler)
      : defaults_(std::move(defaults)),
        handler_(std::make_shared<const Handler>(std::move(handler))),
        monitor_(folder, std::move(files)) {
    if (monitor_.descriptor() >= 0) {
      source_.emplace(RunLoop::current(), monitor_.descriptor(), [this] {
        if (monitor_.takeReports()) readSoon(kFirstPause);
      });
    }
    const bool isSettled = defaults_->noticeChanges();  // after the first watch, so that no change
    entries_ = defaults_->dictionaryRepresentation();   // comes between them
    if (!isSettled || !monitor_.isWatching()) readSoon(kFirstPause);
  }

  void end() {
    source_.reset();
    if (const Ref<Timer> timer = std::exchange(timer_, nullptr)) timer->invalidate();
    handler_ = nullptr;
  }

 private:
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
    if (!monitor_.isWatching()) static_cast<void>(monitor_.takeReports());  // tries to watch again
    std::vector<std::string> keys;
    bool isSettled = false;
    try {
      isSettled = defaults_->noticeChanges();
      Ref<Dictionary> now = defaults_->dictionaryRepresentation();
      keys = differences(*entries_, *now);
      entries_ = std::move(now);
    } catch (const std::bad_alloc&) {
      isSettled = false;
    }
    if (!monitor_.isWatching()) {
      readSoon(kLongestPause);
    } else if (!isSettled && pause_ < kLongestPause) {
      readSoon(std::min(2 * pause_, kLongestPause));
    }
    if (!keys.empty()) (*handler)(keys);
  }

  const Ref<UserDefaults> defaults_;
  std::shared_ptr<const Handler> handler_;  // null after the end
  detail::FolderMonitor monitor_;
  std::optional<detail::DescriptorSource> source_;
  Ref<Dictionary> entries_;  // as last seen
  Ref<Timer> timer_;         // pending
  double pause_ = kFirstPause;
};

PreferenceObservation::PreferenceObservation(Ref<Watcher> watcher) noexcept
    : watcher_(std::move(watcher)) {}

PreferenceObservation::~PreferenceObservation() { invalidate(); }

void PreferenceObservation::invalidate() { watcher_->end(); }

Ref<PreferenceObservation> UserDefaults::observeChanges(PreferenceObservation::Handler handler) {
  const std::string& own = levels_[kOwn]->path();
  const std::string& global = levels_[kGlobal]->path();
  const std::size_t slash = own.rfind('/') + 1;
  const auto fileOf = [slash](const std::string& path) { return path.substr(slash) + ".sqlite"; };
  return Ref<PreferenceObservation>::adopt(
      new PreferenceObservation(makeRef<PreferenceObservation::Watcher>(
          share(*this), own.substr(0, slash - 1), std::vector{fileOf(own), fileOf(global)},
          std::move(handler))));
}

}  // namespace tq
