tq_room(concurrency
  Atomic.h
  Lockable.h
  ObjectSynchronizer.h
  ReadWriteLock.h
  StackNodes.cpp
  TQAtomicStack.cpp TQAtomicStack.h
  UnfairLock.h
  UnfairWord.h)
