// Every public class and one instance of each class template, for layouts.sh.

#include <TQFoundation/TQFoundation.h>

#include <vector>

namespace tq {

enum class LayoutUnit { mm, pt };
template <>
struct RawRepresentable<LayoutUnit> : RawCases<LayoutUnit::mm, LayoutUnit::pt> {};

struct LayoutTree {
  const int& root() const;
  const std::vector<int>& children(const int& node) const;
};

struct LayoutsOfTemplates {
  AnyValueCache<int> anyValueCache;
  Atomic<int> atomic;
  BreakpointTable<double, int> breakpointTable;
  Collectable<int> collectable;
  Forest<LayoutTree> forest;
  LazyPruneTree<LayoutTree, bool (*)(const int&)> lazyPruneTree;
  Multiset<int> multiset;
  Preference<LayoutUnit> preference;
  PriorityQueue<int> priorityQueue;
  Queue<int> queue;
  RTree<int> rTree;
  RTreeNode<int>* rTreeNode;
  RecentsList<int> recentsList;
  RectangularArray<int> rectangularArray;
  Ref<String> ref;
  ResettableLazy<int> resettableLazy;
  RestorableValue<int> restorableValue;
  Rounded<double> rounded;
  Rounder<double> rounder;
  ScopedValue<int> scopedValue;
  Stack<int> stack;
  SubTree<LayoutTree> subTree;
  TQArrayComparison<> arrayComparison;
  TreeTraversal<LayoutTree, TraversalOrder::depthFirst> traversal;
  Weak<Object> weak;
};

}  // namespace tq
