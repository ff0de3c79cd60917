#pragma once

#include "Commands.h"

#include <string>

namespace Srctl::Commands {

// Looks at everything that the stores need, and prints what it finds as it finds it (as a whole in JSON).
// Refused when something is wrong.
[[nodiscard]] Status Doctor(Printing::Format format);
// The same of one store of the list alone.
[[nodiscard]] Status DoctorOfStore(const std::string& id, Printing::Format format);

}  // namespace Srctl::Commands
