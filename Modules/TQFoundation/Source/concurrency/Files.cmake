tq_room(concurrency
  ConcurrentMap.cpp ConcurrentMap.h
  Debouncer.cpp Debouncer.h
  TQCache.cpp TQCache.h
  TQCacheDeferredCreation.cpp TQCacheDeferredCreation.h
  TQConcurrentMapOperation.cpp TQConcurrentMapOperation.h
  TQObjectPool.cpp TQObjectPool.h
  TQOperation.cpp TQOperation.h
  TQRateLimiter.cpp TQRateLimiter.h
  TQSingleton.cpp TQSingleton.h
  TQURLOperation.cpp TQURLOperation.h
  TimerBlock.cpp TimerBlock.h
  ValueCache.h
  locks/Atomic.h
  locks/Lockable.h
  locks/ObjectSynchronizer.h
  locks/ReadWriteLock.h
  locks/ResettableLazy.h
  locks/StackNodes.cpp
  locks/TQAtomicStack.cpp locks/TQAtomicStack.h
  locks/TQLazyVar.cpp locks/TQLazyVar.h
  locks/UnfairLock.h
  locks/UnfairWord.h
  locks/detail/StackNodes.h
  locks/detail/TaggedStack.h)
