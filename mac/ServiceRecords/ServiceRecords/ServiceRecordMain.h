#pragma once

#include <functional>

extern "C" {

// Starts the core: the two libraries' logs, the logging preference, the request and validation factories,
// the provider's parts, the notifications and with them the provider. Main thread, once.
void ServiceRecordInit();

// Handles one opened file: the user's confirmation, the discovery service's, the announcement. `path` is
// UTF-8 and quoted. True when stores were accepted. Blocks in dialogs and network calls; not for the main
// thread.
bool ServiceRecordHandleFTA(const char* path);
}

namespace Agent {

// Posts that the list of stores is another. Any thread.
void AnnounceStores();

// What brings the main client forward after stores were accepted. Set once, on the main thread, before any
// file is handled; called on the main thread.
void SetClientActivation(std::function<void()> bringForward);

}  // namespace Agent
