#pragma once

#include "libs/PropertyList/PropertyList.h"

#include <optional>
#include <string>

namespace Dialogs {

// A request of the module (DialogWire.h), understood.
struct DialogRequest {
  std::string dialog;
  PropertyList::Dictionary details;
};

// Blocks until the whole request has come in. Nothing when it ends early, is of another version, asks for an
// unknown dialog, holds no dictionary, or is larger than 32 MiB.
[[nodiscard]] std::optional<DialogRequest> ReadRequest(int input);

}  // namespace Dialogs
