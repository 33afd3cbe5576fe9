#include <TQFoundation/concurrency/caches/TQSingleton.h>

#include <map>
#include <string>

namespace tq {
namespace {

auto& registry() {
  static auto& all = *new std::map<std::string, Ref<TQSingleton>, std::less<>>;  // never destroyed
  return all;
}

}  // namespace

void TQSingleton::awakeFromNib() {
  // Swapped, so that the earlier instance is released after the registry has changed.
  Ref<TQSingleton> earlier(this);
  std::swap(registry()[std::string(objectClass().name())], earlier);
}

Ref<TQSingleton> TQSingleton::registered(std::string_view name) {
  const auto entry = registry().find(name);
  return entry != registry().end() ? entry->second : nullptr;
}

void TQSingleton::unregister(std::string_view name) {
  if (const auto entry = registry().find(name); entry != registry().end()) {
    const auto removed = registry().extract(entry);
  }
}

}  // namespace tq
