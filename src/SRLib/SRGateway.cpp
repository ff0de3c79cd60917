#include "SRLib/SRGateway.h"

#include <algorithm>

namespace ServiceRecords {

bool SRGateway::TrustedButNotInList(const std::list<SRGateway>* list) const {
  return trustedByDS_ && std::find(list->begin(), list->end(), *this) == list->end();
}

}  // namespace ServiceRecords
