#pragma once

#include "print/Printing.h"

#include <cstdint>
#include <iosfwd>
#include <string>

namespace Srctl {
struct AgentEvent;
}

// What srctl prints about the network, in the ways of Printing.h.
namespace Srctl::Printing {

void PrintLocation(std::ostream& out, const std::string& url, std::uint64_t location, Format format);
void PrintCurrentGateway(std::ostream& out, const CurrentGatewayInfo& gateway, Format format);
void PrintReachability(std::ostream& out, std::uint32_t flags, Format format);

// One line, with the time at which it is printed.
void PrintEvent(std::ostream& out, const AgentEvent& event, Format format);

}  // namespace Srctl::Printing
