#include <TQFoundation/objects/Class.h>

#include <algorithm>
#include <functional>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/Date.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/Null.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/Set.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/objects/URL.h>
#include <TQFoundation/objects/UUID.h>
#include <TQFoundation/objects/Value.h>

namespace tq {
namespace {

struct NamedClass {
  std::string_view name;
  const Class* record;
};

template <class T>
consteval NamedClass named() noexcept {
  return {classOf<T>.codingName(), &classOf<T>};
}

/// The classes that archives may name although no host has registered them.
constexpr NamedClass kLibraryClasses[] = {
    named<Array>(),
    named<Data>(),
    named<Date>(),
    named<Dictionary>(),
    named<Error>(),
    named<MutableArray>(),
    named<MutableData>(),
    named<MutableDictionary>(),
    named<Null>(),
    named<Number>(),
    named<Set>(),
    named<String>(),
    named<URL>(),
    named<UUID>(),
    named<Value>(),
    // Archives written by other programs hold these too.
    {"NSMutableSet", &classOf<Set>},
    {"NSMutableString", &classOf<String>},
};

struct NameHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view name) const noexcept {
    return std::hash<std::string_view>{}(name);
  }
};

struct Registry {
  Registry() {
    for (const auto& [name, record] : kLibraryClasses) classes.emplace(name, record);
  }

  std::shared_mutex lock;
  std::unordered_map<std::string, const Class*, NameHash, std::equal_to<>> classes;
};

Registry& registry() {
  static auto& instance = *new Registry;  // never destroyed: threads may outlive main
  return instance;
}

}  // namespace

void Class::registerRecord(const Class& record) {
  Registry& all = registry();
  const std::unique_lock guard(all.lock);
  const auto [entry, isNew] = all.classes.try_emplace(std::string(record.codingName()), &record);
  const bool isNameFree = isNew || entry->second == &record;
  TQ_ASSERT(isNameFree && "another class is registered under the coding name");
}

void Class::unregisterRecord(const Class& record) {
  TQ_ASSERT(!record.isLibraryClass());
  Registry& all = registry();
  const std::unique_lock guard(all.lock);
  const auto entry = all.classes.find(record.codingName());
  if (entry != all.classes.end() && entry->second == &record) all.classes.erase(entry);
}

bool Class::isLibraryClass() const noexcept {
  return std::ranges::find(kLibraryClasses, this, &NamedClass::record) != std::end(kLibraryClasses);
}

const Class* Class::classNamed(std::string_view codingName) {
  Registry& all = registry();
  const std::shared_lock guard(all.lock);
  const auto found = all.classes.find(codingName);
  return found != all.classes.end() ? found->second : nullptr;
}

}  // namespace tq
