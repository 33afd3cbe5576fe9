#include "Model/NodePairs.h"

#include <deque>
#include <functional>
#include <string_view>

#include "Model/Text.h"

namespace tqdoc {
namespace {

/// Hashes the added values in order.
class Mix {
 public:
  Mix& add(std::uint64_t bits) noexcept {
    value_ = (value_ ^ bits) * 0x9E3779B97F4A7C15;
    value_ ^= value_ >> 29;
    return *this;
  }
  Mix& add(std::string_view bytes) noexcept { return add(std::hash<std::string_view>{}(bytes)); }
  Mix& add(std::span<const double> numbers) noexcept {
    return add({reinterpret_cast<const char*>(numbers.data()), numbers.size_bytes()});
  }
  [[nodiscard]] std::uint64_t value() const noexcept { return value_; }

 private:
  std::uint64_t value_ = 1;
};

const Node* asNode(const tq::Object& object) { return static_cast<const Node*>(&object); }

std::vector<const Node*> childrenOf(const Node& node) {
  std::vector<const Node*> children;
  if (const auto* group = tq::objectCast<Group>(&node)) {
    for (const tq::Object& child : group->children()) children.push_back(asNode(child));
  }
  return children;
}

/// Collects `node` and its descendants that are not in `paired`, parents first.
template <class Paired>
void collectUnpaired(const Node& node, const Paired& paired, std::vector<const Node*>& unpaired) {
  if (!paired.contains(&node)) unpaired.push_back(&node);
  for (const Node* child : childrenOf(node)) collectUnpaired(*child, paired, unpaired);
}

}  // namespace

NodePairs::NodePairs(const Document& oldDocument, const Document& newDocument) {
  const Node& oldRoot = oldDocument.root();
  const Node& newRoot = newDocument.root();
  digest(oldRoot);
  digest(newRoot);
  pair(oldRoot, newRoot);
  pairChildren(oldRoot, newRoot);

  Nodes olds;
  Nodes news;
  collectUnpaired(oldRoot, newOf_, olds);
  collectUnpaired(newRoot, oldOf_, news);
  pairByKey(olds, news, true);
  pairByKey(olds, news, false);
  for (const Node* node : olds) {
    if (const auto found = newOf_.find(node); found != newOf_.end()) {
      pairChildren(*node, *found->second);
    }
  }
}

bool NodePairs::areSame(const Node& oldNode, const Node& newNode) const {
  const auto found = newOf_.find(&oldNode);
  return found != newOf_.end() && found->second == &newNode;
}

std::uint64_t NodePairs::digest(const Node& node) {
  const Node::Traits& traits = node.traits();
  const tq::AffineTransform& t = traits.transform;
  const double numbers[] = {t.a, t.b, t.c, t.d, t.tx, t.ty, traits.opacity};
  Mix mix;
  mix.add(node.objectClass().name()).add(numbers).add(traits.hidden ? 1 : 0);
  mix.add(static_cast<std::uint64_t>(traits.blend)).add(traits.isolated ? 1 : 0);
  if (traits.clip) mix.add(digest(*traits.clip)).add(traits.clip->name());
  if (traits.mask) mix.add(digest(*traits.mask)).add(traits.mask->name());
  if (traits.filter) mix.add(traits.filter->hash());
  for (const Node* child : childrenOf(node)) mix.add(digest(*child)).add(child->name());
  if (const auto* shape = tq::objectCast<Shape>(&node)) {
    mix.add(shape->path().steps()).add(shape->path().coordinates());
    for (const auto [key, value] : shape->style()) mix.add(key.hash()).add(value.hash());
  } else if (const auto* picture = tq::objectCast<Picture>(&node)) {
    mix.add(picture->bytes().hash()).add(picture->mediaType());
  } else if (const auto* text = tq::objectCast<Text>(&node)) {
    const double position[] = {text->position().x, text->position().y};
    mix.add(text->string()).add(position).add(text->style().hash()).add(text->spans().hash());
  }
  return digests_[&node] = mix.value();
}

bool NodePairs::canPair(const Node& oldNode, const Node& newNode) const {
  return &oldNode.objectClass() == &newNode.objectClass() &&
         (oldNode.name() == newNode.name() || oldNode.name().empty() || newNode.name().empty()) &&
         !newOf_.contains(&oldNode) && !oldOf_.contains(&newNode);
}

void NodePairs::pair(const Node& oldNode, const Node& newNode) {
  newOf_.emplace(&oldNode, &newNode);
  oldOf_.emplace(&newNode, &oldNode);
}

/// Pairs nodes with the same name, then nodes with the same content, in order.
void NodePairs::pairByKey(std::span<const Node* const> olds, std::span<const Node* const> news,
                          bool byName) {
  const auto key = [&](const Node& node) {
    return byName ? Mix().add(node.name()).value() : digests_.at(&node);
  };
  std::unordered_map<std::uint64_t, std::deque<const Node*>> waiting;
  for (const Node* node : news) {
    if (!oldOf_.contains(node) && !(byName && node->name().empty())) {
      waiting[key(*node)].push_back(node);
    }
  }
  for (const Node* node : olds) {
    if (newOf_.contains(node) || (byName && node->name().empty())) continue;
    const auto found = waiting.find(key(*node));
    if (found == waiting.end() || found->second.empty()) continue;
    if (!canPair(*node, *found->second.front())) continue;
    pair(*node, *found->second.front());
    found->second.pop_front();
  }
}

/// Pairs nodes that are first, or directly follow a pair, in both versions.
void NodePairs::pairNeighbours(std::span<const Node* const> olds,
                               std::span<const Node* const> news) {
  std::unordered_map<const Node*, std::size_t> places;
  for (const Node* node : news) places.emplace(node, places.size());
  std::size_t next = 0;
  for (const Node* node : olds) {
    const auto found = newOf_.find(node);
    if (found != newOf_.end()) {
      const auto place = places.find(found->second);
      if (place != places.end()) next = place->second + 1;
    } else if (next < news.size() && canPair(*node, *news[next])) {
      pair(*node, *news[next++]);
    }
  }
}

void NodePairs::pairChildren(const Node& oldNode, const Node& newNode) {
  const Node::Traits& x = oldNode.traits();
  const Node::Traits& y = newNode.traits();
  for (const auto& [a, b] : {std::pair(x.clip.get(), y.clip.get()), {x.mask.get(), y.mask.get()}}) {
    if (a == nullptr || b == nullptr) continue;
    pair(*a, *b);
    pairChildren(*a, *b);
  }
  const Nodes olds = childrenOf(oldNode);
  const Nodes news = childrenOf(newNode);
  pairByKey(olds, news, true);
  pairByKey(olds, news, false);
  pairNeighbours(olds, news);
  for (const Node* child : olds) {
    const auto found = newOf_.find(child);
    if (found != newOf_.end()) pairChildren(*child, *found->second);
  }
}

}  // namespace tqdoc
