#pragma once

#include "request/DialogRequest.h"

namespace Dialogs {

class Conversation;

// Shows the dialog that is asked for in its window, until it is answered or no longer wanted. The toolkit is
// initialised.
void Show(const DialogRequest& request, Conversation& conversation);

}  // namespace Dialogs
