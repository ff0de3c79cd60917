#pragma once

#include <string>

namespace TestSupport {

// A catalogue whose every text is "message" and its id, with an argument where the real text has one.
[[nodiscard]] std::wstring StubMessage(int id);

}  // namespace TestSupport
