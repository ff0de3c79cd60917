#pragma once

#include "request/DialogRequest.h"

class Conversation;

// The dialogs of the program, each with its window.
namespace Dialogs {

// Shows the one that is asked for, until it is answered or no longer wanted. The toolkit is initialised.
void Show(const DialogRequest& request, Conversation& conversation);

}  // namespace Dialogs
