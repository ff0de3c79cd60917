#pragma once

#include "doctor/Finding.h"
#include "doctor/StoreChecks.h"

#include <vector>

namespace Srctl::StoreChecks {

// Looks at the stores side by side, as many at once as a machine bears. Reports on the calling thread, store
// by store in their order, each as a whole; one store alone as it goes. Standard error tells how far it has
// come, where it is a terminal.
void CheckStores(const std::vector<Situation>& stores, const FindingReport& report);

}  // namespace Srctl::StoreChecks
