#pragma once

#include "libs/DomLib/DocumentSize.h"

#include <chrono>
#include <cstddef>

namespace DomLib {

// What a document may cost. A document past any of these has failed.
inline constexpr std::size_t kMaximumNesting = 256;
inline constexpr std::size_t kMaximumEntityExpansions = 1000;
inline constexpr std::size_t kMaximumExpandedBytes = std::size_t{32} << 20;
inline constexpr std::size_t kMaximumAttributes = 1000;    // of one element, those declared for it included
inline constexpr std::size_t kMaximumBlocksOfTag = 20000;  // of memory, for one tag or declaration
inline constexpr std::size_t kMaximumEntityMarkup = std::size_t{64} << 10;
inline constexpr std::size_t kMaximumServiceNesting = 4;
inline constexpr std::size_t kMaximumTextCharacters = 4096;  // of an id, a name or an address of a service
inline constexpr std::size_t kMaximumNamedFileBytes = std::size_t{1} << 20;
inline constexpr std::size_t kMaximumContentModelParts = 1000;
inline constexpr std::size_t kMaximumModelComparisons = 200000000;  // elements times the largest model
inline constexpr std::size_t kMaximumEnumerationCharacters = std::size_t{16} << 10;
inline constexpr std::size_t kMaximumParserMemory = std::size_t{1} << 30;
inline constexpr std::chrono::seconds kMaximumParseTime{10};

}  // namespace DomLib
