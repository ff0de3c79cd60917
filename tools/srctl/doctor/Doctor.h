#pragma once

#include "Commands.h"

#include <string>

namespace Srctl::Commands {

// Looks at everything that the stores need, and prints what it finds as it finds it (as a whole in JSON).
// Refused when something is wrong.
[[nodiscard]] Status Doctor(Printing::Format format);
// The same of one store of the list alone.
[[nodiscard]] Status DoctorOfStore(const std::string& id, Printing::Format format);
// Of the stores of a service-record file, or of the server at an address, which need not be in the list.
[[nodiscard]] Status DoctorOfRecord(const std::string& place, Printing::Format format);

}  // namespace Srctl::Commands
