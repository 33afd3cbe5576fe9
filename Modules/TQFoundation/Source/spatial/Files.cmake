tq_room(spatial
  BreakpointTable.h
  Collectable.h
  LazyPruneTree.h
  RTree.cpp RTree.h
  RTreeNode.cpp RTreeNode.h
  RTreeSplitStrategy.h
  RTreeSplitter.cpp
  detail/RTreeCore.h
  detail/RTreeNodeCore.h
  detail/RTreePair.h
  detail/RTreeRange.h
  detail/RTreeSplitter.h)
