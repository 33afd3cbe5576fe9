tq_room(comparison
  EditSequence.h
  SnakeLevels.cpp
  TQArrayComparison.h
  TQArrayConsolidator.cpp TQArrayConsolidator.h
  TQArrayCrossReferenceHandler.cpp TQArrayCrossReferenceHandler.h
  TQComparisonArrayChange.cpp TQComparisonArrayChange.h
  TQComparisonItem.cpp TQComparisonItem.h
  detail/MatchedPairs.h
  detail/SnakeLevels.h)
