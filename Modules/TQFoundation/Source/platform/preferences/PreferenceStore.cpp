#include <TQFoundation/platform/preferences/detail/PreferenceStore.h>

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include <TQFoundation/objects/String.h>
#include <TQFoundation/platform/archive/PropertyList.h>

namespace tq::detail {
namespace {

using Result = PreferenceDatabase::Result;

constexpr std::string_view kErrorDomain = "com.korvan.UserDefaults";
constexpr std::int64_t kCannotSave = 1;
constexpr std::chrono::seconds kBetweenLooks(1);
constexpr mode_t kOwnerOnly = 0700;

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

/// Holds the lock that processes share, and marks the generation as being written. Without shared
/// words, only the locks of the database are used.
class Writing {
 public:
  explicit Writing(SharedGeneration* shared)
      : shared_(shared), isLocked_(shared == nullptr || shared->lock()) {
    if (shared_ == nullptr || !isLocked_) return;
    auto& generation = shared_->words().generation;
    before_ = generation.load();
    if (before_ % 2 != 0) ++before_;  // marked by a writer that was killed
  }
  ~Writing() {
    if (shared_ == nullptr || !isLocked_) return;
    if (isMarked_) shared_->words().generation.store(after());
    shared_->unlock();
  }
  Writing(const Writing&) = delete;
  Writing& operator=(const Writing&) = delete;

  [[nodiscard]] bool isLocked() const { return isLocked_; }
  [[nodiscard]] std::uint64_t before() const { return before_; }
  [[nodiscard]] std::uint64_t after() const { return before_ + 2; }
  void mark() {
    if (shared_ == nullptr) return;
    shared_->words().generation.store(before_ + 1);
    isMarked_ = true;
  }

