#include <TQFoundation/platform/preferences/detail/PreferenceStore.h>

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>
#include <utility>

#include <TQFoundation/objects/String.h>
#include <TQFoundation/platform/archive/PropertyList.h>

namespace tq::detail {
namespace {

using Result = PreferenceDatabase::Result;

constexpr std::string_view kErrorDomain = "com.korvan.UserDefaults";
constexpr std::int64_t kCannotSave = 1;
constexpr std::chrono::seconds kBetweenLooks(1);

/// Returns 1, 2, 3 …; 0 means no edition.
std::uint64_t nextEdition() {
  static std::atomic<std::uint64_t> last = 0;
  return ++last;
}

std::size_t nextSlot(std::size_t count) {
  static std::atomic<std::size_t> last = 0;
  return last++ % count;
}

void put(MutableDictionary& entries, std::string_view key, const Ref<Object>& value) {
  const Ref<String> name = String::stringWithGeneralisedUTF8(key);
  if (value != nullptr) {
    entries.setObject(value, name);
  } else {
    entries.removeObjectForKey(*name);
  }
}

std::string databasePath(const std::string& path) { return path + ".sqlite"; }

/// Holds the lock that processes share, and marks the generation as being written.
class Writing {
 public:
  explicit Writing(SharedGeneration& shared) : shared_(shared), isLocked_(shared.lock()) {
    if (!isLocked_) return;
    auto& generation = shared_.words().generation;
    before_ = generation.load();
    if (before_ % 2 != 0) ++before_;  // marked by a writer that died
  }
  ~Writing() {
    if (!isLocked_) return;
    if (isMarked_) shared_.words().generation.store(after());
    shared_.unlock();
  }
  Writing(const Writing&) = delete;
  Writing& operator=(const Writing&) = delete;

  [[nodiscard]] bool isLocked() const { return isLocked_; }
  [[nodiscard]] std::uint64_t before() const { return before_; }
  [[nodiscard]] std::uint64_t after() const { return before_ + 2; }
  void mark() {
    shared_.words().generation.store(before_ + 1);
    isMarked_ = true;
  }

 private:
  SharedGeneration& shared_;
  const bool isLocked_;
  bool isMarked_ = false;
  std::uint64_t before_ = 0;
};

}  // namespace

thread_local constinit std::array<PreferenceStore::Slot, PreferenceStore::kSlots>
    PreferenceStore::slots [[gnu::tls_model("initial-exec")]];

/// Retains the copies in a thread's slots until the thread ends. Later reads, by destructors of
/// other thread-local objects, return a copy that is never released.
struct PreferenceStore::SlotOwner {
  std::array<Ref<Dictionary>, kSlots> entries;
  static thread_local constinit bool isGone;

