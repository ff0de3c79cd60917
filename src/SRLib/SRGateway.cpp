#include "SRLib/SRGateway.h"

#include <algorithm>
#include <tuple>

namespace ServiceRecords {

bool SRGateway::IsSameThroughout(const SRGateway& other) const {
  const auto fields = [](const SRGateway& gateway) {
    return std::tie(gateway.name_, gateway.location_, gateway.edition_, gateway.authentication_,
                    gateway.agMode_, gateway.trustedByUser_, gateway.trustedByDS_, gateway.default_);
  };
  return fields(*this) == fields(other);
}

bool SRGateway::TrustedButNotInList(const std::list<SRGateway>* list) const {
  return trustedByDS_ && std::find(list->begin(), list->end(), *this) == list->end();
}

}  // namespace ServiceRecords
