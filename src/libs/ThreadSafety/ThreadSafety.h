#pragma once

#include <mutex>

namespace ThreadSafety {

// Which lock must be held, said to the compiler: clang checks it (scripts/lint), others pass over it.
#if defined(__clang__)
#define SR_THREAD_SAFETY(attribute) __attribute__((attribute))
#else
#define SR_THREAD_SAFETY(attribute)
#endif

// Of a class: a lock, and what holds one as long as it lives.
#define SR_CAPABILITY(name) SR_THREAD_SAFETY(capability(name))
#define SR_SCOPED_CAPABILITY SR_THREAD_SAFETY(scoped_lockable)
// Of a member: only touched with the lock.
#define SR_GUARDED_BY(lock) SR_THREAD_SAFETY(guarded_by(lock))
// Of a function: called with the lock, called without it, takes it, lets it go.
#define SR_REQUIRES(...) SR_THREAD_SAFETY(requires_capability(__VA_ARGS__))
#define SR_EXCLUDES(...) SR_THREAD_SAFETY(locks_excluded(__VA_ARGS__))
#define SR_ACQUIRE(...) SR_THREAD_SAFETY(acquire_capability(__VA_ARGS__))
#define SR_RELEASE(...) SR_THREAD_SAFETY(release_capability(__VA_ARGS__))
#define SR_TRY_ACQUIRE(...) SR_THREAD_SAFETY(try_acquire_capability(__VA_ARGS__))
// Of a function whose locking is beyond the check.
#define SR_NO_THREAD_SAFETY_ANALYSIS SR_THREAD_SAFETY(no_thread_safety_analysis)

// A mutex of the standard library of which the compiler knows; waits on it are those of
// std::condition_variable_any.
template <class StandardMutex>
class SR_CAPABILITY("mutex") KnownMutex {
 public:
  KnownMutex() = default;
  KnownMutex(const KnownMutex&) = delete;
  KnownMutex& operator=(const KnownMutex&) = delete;

  void lock() SR_ACQUIRE() { mutex_.lock(); }
  void unlock() SR_RELEASE() { mutex_.unlock(); }

 private:
  StandardMutex mutex_;
};

using Mutex = KnownMutex<std::mutex>;
using RecursiveMutex = KnownMutex<std::recursive_mutex>;

// Holds one as long as it lives.
template <class HeldMutex>
class SR_SCOPED_CAPABILITY MutexLock {
 public:
  explicit MutexLock(HeldMutex& mutex) SR_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
  ~MutexLock() SR_RELEASE() { mutex_.unlock(); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  HeldMutex& mutex_;
};

}  // namespace ThreadSafety
