#include "Patch/ArchiveTree.h"

#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include "Model/Numbers.h"

namespace tqdoc {
namespace {

[[nodiscard]] tq::Ref<tq::Data> encoded(const tq::Object& object) {
  tq::Ref<tq::Error> error;
  auto data = tq::TQJSONEncoder::encodeObjectAsData(object, &error);
  if (!data) throw std::runtime_error(error->localizedDescription());
  return data;
}

[[nodiscard]] tq::Ref<tq::Object> label(std::string_view className, std::string_view name) {
  return tq::String::stringWithUTF8Repaired(std::string(className) + ' ' + std::string(name));
}

}  // namespace

tq::Ref<tq::Dictionary> archiveTree(const tq::Object& object) {
  auto tree =
      tq::refCast<tq::Dictionary>(tq::TQJSONDecoder::initWithData(*encoded(object))->root());
  if (!tree) throw std::runtime_error("not the archive of a drawing");
  return tree;
}

tq::Ref<tq::Dictionary> ownTree(const Document& document) {
  return ownTree(*archiveTree(*tq::makeRef<Document>(
      tq::String::stringWithUTF8Repaired(document.title()), document.page(),
      tq::makeRef<Group>(Node::Traits(), tq::Array::array()),
      tq::Ref<tq::Dictionary>(const_cast<tq::Dictionary*>(&document.unsupported())))));
}

tq::Ref<tq::Dictionary> ownTree(const Node& node) {
  const auto* group = tq::objectCast<Group>(&node);
  if (group == nullptr) return ownTree(*archiveTree(node));
  const auto tree = tq::MutableDictionary::dictionaryWithDictionary(
      *archiveTree(*group->withChildren(tq::Array::array())));
  std::vector<tq::Ref<tq::Object>> labels;
  for (std::size_t i = 0; i < group->count(); ++i) {
    const Node& child = group->child(i);
    labels.push_back(label(child.objectClass().codingName(), child.name()));
  }
  tree->setObject(tq::Array::arrayWithObjects(std::move(labels)), "children");
  return tree;
}

tq::Ref<tq::Dictionary> ownTree(const tq::Dictionary& tree) {
  const auto own = tq::MutableDictionary::dictionaryWithDictionary(tree);
  own->removeObjectForKey(*tq::String::of("root"));
  // A drawing without a title has an empty one, or none.
  if (textIn(tree, "title").empty()) own->removeObjectForKey(*tq::String::of("title"));
  if (const auto* children = tq::objectCast<tq::Array>(tree.objectForKey("children"))) {
    std::vector<tq::Ref<tq::Object>> labels;
    for (const tq::Object& each : *children) {
      const auto* child = tq::objectCast<tq::Dictionary>(&each);
      if (child != nullptr)
        labels.push_back(label(textIn(*child, "_class"), textIn(*child, "name")));
    }
    own->setObject(tq::Array::arrayWithObjects(std::move(labels)), "children");
  }
  return own;
}

std::string digestOf(const tq::Dictionary& tree) {
  return std::string(tq::sha1String_tq(*encoded(tree))->view());
}

}  // namespace tqdoc
