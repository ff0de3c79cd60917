#pragma once

namespace Srctl {

// Whether srctl runs on a graphical desktop, as the agent's dialogs tell it.
[[nodiscard]] bool HasDesktop();

}  // namespace Srctl
