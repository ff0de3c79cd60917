#pragma once

#include "SRLib/SRStore.h"

#include <cstddef>
#include <optional>
#include <string>

namespace ServiceRecords {

// What the list of stores may hold.
inline constexpr std::size_t kMaximumStores = 10000;
inline constexpr std::size_t kMaximumGateways = 500;  // of a store
inline constexpr std::size_t kMaximumBeacons = 500;   // of a kind, of a store
inline constexpr std::size_t kMaximumListBytes = std::size_t{32} << 20;

// The bytes that the store takes in an answer on the bus that lists the stores: its texts in UTF-8, and the
// most that the names and the framing of their entries can take.
[[nodiscard]] std::size_t SizeInList(const SRStore& store);

// The bound that the list would pass if it took these stores, new ones and others of ids that it holds, in
// words for the log. Nothing when it would pass none: what was restored may lie past a bound, and stays there
// as long as it does not grow.
[[nodiscard]] std::optional<std::string> BoundPassed(const StoreMap& held, const StoreMap& changed);
// The same for a document's stores that have yet to be merged into the list.
[[nodiscard]] std::optional<std::string> BoundPassedByMerge(const StoreMap& held, const StoreMap& incoming,
                                                            bool dsTrusted);

}  // namespace ServiceRecords
