#include "Printing.h"

#include "TerminalText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <ostream>
#include <string>

namespace printing {
namespace {

using Json = nlohmann::ordered_json;
using Row = std::vector<std::string>;

void PrintJson(std::ostream& out, const Json& value) {
  constexpr int kIndentation = 2;
  constexpr bool kOnlyAscii = true;
  out << value.dump(kIndentation, ' ', kOnlyAscii) << '\n';
}

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

// Cells are padded to their column; nothing follows the last one.
void PrintRow(std::ostream& out, const Row& row, const std::vector<std::size_t>& widths) {
  for (std::size_t column = 0; column < row.size(); ++column) {
    out << row[column];
    if (column + 1 == row.size()) break;
    out << std::string(widths[column] - TerminalText::Width(row[column]) + 2, ' ');
  }
  out << '\n';
}

// The cells must be fit for a terminal.
void PrintTable(std::ostream& out, const std::vector<Row>& rows) {
  std::vector<std::size_t> widths(rows.front().size(), 0);
  for (const Row& row : rows) {
    for (std::size_t column = 0; column < row.size(); ++column) {
      widths[column] = std::max(widths[column], TerminalText::Width(row[column]));
    }
  }
  for (const Row& row : rows) PrintRow(out, row, widths);
}

}  // namespace

void PrintStores(std::ostream& out, const std::vector<StoreInfo>& stores, Format format) {
  if (format == Format::Json) {
    Json list = Json::array();
    for (const StoreInfo& store : stores) list.push_back(AsJson(store));
    PrintJson(out, list);
    return;
  }
  if (stores.empty()) {
    out << "There are no stores yet. Open a service-record file to add one: srctl open FILE\n";
    return;
  }
  std::vector<Row> rows{{"ID", "NAME", "URL", "DEFAULT GATEWAY"}};
  for (const StoreInfo& store : stores) {
    rows.push_back({TerminalText::OneLine(store.id), TerminalText::OneLine(store.name),
                    TerminalText::OneLine(store.url), TerminalText::OneLine(DefaultGatewayName(store))});
  }
  PrintTable(out, rows);
}

void PrintStore(std::ostream& out, const StoreInfo& store, Format format) {
  if (format == Format::Json) {
    PrintJson(out, AsJson(store));
    return;
  }
  PrintTable(out, {{"ID", TerminalText::OneLine(store.id)},
                   {"Name", TerminalText::OneLine(store.name)},
                   {"URL", TerminalText::OneLine(store.url)},
                   {"Type", TypeName(store.type)},
                   {"Gateways", store.gateways.empty() ? "none" : std::to_string(store.gateways.size())}});
  if (store.gateways.empty()) return;
  std::vector<Row> rows{{"  GATEWAY", "URL", "DEFAULT"}};
  for (const GatewayInfo& gateway : store.gateways) {
    rows.push_back({"  " + TerminalText::OneLine(gateway.name), TerminalText::OneLine(gateway.url),
                    gateway.isDefault ? "yes" : "no"});
  }
  out << '\n';
  PrintTable(out, rows);
}

void PrintLogging(std::ostream& out, bool on, Format format) {
  if (format == Format::Json) {
    PrintJson(out, {{"logging", on}});
  } else {
    out << (on ? "on" : "off") << '\n';
  }
}

}  // namespace printing
