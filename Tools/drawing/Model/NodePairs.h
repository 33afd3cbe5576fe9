#pragma once

/// @file NodePairs.h
/// Pairs the nodes of two versions of a drawing.

#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

#include "Model/Document.h"

namespace tqdoc {

/// Pairs of nodes of the same kind; each node is in at most one pair. Among the children of paired
/// groups, nodes with the same name are paired first, then nodes with equal content, then nodes
/// that follow a pair in both versions. The remaining nodes are paired anywhere in the drawing, by
/// name or content. Nodes with different names are never paired. Keeps pointers: both documents
/// must outlive it.
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

  std::unordered_map<const Node*, std::uint64_t> digests_;      // of everything but the name
  std::unordered_map<const Node*, const Node*> newOf_, oldOf_;  // in both directions
};

}  // namespace tqdoc
