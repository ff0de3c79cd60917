#pragma once

#include <memory>

// A recursive critical section. Every operation answers false on failure, after a trace record; none throws.
class CGenericCS {
 public:
  virtual ~CGenericCS() = default;

  virtual bool Create() = 0;
  virtual bool Enter() = 0;
  virtual bool Leave() = 0;
  virtual bool Delete() = 0;
  // False without a trace record when another thread is inside.
  virtual bool TryEnter() = 0;
};

class CGenericCSFactory {
 public:
  virtual ~CGenericCSFactory() = default;
  // A new section, ready for use.
  [[nodiscard]] virtual std::unique_ptr<CGenericCS> ManufactureCriticalSection() = 0;
};

// Inside the section for as long as this object lives, unless it could not be entered.
class CriticalSectionLock {
 public:
  explicit CriticalSectionLock(CGenericCS& section) : section_(section), entered_(section.Enter()) {}
  ~CriticalSectionLock() {
    if (entered_) section_.Leave();
  }
  CriticalSectionLock(const CriticalSectionLock&) = delete;
  CriticalSectionLock& operator=(const CriticalSectionLock&) = delete;

 private:
  CGenericCS& section_;
  const bool entered_;
};
