#include "print/Printing.h"

#include "libs/Terminal/TerminalText.h"
#include "print/JsonOutput.h"
#include "print/Table.h"

#include <algorithm>
#include <ostream>
#include <string>

namespace Srctl::Printing {
namespace {

using JsonOutput::Json;

Json AsJson(const StoreInfo& store) {
  Json gateways = Json::array();
  for (const GatewayInfo& gateway : store.gateways) {
    gateways.push_back({{"name", gateway.name}, {"url", gateway.url}, {"default", gateway.isDefault}});
  }
  return {{"id", store.id},
          {"name", store.name},
          {"url", store.url},
          {"type", store.type},
          {"gateways", gateways}};
}

std::string TypeName(std::uint64_t type) {
  return type == 0 ? "store" : "unknown";
}

std::string DefaultGatewayName(const StoreInfo& store) {
  const auto found = std::find_if(store.gateways.begin(), store.gateways.end(),
                                  [](const auto& gateway) { return gateway.isDefault; });
  return found == store.gateways.end() ? "-" : found->name;
}

}  // namespace

void PrintStores(std::ostream& out, const std::vector<StoreInfo>& stores, Format format) {
  if (format == Format::Json) {
    Json list = Json::array();
    for (const StoreInfo& store : stores) list.push_back(AsJson(store));
    JsonOutput::Print(out, list);
    return;
  }
  if (stores.empty()) {
    out << "There are no stores yet. Open a service-record file to add one: srctl open FILE\n";
    return;
  }
  std::vector<Row> rows{{"ID", "NAME", "URL", "DEFAULT GATEWAY"}};
  for (const StoreInfo& store : stores) {
    rows.push_back({Terminal::OneLine(store.id), Terminal::OneLine(store.name), Terminal::OneLine(store.url),
                    Terminal::OneLine(DefaultGatewayName(store))});
  }
  PrintTable(out, rows);
}

void PrintStore(std::ostream& out, const StoreInfo& store, Format format) {
  if (format == Format::Json) {
    JsonOutput::Print(out, AsJson(store));
    return;
  }
  PrintTable(out, {{"ID", Terminal::OneLine(store.id)},
                   {"Name", Terminal::OneLine(store.name)},
                   {"URL", Terminal::OneLine(store.url)},
                   {"Type", TypeName(store.type)},
                   {"Gateways", store.gateways.empty() ? "none" : std::to_string(store.gateways.size())}});
  if (store.gateways.empty()) return;
  std::vector<Row> rows{{"  GATEWAY", "URL", "DEFAULT"}};
  for (const GatewayInfo& gateway : store.gateways) {
    rows.push_back({"  " + Terminal::OneLine(gateway.name), Terminal::OneLine(gateway.url),
                    gateway.isDefault ? "yes" : "no"});
  }
  out << '\n';
  PrintTable(out, rows);
}

void PrintLogging(std::ostream& out, bool on, Format format) {
  if (format == Format::Json) {
    JsonOutput::Print(out, {{"logging", on}});
  } else {
    out << (on ? "on" : "off") << '\n';
  }
}

}  // namespace Srctl::Printing
