tq_room(spatial
  BreakpointTable.h
  Collectable.h
  LazyPruneTree.h
  RTree.cpp RTree.h
  RTreeIndex.cpp
  RTreeNode.cpp RTreeNode.h
  RTreeSearch.h
  RTreeSplitStrategy.h
  RTreeSplitter.cpp
  detail/RTreeCore.h
  detail/RTreeIndex.h
  detail/RTreeNodeCore.h
  detail/RTreePair.h
  detail/RTreeRange.h
  detail/RTreeSplitter.h)
