#pragma once

#include "libs/SRUIProtocol/SRUIProtocol.h"

// The library of the view of a store, which the module loads for clients that have a toolkit themselves.
extern "C" {

// A GtkWidget with a floating reference that tells what the details of addStore hold of a store, its name
// included. NULL when GTK is not initialised in this process, or the text is no dictionary. On the toolkit's
// thread.
SRUI_EXPORT void* ServiceRecordUIStoreDetailsView(const char* details);
}
