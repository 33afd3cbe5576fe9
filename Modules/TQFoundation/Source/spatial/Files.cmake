tq_room(spatial
  LazyPruneTree.h
  RTree.cpp RTree.h
  RTreeNode.cpp RTreeNode.h
  RTreeSplitStrategy.h
  RTreeSplitter.cpp
  detail/RTreeCore.h
  detail/RTreeNodeCore.h
  detail/RTreePair.h
  detail/RTreeSplitter.h)
