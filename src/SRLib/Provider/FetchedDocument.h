#pragma once

#include "SRLib/SRStore.h"

#include <set>
#include <string>

namespace ServiceRecords {

// A discovery document and the store that was asked for it, directly or through a gateway.
struct FetchedDocument {
  std::wstring askedID;
  std::wstring askedURL;
  std::wstring text;
};

// Takes out of `described`, the document's stores, those that it has no say in: a store that the user has
// `removed` since it was asked for, and any on another server than the asked one (scheme, host and port) on
// which the list as `held` has a store, be it the store's place now or the one that the document gives it.
// New stores on servers of their own stay. What is taken out is traced; what lies on another server goes into
// the system log too.
void PassOverStoresOfOthers(const FetchedDocument& document, const StoreMap& held,
                            const std::set<std::wstring>& removed, StoreMap& described);

}  // namespace ServiceRecords
