#pragma once

#include "SRLib/DocumentSize.h"

#include <chrono>
#include <cstddef>

// What a document may cost. A document past any of these has failed.
inline constexpr std::size_t kMaximumNesting = 256;
inline constexpr std::size_t kMaximumEntityExpansions = 1000;
inline constexpr std::size_t kMaximumExpandedBytes = std::size_t{32} << 20;
inline constexpr std::size_t kMaximumNamedFileBytes = std::size_t{1} << 20;
inline constexpr std::size_t kMaximumContentModelParts = 1000;
inline constexpr std::size_t kMaximumEnumerationCharacters = std::size_t{16} << 10;
inline constexpr std::size_t kMaximumParserMemory = std::size_t{1} << 30;
inline constexpr std::chrono::seconds kMaximumParseTime{10};
