#include <TQFoundation/environment/TQKorvanInfo.h>

#include <algorithm>
#include <ranges>
#include <utility>
#include <vector>

#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/platform/preferences/UserDefaults.h>
#include <TQFoundation/platform/threads/Lock.h>

namespace tq {
namespace {

struct Info {
  Lock lock;
  Ref<Object> entries TQ_GUARDED_BY(lock);  // a Dictionary
  std::vector<std::pair<std::string, Ref<Object>>> overrides TQ_GUARDED_BY(lock);
};

Info& shared() {
  static auto& info = *new Info;  // never destroyed: threads may run after main returns
  return info;
}

std::string text(std::string_view key) {
  const Ref<Object> object = TQKorvanInfo::objectForInfoKey(key);
  const bool isText = object != nullptr && (object->kind() == ObjectKind::string ||
                                            object->kind() == ObjectKind::number);
  return isText ? object->description() : std::string();
}

std::int64_t integer(std::string_view key) {
  return UserDefaults::integerReading(TQKorvanInfo::objectForInfoKey(key).get());
}

class InfoVariant final : public Subclass<InfoVariant>, public CurrentVariantDelegate {
 public:
  static constexpr std::string_view className = "TQKorvanInfoVariant";
  Ref<LRVariant> currentVariant() override { return TQKorvanInfo::variant(); }
};

constexpr char lowerCase(char c) noexcept {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

void TQKorvanInfo::setInfoDictionary(const Dictionary& info) {
  Ref<Object> entries = info.copy();
  const Locked guard(shared().lock);
  std::swap(shared().entries, entries);
}

Ref<Object> TQKorvanInfo::objectForInfoKey(std::string_view key) {
  const Locked guard(shared().lock);
  for (const auto& [overridden, value] : std::views::reverse(shared().overrides)) {
    if (overridden == key) return value;
  }
  const auto* entries = objectCast<Dictionary>(shared().entries.get());
  return Ref<Object>(entries != nullptr ? entries->objectForKey(key) : nullptr);
}

std::string TQKorvanInfo::name() { return text(TQKorvanInfoNameKey); }
std::string TQKorvanInfo::identifier() { return text(TQKorvanInfoIdentifierKey); }
std::string TQKorvanInfo::version() { return text(TQKorvanInfoVersionKey); }
std::string TQKorvanInfo::build() { return text(TQKorvanInfoBuildKey); }
std::int64_t TQKorvanInfo::documentVersion() { return integer(TQKorvanInfoDocumentVersionKey); }
std::int64_t TQKorvanInfo::pasteboardVersion() { return integer(TQKorvanInfoPasteboardVersionKey); }
std::string TQKorvanInfo::variantName() { return text(TQKorvanInfoVariantKey); }

Ref<LRVariant> TQKorvanInfo::variant() {
  const Ref<LRVariant> named = variantNamed(variantName());
  return named != nullptr ? named : LRVariant::final();
}

Ref<LRVariant> TQKorvanInfo::variantNamed(std::string_view name) {
  static constexpr struct {
    std::string_view name;
    const Ref<LRVariant>& (*member)();
  } kNames[] = {
      {"none", LRVariant::none},
      {"final", LRVariant::final},
      {"xcode", LRVariant::xcode},
      {"beta", LRVariant::beta},
      {"internal", LRVariant::internal},
      {"experimental", LRVariant::experimental},
      {"private", LRVariant::private_},
      {"testing", LRVariant::testing},
      {"featurepreview", LRVariant::featurepreview},
      {"inhouse", LRVariant::inHouse},
      {"privatebeta", LRVariant::privateBeta},
      {"all", LRVariant::all},
  };
  for (const auto& known : kNames) {
    if (std::ranges::equal(known.name, name, {}, {}, lowerCase)) return known.member();
  }
  return nullptr;
}

void TQKorvanInfo::installVariantDelegate() { LRVariant::setDelegate(makeRef<InfoVariant>()); }

TQKorvanInfo::Override::Override(std::string_view key, Ref<Object> value) {
  const Locked guard(shared().lock);
  shared().overrides.emplace_back(key, std::move(value));
}

TQKorvanInfo::Override::~Override() {
  Ref<Object> value;  // released after the lock
  const Locked guard(shared().lock);
  std::swap(value, shared().overrides.back().second);
  shared().overrides.pop_back();
}

}  // namespace tq
