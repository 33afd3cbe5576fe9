tq_room(comparison
  EditSequence.cpp EditSequence.h
  SnakeLevels.cpp
  TQArrayComparison.h
  TQArrayConsolidator.cpp TQArrayConsolidator.h
  TQArrayCrossReferenceHandler.cpp TQArrayCrossReferenceHandler.h
  TQComparisonArrayChange.cpp TQComparisonArrayChange.h
  TQComparisonItem.cpp TQComparisonItem.h
  TQRangeMap.cpp TQRangeMap.h
  TQSortableTreeItem.cpp TQSortableTreeItem.h
  TQTreeComparison.cpp TQTreeComparison.h
  detail/MatchedPairs.h
  detail/SnakeLevels.h)
