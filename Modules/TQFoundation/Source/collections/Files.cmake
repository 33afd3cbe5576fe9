tq_room(collections
  ArrayConveniences.cpp ArrayConveniences.h
  BinarySearch.h
  ChildTraversable.h
  Forest.h
  Multiset.h
  NearestNeighbour.h
  Queue.h
  RecentsList.h
  RectangularArray.h
  RestorableValue.h
  Stack.h
  TreeTraversal.h
  detail/StableStack.h
  detail/Strided.h)
