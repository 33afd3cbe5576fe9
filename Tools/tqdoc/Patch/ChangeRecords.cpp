#include "Patch/ChangeRecords.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "Patch/ArchiveTree.h"

namespace tqdoc {
namespace {

[[nodiscard]] tq::Ref<tq::Object> jsonText(std::string_view text) {
  return tq::String::stringWithUTF8Repaired(text);
}

/// Digests of nodes and drawings by themselves, each computed once.
class OwnDigests {
 public:
  template <class T>
  [[nodiscard]] tq::Ref<tq::Object> of(const T& object) {
    std::string& digest = known_[&object];
    if (digest.empty()) digest = digestOf(*ownTree(object));
    return jsonText(digest);
  }

 private:
  std::unordered_map<const tq::Object*, std::string> known_;
};

/// Returns the value of a property such as "style.fill" in a tree, or null.
[[nodiscard]] tq::Object* valueIn(const tq::Dictionary& tree, std::string_view property) {
  const std::size_t dot = property.find('.');
  tq::Object* const member = tree.objectForKey(property.substr(0, dot));
  if (dot == property.npos || member == nullptr) return member;
  const auto* values = tq::objectCast<tq::Dictionary>(member);
  return values != nullptr ? values->objectForKey(property.substr(dot + 1)) : nullptr;
}

[[nodiscard]] tq::Ref<tq::Object> recordOf(const Difference& difference,
                                           const Document& oldDocument, const Document& newDocument,
                                           OwnDigests& digests) {
  const auto record = tq::MutableDictionary::dictionary();
  record->setObject(jsonText(wordFor(difference.kind)), "kind");
  record->setObject(jsonText(difference.path), "path");
  record->setObject(jsonText(difference.what), "what");
  const Node* const oldNode = difference.oldNode;
  switch (difference.kind) {
    case Difference::Kind::changed: {
      record->setObject(jsonText(difference.oldValue), "old");
      record->setObject(jsonText(difference.newValue), "new");
      record->setObject(jsonText(difference.property), "property");
      record->setObject(oldNode != nullptr ? digests.of(*oldNode) : digests.of(oldDocument),
                        "sha1");
      const auto tree =
          difference.newNode != nullptr ? ownTree(*difference.newNode) : ownTree(newDocument);
      if (tq::Object* value = valueIn(*tree, difference.property)) {
        record->setObject(tq::share(*value), "value");
      }
      break;
    }
    case Difference::Kind::removed:
      record->setObject(jsonText(digestOf(*archiveTree(*oldNode))), "sha1");
      break;
    case Difference::Kind::moved:
      record->setObject(jsonText(difference.oldPath), "from");
      record->setObject(digests.of(*oldNode), "sha1");
      record->setObject(digests.of(*difference.oldGroup), "group");
      break;
    case Difference::Kind::inserted:
      record->setObject(digests.of(*difference.oldGroup), "group");
      record->setObject(archiveTree(*difference.newNode), "value");
      break;
  }
  return record;
}

}  // namespace

const char* wordFor(Difference::Kind kind) noexcept {
  constexpr const char* kWords[] = {"changed", "removed", "inserted", "moved"};
  return kWords[static_cast<std::size_t>(kind)];
}

tq::Ref<tq::Array> changeRecords(const std::vector<Difference>& differences,
                                 const Document& oldDocument, const Document& newDocument) {
  OwnDigests digests;
  std::vector<tq::Ref<tq::Object>> records;
  records.reserve(differences.size());
  for (const Difference& difference : differences) {
    records.push_back(recordOf(difference, oldDocument, newDocument, digests));
  }
  return tq::Array::arrayWithObjects(std::move(records));
}

}  // namespace tqdoc
