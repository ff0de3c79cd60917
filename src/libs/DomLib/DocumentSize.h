#pragma once

#include <cstddef>

namespace DomLib {

// The largest document that is read, in bytes of UTF-8.
inline constexpr std::size_t kMaximumDocumentBytes = std::size_t{16} << 20;

}  // namespace DomLib
