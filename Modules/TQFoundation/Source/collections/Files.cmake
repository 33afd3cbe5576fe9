tq_room(collections
  ChildTraversable.h
  Forest.h
  TreeTraversal.h
  detail/StableStack.h)