  ~SlotOwner() {
    slots = {};
    isGone = true;
  }
  static Ref<Dictionary>& of(std::size_t slot) {
    static thread_local SlotOwner owner;
    return owner.entries[slot];
  }
};
thread_local constinit bool PreferenceStore::SlotOwner::isGone = false;

std::shared_ptr<PreferenceStore> PreferenceStore::at(const std::string& path) {
  if (path.empty()) return std::make_shared<PreferenceStore>(path);
  struct Stores {
    Lock lock;
    std::map<std::string, std::weak_ptr<PreferenceStore>> all TQ_GUARDED_BY(lock);
  };
  static auto& stores = *new Stores;  // never destroyed: threads may outlive main
  const Locked guard(stores.lock);
  std::weak_ptr<PreferenceStore>& known = stores.all[path];
  std::shared_ptr<PreferenceStore> store = known.lock();
  if (store == nullptr) known = store = std::make_shared<PreferenceStore>(path);
  return store;
}

PreferenceStore::PreferenceStore(std::string path)
    : slot_(nextSlot(kSlots)),
      path_(std::move(path)),
      words_(&ownWords_),
      edition_(nextEdition()),
      entries_(MutableDictionary::dictionary()) {
  const Locked guard(lock_);
  static_cast<void>(mapGeneration());  // the first call reports a failure
}

PreferenceStore::~PreferenceStore() = default;

const Dictionary& PreferenceStore::refresh() {
  Slot fresh;
  Ref<Dictionary> entries;
  std::vector<Message> messages;
  {
    const Locked guard(lock_);
    const std::uint64_t generation = settledGeneration();
    if (generation != entriesGeneration_) load(generation);
    if (snapshot_ == nullptr) snapshot_ = merged();
    entries = snapshot_;
    // A copy that was read during a write is valid for this call only.
    if (entriesGeneration_ != kUnknown) fresh = {edition_, entriesGeneration_, entries.get()};
    messages.swap(messages_);
  }
  tell(messages);  // before the slot is set: a log sink may read preferences
  if (SlotOwner::isGone) return *entries.leak();
  slots[slot_] = fresh;
  Ref<Dictionary>& owned = SlotOwner::of(slot_);
  std::swap(owned, entries);
  return *owned;
}

Ref<Dictionary> PreferenceStore::merged() const {
  if (unsaved_.empty()) return refCast<Dictionary>(entries_->copy());
  const auto merged = MutableDictionary::dictionaryWithDictionary(*entries_);
  for (const auto& [key, change] : unsaved_) put(*merged, key, change.value);
  return refCast<Dictionary>(merged->copy());
}

std::uint64_t PreferenceStore::settledGeneration() {
  auto& generation = words_.load()->generation;
  std::uint64_t now = generation.load();
  if (now % 2 == 0 || shared_ == nullptr || !shared_->tryLock()) return now;
  now = generation.load();
  if (now % 2 != 0) generation.store(++now);  // the lock was free, so the writer is dead
  shared_->unlock();
  return now;
}

void PreferenceStore::load(std::uint64_t generation) {
  snapshot_ = nullptr;
  entriesGeneration_ = kUnknown;
  if (shared_ == nullptr) {
    entriesGeneration_ = generation;  // all entries are in memory
    return;
  }
  closeFormerDatabase();
  if (!database_.isOpen() && !openToRead()) return;
  auto entries = MutableDictionary::dictionary();
  std::size_t invalid = 0;
  const auto keep = [&](std::string_view key, std::span<const std::byte> bytes) {
    Ref<String> name = String::stringWithGeneralisedUTF8(key);
    Ref<Object> value = name != nullptr ? propertyListFromBytes(bytes) : nullptr;
    if (value != nullptr) {
      entries->setObject(std::move(value), std::move(name));
    } else {
      ++invalid;
    }
  };
  const Result result = database_.isOpen() ? database_.read(keep) : Result::done;
  if (result == Result::damaged) {
    const Writing writing(*shared_);
    if (!writing.isLocked()) return complain("lock", strerrordesc_np(errno));
    if (words_.load()->incarnation.load() == incarnation_ && setAside()) {
      words_.load()->generation.store(writing.after());
    }
    return;  // the next read opens a new database
  }
  if (result == Result::failed) return complain("read", database_.fault());
  if (invalid != 0) {
    messages_.push_back({LogLevel::error, "Ignored " + std::to_string(invalid) +
                                              " invalid entries of the preferences " + path_ +
                                              "."});
  }
  entries_ = std::move(entries);
  if (generation % 2 == 0) entriesGeneration_ = generation;
}

void PreferenceStore::set(std::string_view key, Ref<Object> value, Ref<Data> bytes) {
  std::vector<Message> messages;
  {
    const Locked guard(lock_);
    if (path_.empty()) {
      put(*entries_, key, value);
      changedInMemory();
      return;
    }
    unsaved_.insert_or_assign(std::string(key),
                              PreferenceChange{std::move(value), std::move(bytes)});
    if (!flush()) changedInMemory();
    messages.swap(messages_);
  }
  tell(messages);
}

void PreferenceStore::changedInMemory() {
  snapshot_ = nullptr;
  edition_.store(nextEdition());
}

bool PreferenceStore::synchronize(Ref<Error>* error) {
  std::vector<Message> messages;
  bool isSaved;
  {
    const Locked guard(lock_);
    look();
    isSaved = flush();
    if (!isSaved) setOutError(error, Error::errorWithDomain(kErrorDomain, kCannotSave, complaint_));
    messages.swap(messages_);
  }
  tell(messages);
  return isSaved;
}

/// Closes files that were removed or replaced. The next change creates them again, with the changes
/// since the last check.
void PreferenceStore::look() {
  const bool isMapped = shared_ != nullptr && shared_->isAt(path_ + ".generation");
  const bool isInPlace = !database_.isOpen() || database_.isInPlace();
  if (shared_ != nullptr && !isMapped) former_.push_back(std::move(shared_));
  if (!isInPlace) {
    database_.close();
    entriesGeneration_ = kUnknown;
    words_.load()->incarnation.fetch_add(1);  // so that other processes stop using it, too
  }
  if (!isMapped || !isInPlace) unsaved_.merge(recent_);
  recent_.clear();
  looked_ = Clock::now();
}

bool PreferenceStore::flush() {
  if (unsaved_.empty()) return true;
  if (Clock::now() - looked_ >= kBetweenLooks) look();
  if (!mapGeneration()) return false;
  Writing writing(*shared_);
  if (!writing.isLocked()) return complain("lock", strerrordesc_np(errno)), false;
  closeFormerDatabase();
  writing.mark();
  if (!database_.isOpen() && !openToWrite()) return false;
  Result result = database_.write(unsaved_);
  if (result == Result::damaged && setAside() && openToWrite()) {
    result = database_.write(unsaved_);
  }
  if (result != Result::done) return complain("save", database_.fault()), false;
  const bool isWhole = entriesGeneration_ == writing.before();
  entriesGeneration_ = kUnknown;  // in case memory runs out from here on
  snapshot_ = nullptr;
  for (const auto& [key, change] : unsaved_) put(*entries_, key, change.value);
  while (!unsaved_.empty()) {  // without allocation, because all is saved already
    auto saved = recent_.insert(unsaved_.extract(unsaved_.begin()));
    if (!saved.inserted) saved.position->second = std::move(saved.node.mapped());
  }
  complaint_.clear();
  if (isWhole) entriesGeneration_ = writing.after();
  return true;
}

bool PreferenceStore::mapGeneration() {
  if (shared_ != nullptr) return true;
  if (path_.empty()) return false;
  std::error_code failure;
  std::filesystem::create_directories(std::filesystem::path(path_).parent_path(), failure);
  shared_ = SharedGeneration::open(path_ + ".generation");
  if (shared_ == nullptr) return complain("open", strerrordesc_np(errno)), false;
  database_.close();
  words_.store(&shared_->words());
  entriesGeneration_ = kUnknown;
  edition_.store(nextEdition());  // the old generations belong to another file
  return true;
}

/// Closes the database if another process has renamed it or found it removed.
void PreferenceStore::closeFormerDatabase() {
  if (database_.isOpen() && words_.load()->incarnation.load() != incarnation_) database_.close();
}

/// Does not take the shared lock if the database is valid, so that a reader does not wait for a
/// stopped writer. @return true also if there is no database; none is created
bool PreferenceStore::openToRead() {
  const std::string path = databasePath(path_);
  incarnation_ = words_.load()->incarnation.load();
  if (::access(path.c_str(), F_OK) != 0 && errno == ENOENT) return true;
  const Result result = database_.open(path, false);
  if (result == Result::failed) complain("open", database_.fault());
  if (result != Result::damaged) return result == Result::done;
  const Writing writing(*shared_);
  if (!writing.isLocked()) return complain("lock", strerrordesc_np(errno)), false;
  return openToWrite();
}

/// The caller must hold the shared lock.
bool PreferenceStore::openToWrite() {
  const std::string path = databasePath(path_);
  incarnation_ = words_.load()->incarnation.load();
  Result result = database_.open(path, true);
  if (result == Result::damaged && setAside()) result = database_.open(path, true);
  if (result != Result::done) complain("open", database_.fault());
  return result == Result::done;
}

/// Renames the damaged database and its log. The entries that this process knows are saved again
/// with the next change.
bool PreferenceStore::setAside() {
  const std::string path = databasePath(path_);
  const std::string fault = database_.fault();
  database_.close();
  std::string aside = path + ".damaged";
  for (int number = 2;
       ::renameat2(AT_FDCWD, path.c_str(), AT_FDCWD, aside.c_str(), RENAME_NOREPLACE) != 0;
       ++number) {
    if (errno != EEXIST) return complain("rename", strerrordesc_np(errno)), false;
    aside = path + ".damaged-" + std::to_string(number);
  }
  ::rename((path + "-wal").c_str(), (aside + "-wal").c_str());
  ::unlink((path + "-shm").c_str());
  incarnation_ = words_.load()->incarnation.fetch_add(1) + 1;
  messages_.push_back({LogLevel::fault, "The preferences " + path + " are damaged (" + fault +
                                            ") and were renamed to " + aside + "."});
  for (const auto& [key, value] : *entries_) {
    std::string ignored;
    unsaved_.try_emplace(std::string(static_cast<const String&>(key).view()),
                         PreferenceChange{share(value), bytesFromPropertyList(value, ignored)});
  }
  return true;
}

/// Records an error for the log, unless it equals the previous one.
void PreferenceStore::complain(std::string_view what, std::string_view why) {
  std::string complaint = "Cannot " + std::string(what) + " the preferences " +
                          databasePath(path_) + ": " + std::string(why) + ".";
  if (complaint == complaint_) return;
  complaint_ = std::move(complaint);
  messages_.push_back({LogLevel::error, complaint_ + " Changes are kept in memory."});
}

void PreferenceStore::tell(const std::vector<Message>& messages) {
  for (const Message& message : messages) {
    LogChannel::channel("com.korvan.preferences", "store").log(message.level, message.text);
  }
}

}  // namespace tq::detail
