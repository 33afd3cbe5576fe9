tq_room(concurrency
  caches/Cache.h
  caches/FairSharedLock.cpp
  caches/TQCache.cpp caches/TQCache.h
  caches/TQCacheDeferredCreation.cpp caches/TQCacheDeferredCreation.h
  caches/TQObjectPool.cpp caches/TQObjectPool.h
  caches/TQSingleton.cpp caches/TQSingleton.h
  caches/ValueCache.h
  caches/detail/FairSharedLock.h
  caches/detail/SlottedLock.h
  locks/Atomic.h
  locks/LazyObject.h
  locks/Lockable.h
  locks/ObjectSynchronizer.h
  locks/ReadWriteLock.cpp locks/ReadWriteLock.h
  locks/ResettableLazy.h
  locks/StackNodes.cpp
  locks/TQAtomicStack.cpp locks/TQAtomicStack.h
  locks/TQLazyVar.cpp locks/TQLazyVar.h
  locks/UnfairLock.cpp locks/UnfairLock.h
  locks/detail/StackNodes.h
  locks/detail/TaggedStack.h
  locks/detail/UnfairWord.h
  work/AsynchronousOperation.cpp work/AsynchronousOperation.h
  work/ConcurrentMap.cpp work/ConcurrentMap.h
  work/Debouncer.cpp work/Debouncer.h
  work/TQConcurrentMapOperation.cpp work/TQConcurrentMapOperation.h
  work/TQOperation.cpp work/TQOperation.h
  work/TQRateLimiter.cpp work/TQRateLimiter.h
  work/TQURLOperation.cpp work/TQURLOperation.h
  work/TimerBlock.cpp work/TimerBlock.h)
