#include "libs/Bus/Result.h"

#include "libs/Bus/SdBus.h"

#include <cerrno>
#include <system_error>

namespace Bus {

Error Error::OfResult(int result) {
  return {-result, "", std::generic_category().message(-result)};
}

Error Error::Failed(std::string text) {
  return {EIO, SD_BUS_ERROR_FAILED, std::move(text)};
}

Error Error::NotSupported(std::string text) {
  return {EOPNOTSUPP, SD_BUS_ERROR_NOT_SUPPORTED, std::move(text)};
}

Error Error::InvalidArguments(std::string text) {
  return {EINVAL, SD_BUS_ERROR_INVALID_ARGS, std::move(text)};
}

Error Error::LimitsExceeded(std::string text) {
  return {ENOBUFS, SD_BUS_ERROR_LIMITS_EXCEEDED, std::move(text)};
}

bool Error::IsForWantOfOwner() const {
  return name == SD_BUS_ERROR_NAME_HAS_NO_OWNER || name == SD_BUS_ERROR_SERVICE_UNKNOWN;
}

bool Error::IsOfUnknownMethod() const {
  return name == SD_BUS_ERROR_UNKNOWN_METHOD;
}

bool Error::IsOfLimits() const {
  return name == SD_BUS_ERROR_LIMITS_EXCEEDED;
}

}  // namespace Bus
