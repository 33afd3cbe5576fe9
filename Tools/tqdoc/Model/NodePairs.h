#pragma once

/// @file NodePairs.h
/// Which nodes of two versions of a drawing are the same ones.

#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

#include "Model/Document.h"

namespace tqdoc {

/// Pairs of nodes of one kind, each node in one pair at the most. Among the children of paired
/// groups those of one name make a pair, then those of equal content, then those that follow a pair
/// on both sides. What is left is paired with what is left anywhere, by name or by content. Two
/// names that differ never make a pair. Lends the nodes: both documents have to stay.
class NodePairs {
 public:
  NodePairs(const Document& oldDocument, const Document& newDocument);

  [[nodiscard]] bool areSame(const Node& oldNode, const Node& newNode) const;

 private:
  using Nodes = std::vector<const Node*>;

  std::uint64_t digest(const Node& node);
  [[nodiscard]] bool canPair(const Node& oldNode, const Node& newNode) const;
  void pair(const Node& oldNode, const Node& newNode);
  void pairByKey(std::span<const Node* const> olds, std::span<const Node* const> news, bool byName);
  void pairNeighbours(std::span<const Node* const> olds, std::span<const Node* const> news);
  void pairChildren(const Node& oldNode, const Node& newNode);

  std::unordered_map<const Node*, std::uint64_t> digests_;      // of all but the name
  std::unordered_map<const Node*, const Node*> newOf_, oldOf_;  // each way round
};

}  // namespace tqdoc
