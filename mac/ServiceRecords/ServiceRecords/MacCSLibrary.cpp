#include "MacCSLibrary.h"

#include "libs/Trace/Trace.h"

#include <cerrno>
#include <system_error>

namespace {

std::string ErrorText(int error) {
  return std::generic_category().message(error);
}

}  // namespace

CMacCS::CMacCS() {
  CMacCS::Create();
}

CMacCS::~CMacCS() {
  CMacCS::Delete();
}

bool CMacCS::Create() {
  if (created_) return true;
  pthread_mutexattr_t attribute;
  int error = ::pthread_mutexattr_init(&attribute);
  if (error == 0) {
    error = ::pthread_mutexattr_settype(&attribute, PTHREAD_MUTEX_RECURSIVE);
    if (error == 0) error = ::pthread_mutex_init(&mutex_, &attribute);
    ::pthread_mutexattr_destroy(&attribute);
  }
  if (error != 0) {
    SR_TRACE(2) << "virtual bool CMacCS::Create()"
                << " failed creating mutex: " << ErrorText(error);
    return false;
  }
  created_ = true;
  return true;
}

bool CMacCS::Enter() {
  if (!created_) {
    SR_TRACE(2) << "virtual bool CMacCS::Enter()"
                << " no mutex";
    return false;
  }
  const int error = ::pthread_mutex_lock(&mutex_);
  if (error == 0) return true;
  SR_TRACE(2) << "virtual bool CMacCS::Enter()"
              << " failed locking mutex: " << ErrorText(error);
  return false;
}

bool CMacCS::Leave() {
  if (!created_) {
    SR_TRACE(2) << "virtual bool CMacCS::Leave()"
                << " no mutex";
    return false;
  }
  const int error = ::pthread_mutex_unlock(&mutex_);
  if (error == 0) return true;
  SR_TRACE(2) << "virtual bool CMacCS::Leave()"
              << " failed unlocking mutex: " << ErrorText(error);
  return false;
}

bool CMacCS::TryEnter() {
  if (!created_) {
    SR_TRACE(2) << "virtual bool CMacCS::TryEnter()"
                << " no mutex";
    return false;
  }
  const int error = ::pthread_mutex_trylock(&mutex_);
  if (error == 0) return true;
  if (error != EBUSY) {
    SR_TRACE(2) << "virtual bool CMacCS::TryEnter()"
                << " mutex trylock: " << ErrorText(error);
  }
  return false;
}

bool CMacCS::Delete() {
  if (!created_) return false;
  const int error = ::pthread_mutex_destroy(&mutex_);
  created_ = false;
  if (error == 0) return true;
  SR_TRACE(2) << "virtual bool CMacCS::Delete()"
              << " failed destroying mutex: " << ErrorText(error);
  return false;
}

std::unique_ptr<CGenericCS> CMacCSFactory::ManufactureCriticalSection() {
  return std::make_unique<CMacCS>();
}
