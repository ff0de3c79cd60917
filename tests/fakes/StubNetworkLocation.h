#pragma once

#include <cstdint>

namespace testsupport {

// The answer for every store from now on; 2 (outside) until it is set.
void AnswerLocationWith(std::uint32_t location);

}  // namespace testsupport
