tq_room(concurrency
  Atomic.h
  ConcurrentMap.cpp ConcurrentMap.h
  Debouncer.cpp Debouncer.h
  Lockable.h
  ObjectSynchronizer.h
  ReadWriteLock.h
  ResettableLazy.h
  StackNodes.cpp
  TQAtomicStack.cpp TQAtomicStack.h
  TQCache.cpp TQCache.h
  TQCacheDeferredCreation.cpp TQCacheDeferredCreation.h
  TQConcurrentMapOperation.cpp TQConcurrentMapOperation.h
  TQLazyVar.cpp TQLazyVar.h
  TQObjectPool.cpp TQObjectPool.h
  TQOperation.cpp TQOperation.h
  TQRateLimiter.cpp TQRateLimiter.h
  TQSingleton.cpp TQSingleton.h
  TQURLOperation.cpp TQURLOperation.h
  TimerBlock.cpp TimerBlock.h
  UnfairLock.h
  UnfairWord.h
  ValueCache.h)