 private:
  SharedGeneration* const shared_;
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
      folder_(path_.substr(0, path_.rfind('/') + 1)),
      words_(&ownWords_),
      edition_(nextEdition()),
      entries_(MutableDictionary::dictionary()) {
  if (path_.empty()) return;
  const Locked guard(lock_);
  ownWords_.generation.store(1);
  if (makeFolder()) shareGeneration();  // the first call will report a failure
}

PreferenceStore::~PreferenceStore() {
  const Locked guard(lock_);
  if (!database_.isOpen() || database_.files() != PreferenceDatabase::Files::cut) return;
  look();  // closing would otherwise write a broken log into the database
  static_cast<void>(flush());
}

const Dictionary& PreferenceStore::refresh() {
  Slot fresh;
  Ref<Dictionary> entries;
  std::vector<Message> messages;
  {
    const Locked guard(lock_);
    if (shared_ != nullptr && shared_->words().isRetired.load() != 0) stopSharing();
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
  if (now % 2 != 0) generation.store(++now);  // the lock was free, so the writer was killed
  shared_->unlock();
  return now;
}

void PreferenceStore::load(std::uint64_t generation) {
  if (path_.empty()) {
    entriesGeneration_ = generation;
    return;
  }
  if (shared_ == nullptr && !database_.hasChanged()) return;
  snapshot_ = nullptr;
  entriesGeneration_ = kUnknown;
  closeFormerDatabase();
  if (!database_.isOpen() && !openToRead()) return;
  const Result result = readEntries();
  if (result == Result::damaged) {
    Writing writing(shared_.get());
    if (!writing.isLocked()) return complain("lock", strerrordesc_np(errno));
    const bool isFirst = words_.load()->incarnation.load() == incarnation_;
    if (isFirst && setAside(database_.fault())) writing.mark();
    return;  // the next read opens a new database
  }
  if (result != Result::done) {
    complain("read", database_.fault());
    return database_.close();
  }
  if (generation % 2 == 0) entriesGeneration_ = generation;
}

/// Reads the open database, or nothing if there is none. On failure, the entries stay.
PreferenceDatabase::Result PreferenceStore::readEntries() {
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
  if (result != Result::done) return result;
  if (invalid != 0) {
    messages_.push_back({LogLevel::error, "Ignored " + std::to_string(invalid) +
                                              " invalid entries of the preferences " + path_ +
                                              "."});
  }
  entries_ = std::move(entries);
  return result;
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

bool PreferenceStore::noticeChanges() {
  std::vector<Message> messages;
  bool isSettled;
  {
    const Locked guard(lock_);
    look();
    isSettled = settledGeneration() % 2 == 0;
    messages.swap(messages_);
  }
  tell(messages);
  return isSettled;
}

std::vector<std::string> PreferenceStore::files() const {
  std::vector<std::string> files{databasePath(path_)};
  struct stat status {};
  const bool isLink = ::lstat(files[0].c_str(), &status) == 0 && S_ISLNK(status.st_mode);
  if (isLink) files.push_back(PreferenceDatabase::targetOf(files[0]));
  return files;
}

/// Closes files that were removed or replaced. The next change creates them again, with the changes
/// since the last check.
void PreferenceStore::look() {
  using Files = PreferenceDatabase::Files;
  const bool isSameFolder = shared_ == nullptr || shared_->isOf(folder_);
  const Files files = database_.isOpen() ? database_.files() : Files::inPlace;
  if (!isSameFolder || files == Files::moved) unsaved_.merge(recent_);
  if (files == Files::cut) {
    Writing writing(shared_.get());
    database_.closeUnchanged();
    const bool isFirst = words_.load()->incarnation.load() == incarnation_;
    if (writing.isLocked() && isFirst && setAside("another program has truncated it")) {
      writing.mark();
    }
  } else if (files == Files::moved) {
    database_.closeUnchanged();
    words_.load()->incarnation.fetch_add(1);  // so that other processes stop using it, too
  }
  if (!database_.isOpen() || database_.hasChanged()) {  // perhaps with other words
    snapshot_ = nullptr;
    entriesGeneration_ = kUnknown;
    edition_.store(nextEdition());
  }
  if (!isSameFolder) {
    stopSharing();
  } else if (shared_ == nullptr) {
    shareGeneration();  // the folder may be there again
  }
  recent_.clear();
  looked_ = Clock::now();
}

bool PreferenceStore::flush() {
  if (unsaved_.empty()) return true;
  const bool isLogWhole = !database_.isOpen() || database_.isLogWhole();
  if (!isLogWhole || Clock::now() - looked_ >= kBetweenLooks) look();
  if (shared_ == nullptr) {
    if (!makeFolder()) return false;
    shareGeneration();
  }
  Writing writing(shared_.get());
  if (!writing.isLocked()) return complain("lock", strerrordesc_np(errno)), false;
  closeFormerDatabase();
  writing.mark();
  if ((!database_.isOpen() || !database_.isWritable()) && !openToWrite()) return false;
  const bool isWhole = shared_ != nullptr && entriesGeneration_ == writing.before();
  entriesGeneration_ = kUnknown;  // in case memory runs out from here on
  Result result = save();
  if (result == Result::damaged && setAside(database_.fault()) && openToWrite()) result = save();
  if (isWhole) entriesGeneration_ = writing.after();
  if (result != Result::done) return complain("save", database_.fault()), false;
  complaint_.clear();
  return true;
}

/// Saves the changes together. If they do not fit, saves as many as possible: a value that is too
/// large does not prevent others from being saved.
PreferenceDatabase::Result PreferenceStore::save() {
  const Result result = database_.write(unsaved_);
  if (result == Result::full) {
    database_.releaseSpace();
    return unsaved_.size() == 1 ? result : saveWhatFits();
  }
  if (result == Result::done) keepSaved(unsaved_);
  return result;
}

/// Saves one change after the other, from the smallest, until one does not fit.
PreferenceDatabase::Result PreferenceStore::saveWhatFits() {
  const auto sizeOf = [](const auto& change) {
    return change.second.bytes != nullptr ? change.second.bytes->length() : 0;
  };
  while (!unsaved_.empty()) {
    const auto smallest = std::ranges::min_element(unsaved_, {}, sizeOf);
    PreferenceChanges one;
    one.insert(unsaved_.extract(smallest));
    const Result result = database_.write(one);
    if (result == Result::done) {
      keepSaved(one);
      continue;
    }
    unsaved_.merge(one);
    return result;
  }
  return Result::done;
}

/// Moves the changes into the entries.
void PreferenceStore::keepSaved(PreferenceChanges& saved) {
  snapshot_ = nullptr;
  for (const auto& [key, change] : saved) put(*entries_, key, change.value);
  while (!saved.empty()) {  // without allocation, because all is saved already
    auto kept = recent_.insert(saved.extract(saved.begin()));
    if (!kept.inserted) kept.position->second = std::move(kept.node.mapped());
  }
}

bool PreferenceStore::makeFolder() {
  if (folder_.empty()) return complain("open", "there is no folder for them"), false;
  for (auto end = folder_.find('/', 1); end != std::string::npos;
       end = folder_.find('/', end + 1)) {
    const std::string folder = folder_.substr(0, end);
    if (::mkdir(folder.c_str(), kOwnerOnly) == 0) continue;
    const int failure = errno;
    if (::access(folder.c_str(), F_OK) == 0) continue;
    return complain("open", strerrordesc_np(failure)), false;
  }
  struct stat status {};
  if (::stat(folder_.c_str(), &status) == 0) return true;
  return complain("open", strerrordesc_np(errno)), false;
}

/// Shares the generation with other processes if that is possible.
void PreferenceStore::shareGeneration() {
  shared_ = SharedGeneration::open(folder_, path_.substr(folder_.size()));
  if (shared_ == nullptr) return;
  database_.close();
  words_.store(&shared_->words());
  entriesGeneration_ = kUnknown;
  edition_.store(nextEdition());  // the former generations belong to other words
}

/// Other processes use other words from now on.
void PreferenceStore::stopSharing() {
  words_.store(&ownWords_);
  edition_.store(nextEdition());
  former_.push_back(std::move(shared_));
  entriesGeneration_ = kUnknown;
  shareGeneration();
}

/// Closes the database if another process has renamed it or found it removed.
void PreferenceStore::closeFormerDatabase() {
  if (!database_.isOpen()) return;
  const bool isFormer = words_.load()->incarnation.load() != incarnation_;
  if (isFormer || !database_.isUsable()) database_.close();
}

/// Does not take the shared lock if the database is valid, so that a reader does not wait for a
/// stopped writer. @return true also if there is no database; none is created
bool PreferenceStore::openToRead() {
  const std::string path = databasePath(path_);
  incarnation_ = words_.load()->incarnation.load();
  if (folder_.empty()) return true;  // the name alone would be that of a file elsewhere
  if (::access(path.c_str(), F_OK) != 0 && (errno == ENOENT || errno == ENOTDIR)) return true;
  const Result result = database_.openToRead(path);
  if (result == Result::done) return true;
  if (result != Result::damaged) return complain("open", database_.fault()), false;
  const Writing writing(shared_.get());
  if (!writing.isLocked()) return complain("lock", strerrordesc_np(errno)), false;
  return openToWrite();
}

/// The caller must hold the shared lock.
bool PreferenceStore::openToWrite() {
  const std::string path = databasePath(path_);
  incarnation_ = words_.load()->incarnation.load();
  Result result = database_.openToWrite(path);
  if (result == Result::damaged && setAside(database_.fault()))
    result = database_.openToWrite(path);
  if (result != Result::done) complain("open", database_.fault());
  return result == Result::done;
}

/// Renames the damaged database and its log. The entries that can still be read, or otherwise those
/// that this process knows, are saved again with the next change.
bool PreferenceStore::setAside(const std::string& reason) {
  const std::string path = database_.path();
  // Begun before the database is used, which changes its fault.
  std::string message =
      "The preferences " + path + " are damaged (" + reason + ") and were renamed to ";
  database_.closeUnchanged();
  const bool isCurrent = shared_ != nullptr && entriesGeneration_ == words_.load()->generation;
  if (!isCurrent) {
    if (database_.openToRead(path) == Result::done) static_cast<void>(readEntries());
    unsaved_.merge(recent_);  // the log that had them may be lost
  }
  database_.closeUnchanged();
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
  messages_.push_back({LogLevel::fault, std::move(message) + aside + "."});
  saveAllAgain();
  return true;
}

/// Adds the known entries to the changes that must be saved.
void PreferenceStore::saveAllAgain() {
  for (const auto& [key, value] : *entries_) {
    std::string ignored;
    unsaved_.try_emplace(std::string(static_cast<const String&>(key).view()),
                         PreferenceChange{share(value), bytesFromPropertyList(value, ignored)});
  }
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
