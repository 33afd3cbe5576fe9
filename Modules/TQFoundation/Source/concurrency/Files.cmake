tq_room(concurrency
  ConcurrentMap.cpp ConcurrentMap.h
  Debouncer.cpp Debouncer.h
  TQConcurrentMapOperation.cpp TQConcurrentMapOperation.h
  TQOperation.cpp TQOperation.h
  TQRateLimiter.cpp TQRateLimiter.h
  TQURLOperation.cpp TQURLOperation.h
  TimerBlock.cpp TimerBlock.h
  caches/TQCache.cpp caches/TQCache.h
  caches/TQCacheDeferredCreation.cpp caches/TQCacheDeferredCreation.h
  caches/TQObjectPool.cpp caches/TQObjectPool.h
  caches/TQSingleton.cpp caches/TQSingleton.h
  caches/ValueCache.h
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
