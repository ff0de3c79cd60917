#include "SRLib/SRBeacon.h"

#include <algorithm>

namespace ServiceRecords {

bool SRBeacon::ConfirmedButNotInList(const std::list<SRBeacon>* list) const {
  return dsConfirmed_ && std::find(list->begin(), list->end(), *this) == list->end();
}

}  // namespace ServiceRecords
