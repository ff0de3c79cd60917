#pragma once

#include "SRLib/Platform/GenericCS.h"

#include <pthread.h>

// A recursive POSIX mutex as a critical section.
class CMacCS : public CGenericCS {
 public:
  CMacCS();
  ~CMacCS() override;
  CMacCS(const CMacCS&) = delete;
  CMacCS& operator=(const CMacCS&) = delete;

  bool Create() override;
  bool Enter() override;
  bool Leave() override;
  bool Delete() override;
  bool TryEnter() override;

 private:
  bool created_ = false;
  pthread_mutex_t mutex_{};
};

class CMacCSFactory : public CGenericCSFactory {
 public:
  [[nodiscard]] std::unique_ptr<CGenericCS> ManufactureCriticalSection() override;
};
