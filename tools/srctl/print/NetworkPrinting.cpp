#include "print/NetworkPrinting.h"

#include "bus/AgentWatch.h"
#include "libs/Terminal/TerminalText.h"
#include "libs/Wayfinder/Wayfinder.h"
#include "print/JsonOutput.h"
#include "print/NetworkWords.h"
#include "print/Table.h"

#include <array>
#include <ctime>
#include <ostream>

namespace Srctl::Printing {
namespace {

using JsonOutput::Json;
using Kind = AgentEvent::Kind;

// A number without a meaning is of use to whoever is told about it.
std::string LocationText(std::uint64_t location) {
  const NetworkWords::LocationWords words = NetworkWords::OfLocation(location);
  std::string text = words.word.English() + ", " + words.sentence.English();
  if (location > Wayfinder::kPartlyInternal) text += ": " + std::to_string(location);
  return text;
}

const char* YesOrNo(bool value) {
  return value ? "yes" : "no";
}

// ISO 8601 with the offset of local time.
std::string Now() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  ::localtime_r(&now, &local);
  std::array<char, 32> text{};
  std::string time(text.data(), std::strftime(text.data(), text.size(), "%FT%T%z", &local));
  return time.insert(time.size() - 2, ":");
}

std::string NameOf(const AgentEvent& event) {
  switch (event.kind) {
    case Kind::Watching:
      return "watching";
    case Kind::Store:
      return "store";
    case Kind::StoreChanged:
      return "store-" + event.change;
    case Kind::StoresUpdated:
      return "stores-updated";
    case Kind::LocationChanged:
      return "location-changed";
    case Kind::AgentLeft:
      return "agent-left";
    case Kind::AgentCame:
      return "agent-came";
  }
  return "";
}

std::string TextOfStore(const AgentEvent& event) {
  const std::string store =
      "store \"" + Terminal::OneLine(event.storeName) + "\" (" + Terminal::OneLine(event.storeID) + ")";
  if (event.kind == Kind::Store) return "In the list: " + store + ".";
  if (event.change == "default-gateway")
    return "The default gateway of the " + store + " is now \"" + Terminal::OneLine(event.gateway) + "\".";
  if (event.change == "confirmed") return "The " + store + " was confirmed by its discovery service.";
  return "The " + store + " was " + Terminal::OneLine(event.change) + ".";
}

std::string TextOf(const AgentEvent& event) {
  const std::string location = "Location relative to \"" + Terminal::OneLine(event.storeURL) + "\": ";
  switch (event.kind) {
    case Kind::Watching:
      return "Watching the agent.";
    case Kind::Store:
    case Kind::StoreChanged:
      return TextOfStore(event);
    case Kind::StoresUpdated:
      return "The list of stores was updated.";
    case Kind::LocationChanged:
      return location +
             (event.location ? LocationText(*event.location)
                             : "it has changed, but the agent does not tell to what") +
             ".";
    case Kind::AgentLeft:
      return "The agent has left the bus.";
    case Kind::AgentCame:
      return "The agent is on the bus again.";
  }
  return {};
}

void AddLocation(Json& object, const std::string& url, std::uint64_t location) {
  object["url"] = url;
  object["location"] = location;
  object["name"] = NetworkWords::OfLocation(location).name;
}

Json AsJson(const AgentEvent& event) {
  Json object{{"time", Now()}, {"event", NameOf(event)}};
  if (event.kind == Kind::Store || event.kind == Kind::StoreChanged) {
    object.update({{"id", event.storeID}, {"name", event.storeName}, {"url", event.storeURL}});
    if (!event.gateway.empty()) object["gateway"] = event.gateway;
  }
  if (event.kind != Kind::LocationChanged) return object;
  if (event.location) {
    AddLocation(object, event.storeURL, *event.location);
  } else {
    object.update({{"url", event.storeURL}, {"location", nullptr}, {"name", nullptr}});
  }
  return object;
}

}  // namespace

void PrintLocation(std::ostream& out, const std::string& url, std::uint64_t location, Format format) {
  if (format == Format::Json) {
    Json object;
    AddLocation(object, url, location);
    JsonOutput::Print(out, object);
    return;
  }
  out << LocationText(location) << ".\n";
}

void PrintCurrentGateway(std::ostream& out, const CurrentGatewayInfo& gateway, Format format) {
  const char* const authentication = NetworkWords::OfAuthentication(gateway.authentication);
  const char* const edition = NetworkWords::OfEdition(gateway.edition);
  if (format == Format::Json) {
    JsonOutput::Print(out, {{"name", gateway.name},
                            {"url", gateway.url},
                            {"authentication", gateway.authentication},
                            {"authenticationName", authentication},
                            {"edition", gateway.edition},
                            {"editionName", edition}});
    return;
  }
  PrintTable(out, {{"Gateway", Terminal::OneLine(gateway.name)},
                   {"URL", Terminal::OneLine(gateway.url)},
                   {"Authentication", authentication},
                   {"Edition", edition}});
}

void PrintReachability(std::ostream& out, std::uint32_t flags, Format format) {
  const auto has = [flags](std::uint32_t bit) { return (flags & bit) != 0; };
  const bool reachable = has(Wayfinder::kReachable);
  const bool transient = has(Wayfinder::kTransientConnection);
  const bool local = has(Wayfinder::kIsLocalAddress);
  const bool direct = has(Wayfinder::kIsDirect);
  if (format == Format::Json) {
    JsonOutput::Print(out, {{"flags", flags},
                            {"reachable", reachable},
                            {"transient", transient},
                            {"localAddress", local},
                            {"direct", direct}});
    return;
  }
  PrintTable(out, {{"Flags", std::to_string(flags)},
                   {"Network reachable", YesOrNo(reachable)},
                   {"Through a tunnel", YesOrNo(transient)},
                   {"Local address", YesOrNo(local)},
                   {"Direct, without a router", YesOrNo(direct)}});
}

void PrintEvent(std::ostream& out, const AgentEvent& event, Format format) {
  if (format == Format::Json) {
    JsonOutput::PrintLine(out, AsJson(event));
  } else {
    out << Now() << ' ' << TextOf(event) << '\n';
  }
}

}  // namespace Srctl::Printing
