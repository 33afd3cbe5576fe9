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

constinit TQSingleton::Making* TQSingleton::Making::innermost = nullptr;

TQSingleton::Making::Making(std::string_view name) : name_(name), outer_(innermost) {
  for (const Making* each = outer_; each != nullptr; each = each->outer_) {
    TQ_ASSERT(each->name_ != name && "the shared instance is requested while it is created");
  }
  innermost = this;
}

TQSingleton::Making::~Making() { innermost = outer_; }

TQSingleton::~TQSingleton() = default;

void TQSingleton::awakeFromNib() {
  if (const Ref<TQSingleton> known = registered(objectClass().name())) {
    TQ_ASSERT(&known->objectClass() == &objectClass() && "another class has this name");
  }
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
