#pragma once

#include "LogOnPrompt.h"

namespace Credential {

// Asks for a log-on in a window: by the dialog program of the plug-in that lies beside this program. What the
// user types comes over a pipe. Blocks until the user has answered. Cancelled, too, when the interruption or
// the end of standard input comes first; both are only polled.
[[nodiscard]] LogOnReply AskInWindow(const LogOnQuestion& question, int interruption);

}  // namespace Credential
