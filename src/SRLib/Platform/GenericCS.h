#pragma once

#include "libs/ThreadSafety/ThreadSafety.h"

#include <memory>

// A recursive critical section. Every operation answers false on failure, after a trace record; none throws.
class SR_CAPABILITY("critical section") CGenericCS {
 public:
  virtual ~CGenericCS() = default;

  virtual bool Create() = 0;
  virtual bool Enter() SR_TRY_ACQUIRE(true) = 0;
  virtual bool Leave() SR_RELEASE() = 0;
  virtual bool Delete() = 0;
  // False without a trace record when another thread is inside.
  virtual bool TryEnter() SR_TRY_ACQUIRE(true) = 0;
};

class CGenericCSFactory {
 public:
  virtual ~CGenericCSFactory() = default;
  // A new section, ready for use.
  [[nodiscard]] virtual std::unique_ptr<CGenericCS> ManufactureCriticalSection() = 0;
};

namespace ServiceRecords {

// Inside the section for as long as this object lives, unless it could not be entered.
class SR_SCOPED_CAPABILITY CriticalSectionLock {
 public:
  explicit CriticalSectionLock(CGenericCS& section) SR_ACQUIRE(section) SR_NO_THREAD_SAFETY_ANALYSIS
      : section_(section),
        entered_(section.Enter()) {}
  ~CriticalSectionLock() SR_RELEASE() SR_NO_THREAD_SAFETY_ANALYSIS {
    if (entered_) section_.Leave();
  }
  CriticalSectionLock(const CriticalSectionLock&) = delete;
  CriticalSectionLock& operator=(const CriticalSectionLock&) = delete;

 private:
  CGenericCS& section_;
  const bool entered_;
};

}  // namespace ServiceRecords
