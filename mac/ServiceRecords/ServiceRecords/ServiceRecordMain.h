#pragma once

#include "SRLib/Provider/ListChange.h"
#include "SRLib/Provider/Opening.h"

#include <functional>
#include <vector>

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

// What brings the main client forward after these stores were accepted. Set once, on the main thread, before
// any file is handled; called on the main thread.
using ClientActivation = std::function<void(const std::vector<ServiceRecords::Opening::Store>& accepted,
                                            const Display::Variables& desktop)>;
void SetClientActivation(ClientActivation bringForward);

// What tells other programs of changes of the list. Set once, on the main thread, before the list can change;
// called on the main thread.
using ChangeAnnouncement = std::function<void(const std::vector<ServiceRecords::ListChange>& changes)>;
void SetChangeAnnouncement(ChangeAnnouncement announce);

}  // namespace Agent
