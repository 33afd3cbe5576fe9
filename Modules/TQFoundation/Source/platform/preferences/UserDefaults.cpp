#include <TQFoundation/platform/preferences/UserDefaults.h>

#include <errno.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <utility>
#include <vector>

#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/platform/archive/PropertyList.h>
#include <TQFoundation/platform/preferences/detail/PreferenceStore.h>
#include <TQFoundation/platform/threads/Lock.h>

namespace tq {
namespace {

using detail::PreferenceStore;

constexpr std::string_view kGlobalDomain = "global";
constexpr std::size_t kLongestDomain = 200;  // bytes, so that file names stay below 255

bool isDomain(std::string_view name) {
  return !name.empty() && name.size() <= kLongestDomain && name.front() != '.' &&
         name.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos &&
         name != kGlobalDomain;
}

constexpr std::size_t kLongestUserEntry = std::size_t{1} << 20;

bool isAbsolute(const char* path) { return path != nullptr && *path == '/'; }

/// Returns $HOME, or the folder that the system's user database has, or an empty path.
std::string homeFolder() {
  const char* const home = std::getenv("HOME");
  if (isAbsolute(home)) return home;
  std::vector<char> buffer(1024);
  passwd entry{};
  passwd* user = nullptr;
  while (::getpwuid_r(::geteuid(), &entry, buffer.data(), buffer.size(), &user) == ERANGE &&
         buffer.size() < kLongestUserEntry) {
    buffer.resize(2 * buffer.size());
  }
  return user != nullptr && isAbsolute(user->pw_dir) ? user->pw_dir : "";
}

/// Returns an empty path if the user has no home.
std::string preferenceFolder() {
  const char* const configured = std::getenv("XDG_CONFIG_HOME");
  if (isAbsolute(configured)) return std::string(configured) + "/korvan";
  const std::string home = homeFolder();
  return home.empty() ? home : home + "/.config/korvan";
}

/// Returns an empty path for an empty one, or if the current folder was removed.
std::string absolute(std::string_view folder) {
  std::error_code ignored;
  return folder.empty() ? "" : std::filesystem::absolute(folder, ignored).string();
}

std::shared_ptr<PreferenceStore> storeIn(std::string_view folder, std::string_view name) {
  std::string path(folder);
  if (!path.empty()) path += '/';
  return PreferenceStore::at(path.append(name));
}

const std::shared_ptr<PreferenceStore>& argumentStore() {
  static const auto& store = *new std::shared_ptr<PreferenceStore>(PreferenceStore::at(""));
  return store;
}

const std::shared_ptr<PreferenceStore>& registeredStore() {
  static const auto& store = *new std::shared_ptr<PreferenceStore>(PreferenceStore::at(""));
  return store;
}

struct ApplicationDomain {
  Lock lock;
  std::string name TQ_GUARDED_BY(lock);
};

ApplicationDomain& applicationDomain() {
  static auto& domain = *new ApplicationDomain;  // never destroyed: threads may outlive main
  return domain;
}

std::string standardDomain() {
  ApplicationDomain& domain = applicationDomain();
  const Locked guard(domain.lock);
  if (!domain.name.empty()) return domain.name;
  return isDomain(program_invocation_short_name) ? program_invocation_short_name : "application";
}

/// An immutable copy of a value, and its serialised bytes.
struct Kept {
  Ref<Object> value;
  Ref<Data> bytes;
};

Kept keep(const Object& object, std::string_view key) {
  std::string fault;
  Ref<Data> bytes = detail::bytesFromPropertyList(object, fault);
  if (bytes == nullptr) {
    throw Exception(InvalidArgumentException,
                    "Attempt to insert " + fault + " for key " + std::string(key));
  }
  const bool isContainer =
      object.kind() == ObjectKind::array || object.kind() == ObjectKind::dictionary;
  return {isContainer ? detail::propertyListFromBytes(bytes->bytes()) : object.copy(),
          std::move(bytes)};
}

void store(PreferenceStore& in, const Object* object, std::string_view key) {
  if (String::stringWithGeneralisedUTF8(key) == nullptr) {
    throw Exception(InvalidArgumentException, "Attempt to use a key that is not text");
  }
  Kept kept = object != nullptr ? keep(*object, key) : Kept();
  in.set(key, std::move(kept.value), std::move(kept.bytes));
}

}  // namespace

UserDefaults::~UserDefaults() = default;

UserDefaults::UserDefaults(std::string_view folder, std::string_view name)
    : levels_{argumentStore(), storeIn(folder, name), storeIn(folder, kGlobalDomain),
              registeredStore()} {}

Ref<UserDefaults> UserDefaults::standardUserDefaults() {
  static const auto& standard = *new Ref<UserDefaults>(
      Ref<UserDefaults>::adopt(new UserDefaults(preferenceFolder(), standardDomain())));
  return standard;
}

bool UserDefaults::setApplicationDomain(std::string_view name) {
  if (!isDomain(name)) return false;
  ApplicationDomain& domain = applicationDomain();
  const Locked guard(domain.lock);
  domain.name = name;
  return true;
}

Ref<UserDefaults> UserDefaults::initWithSuiteName(std::string_view name) {
  return initWithSuiteName(name, preferenceFolder());
}

Ref<UserDefaults> UserDefaults::initWithSuiteName(std::string_view name,
                                                  std::string_view inFolder) {
  if (!isDomain(name)) return nullptr;
  return Ref<UserDefaults>::adopt(new UserDefaults(absolute(inFolder), name));
}

void UserDefaults::setArguments(const Dictionary& arguments) {
  setAll(*argumentStore(), arguments);
}

const Object* UserDefaults::peekObjectForKey(std::string_view key) const {
  for (const Store& level : levels_) {
    const Dictionary& entries = level->entries();
    if (entries.count() == 0) continue;
    if (const Object* const found = entries.objectForKey(key)) return found;
  }
  return nullptr;
}

Ref<Object> UserDefaults::objectForKey(std::string_view key) const {
  return Ref<Object>(const_cast<Object*>(peekObjectForKey(key)));  // still immutable
}

bool UserDefaults::boolReading(const Object* object) noexcept {
  if (object == nullptr) return false;
  if (object->kind() == ObjectKind::number) return static_cast<const Number*>(object)->boolValue();
  return object->kind() == ObjectKind::string && static_cast<const String*>(object)->boolValue();
}

std::int64_t UserDefaults::integerReading(const Object* object) noexcept {
  if (object == nullptr) return 0;
  if (object->kind() == ObjectKind::number) {
    return static_cast<const Number*>(object)->integerValue();
  }
  return object->kind() == ObjectKind::string ? static_cast<const String*>(object)->integerValue()
                                              : 0;
}

bool UserDefaults::boolForKey(std::string_view key) const {
  return boolReading(peekObjectForKey(key));
}

std::int64_t UserDefaults::integerForKey(std::string_view key) const {
  return integerReading(peekObjectForKey(key));
}

double UserDefaults::doubleForKey(std::string_view key) const {
  const Object* const object = peekObjectForKey(key);
  if (const auto* number = objectCast<Number>(object)) return number->doubleValue();
  const auto* string = objectCast<String>(object);
  return string != nullptr ? string->doubleValue() : 0;
}

Ref<String> UserDefaults::stringForKey(std::string_view key) const {
  const Ref<Object> object = objectForKey(key);
  if (const auto* number = objectCast<Number>(object.get())) {
    return String::of(number->description());
  }
  return refCast<String>(object);
}

void UserDefaults::setObject(const Object* object, std::string_view forKey) {
  store(*levels_[kOwn], object, forKey);
}

void UserDefaults::setBool(bool value, std::string_view forKey) {
  setObject(Number::numberWith(value), forKey);
}

void UserDefaults::setInteger(std::int64_t value, std::string_view forKey) {
  setObject(Number::numberWith(value), forKey);
}

void UserDefaults::setDouble(double value, std::string_view forKey) {
  setObject(Number::numberWith(value), forKey);
}

void UserDefaults::removeObjectForKey(std::string_view key) { setObject(nullptr, key); }

void UserDefaults::registerDefaults(const Dictionary& defaults) {
  setAll(*levels_[kRegistered], defaults);
}

void UserDefaults::registerDefault(const Object& value, std::string_view forKey) {
  store(*levels_[kRegistered], &value, forKey);
}

// All entries are checked before the first is stored, so that an invalid one changes nothing.
void UserDefaults::setAll(PreferenceStore& store, const Dictionary& entries) {
  std::vector<std::pair<std::string, Kept>> kept;
  for (const auto& [key, value] : entries) {
    const auto* name = objectCast<String>(&key);
    if (name == nullptr) {
      throw Exception(InvalidArgumentException, "Attempt to use a key that is not text");
    }
    kept.emplace_back(name->view(), keep(value, name->view()));
  }
  for (auto& [key, value] : kept) store.set(key, std::move(value.value), std::move(value.bytes));
}

Ref<Dictionary> UserDefaults::dictionaryRepresentation() const {
  const auto all = MutableDictionary::dictionary();
  for (auto level = levels_.rbegin(); level != levels_.rend(); ++level) {
    for (const auto& [key, value] : (*level)->entries()) all->setObject(share(value), share(key));
  }
  return refCast<Dictionary>(all->copy());
}

/// @return false if a change may be incomplete
bool UserDefaults::noticeChanges() {
  const bool isSettled = levels_[kOwn]->noticeChanges();
  return levels_[kGlobal]->noticeChanges() && isSettled;
}

bool UserDefaults::synchronize(Ref<Error>* error) { return levels_[kOwn]->synchronize(error); }

}  // namespace tq
