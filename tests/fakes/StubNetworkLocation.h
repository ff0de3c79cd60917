#pragma once

#include <cstdint>
#include <string>

namespace testsupport {

// The answer for every store from now on; 2 (outside) until it is set.
void AnswerLocationWith(std::uint32_t location);
// The answer for the store at this URL, until the one for every store is set.
void AnswerLocationWith(std::uint32_t location, const std::wstring& storeURL);

}  // namespace testsupport
