#include <TQFoundation/concurrency/locks/ReadWriteLock.h>

tq::ReadWriteLock::~ReadWriteLock() = default;
