#include <TQFoundation/objects/Class.h>

#include <functional>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>

#include <TQFoundation/objects/detail/LibraryClasses.h>

namespace tq {
namespace {

struct NameHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view name) const noexcept {
    return std::hash<std::string_view>{}(name);
  }
};

struct Registry {
  Registry() {
    for (const auto& [name, record] : detail::libraryClasses()) classes.emplace(name, record);
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
  all.classes.insert_or_assign(std::string(record.codingName()), &record);
}

const Class* Class::classNamed(std::string_view codingName) {
  Registry& all = registry();
  const std::shared_lock guard(all.lock);
  const auto found = all.classes.find(codingName);
  return found != all.classes.end() ? found->second : nullptr;
}

}  // namespace tq
