#include "NetworkCommands.h"

#include "bus/AgentWatch.h"
#include "libs/Wayfinder/StoreBeacons.h"
#include "libs/Wayfinder/Wayfinder.h"
#include "print/NetworkPrinting.h"
#include "print/Reports.h"

#include <algorithm>
#include <csignal>
#include <iostream>

namespace Srctl::Commands {
namespace {

// The agent answers for every URL, so that a typing error would go unseen.
bool IsOfNoStore(AgentClient& agent, const std::string& url) {
  const auto stores = agent.AllStores();
  return stores && std::none_of(stores->begin(), stores->end(), [&url](const StoreInfo& store) {
           return Wayfinding::StoreKey(store.url) == Wayfinding::StoreKey(url);
         });
}

}  // namespace

Status Location(const std::string& url, std::optional<std::chrono::seconds> wait, Printing::Format format) {
  return WithAgent([&](AgentClient& agent) {
    const auto location = wait ? agent.DecidedLocationForStore(url, *wait) : agent.LocationForStore(url);
    if (!location) return ReportUnreachable(agent.Problem());
    if (wait && *location == Wayfinder::kDeciding) {
      return Refuse("After " + std::to_string(wait->count()) + (wait->count() == 1 ? " second" : " seconds") +
                    " the location relative to " + Quoted(url) +
                    " is still not decided. Wait longer (--wait=SECONDS), or look for what holds it up: "
                    "srctl doctor");
    }
    Printing::PrintLocation(std::cout, url, *location, format);
    const bool mayBeOfNoStore = *location == Wayfinder::kOutside || *location == Wayfinder::kNone;
    if (!mayBeOfNoStore || !IsOfNoStore(agent, url)) return Status::Done;
    return RefuseForList(agent, "No store has the address " + Quoted(url) + ". Stores: srctl list");
  });
}

Status Gateway(const std::string& url, Printing::Format format) {
  return WithAgent([&](AgentClient& agent) {
    const auto found = agent.CurrentGatewayForStore(url);
    if (!found) return ReportUnreachable(agent.Problem());
    if (found->empty()) {
      return RefuseForList(
          agent, "There is no gateway for " + Quoted(url) +
                     ": no store has that address, or the store has no gateways. Stores: srctl list");
    }
    Printing::PrintCurrentGateway(std::cout, found->front(), format);
    return Status::Done;
  });
}

Status Reachability(Printing::Format format) {
  return WithAgent([&](AgentClient& agent) {
    const auto flags = agent.ReachabilityFlags();
    if (!flags) return ReportUnreachable(agent.Problem());
    Printing::PrintReachability(std::cout, *flags, format);
    return Status::Done;
  });
}

Status Watch(bool initially, Printing::Format format) {
  std::signal(SIGPIPE, SIG_IGN);  // output that nobody takes is told by the stream
  const auto beginning = initially ? AgentWatch::Beginning::TellsPresentState : AgentWatch::Beginning::Silent;
  AgentWatch watch(beginning, [format](const AgentEvent& event) {
    Printing::PrintEvent(std::cout, event, format);
    return !std::cout.flush().fail();
  });
  switch (watch.Run()) {
    case AgentWatch::End::Asked:
      return Status::Done;
    case AgentWatch::End::Unreachable:
      return ReportUnreachable(watch.Problem());
    case AgentWatch::End::NobodyReads:
      break;
  }
  std::cout.setstate(std::ios_base::badbit);  // is told at the end of the program, as for every command
  return Status::Refused;
}

}  // namespace Srctl::Commands
