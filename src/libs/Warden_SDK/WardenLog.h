#pragma once

#include "libs/Warden_SDK/MorvaneWarden.h"

#include <string_view>

// The library's log lines, handed to the function that the program has set. Any thread.
namespace Warden::WardenLog {

inline constexpr int kProgress = 0;
inline constexpr int kFailure = 2;

void SetFunction(MorvaneWardenLogFunction function);

// UTF-8; never a secret.
void Write(int level, std::string_view message);

}  // namespace Warden::WardenLog
