#pragma once

#include "SRLib/Platform/IServiceRecordsNotifications.h"
#include "libs/PropertyList/PropertyList.h"

#include <string>

// The optional keys of a dialog's details: what a person needs besides the arguments of the notification
// interface. Each adds what this thread's opening and the subject of its dialogs tell, which may be nothing.
namespace Agent::FurtherKeys {

// OpeningID, DocumentPath.
void AddOpening(PropertyList::Dictionary& details);
// StoreHost, VerifiedHost, and each with ASCII behind it where that differs; VerifiedServer.
void AddTrust(PropertyList::Dictionary& details, const std::wstring& storeURL);
// DefaultGatewayWithoutURL, out of the argument, only for a default gateway that has no address.
void AddDefaultGateway(PropertyList::Dictionary& details, const ServiceRecords::GatewayLabel& defaultGateway);
// HeldStore, NewStore.
void AddReplacement(PropertyList::Dictionary& details);
// StoreName, Server, ErrorReason, ErrorDetails.
void AddProblem(PropertyList::Dictionary& details);

}  // namespace Agent::FurtherKeys
