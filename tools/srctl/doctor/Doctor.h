#pragma once

#include "Commands.h"

namespace commands {

// Looks at everything that the stores need, and prints what it finds as it finds it (as a whole in JSON).
// Refused when something is wrong.
[[nodiscard]] Status Doctor(printing::Format format);

}  // namespace commands
