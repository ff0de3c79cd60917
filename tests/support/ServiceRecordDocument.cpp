#include "support/ServiceRecordDocument.h"

namespace TestSupport {
namespace {

constexpr char kDeclaration[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
constexpr char kInstance[] = " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"";

std::string Element(const std::string& name, const std::string& content) {
  return "<" + name + ">" + content + "</" + name + ">";
}

std::string Beacons(const std::string& container, const std::vector<std::string>& locations) {
  if (locations.empty()) return {};
  std::string beacons;
  for (const std::string& location : locations) beacons += Element("Beacon", location);
  return Element(container, beacons);
}

std::string Gateways(const std::vector<GatewayText>& gateways) {
  if (gateways.empty()) return {};
  std::string elements;
  for (const GatewayText& gateway : gateways) {
    elements += "<Gateway Name=\"" + gateway.name +
                "\" Edition=\"Enterprise\" Auth=\"Domain\" RewriteMode=\"SG_RW\" Default=\"" +
                (gateway.isDefault ? "true" : "false") + "\">" + Element("Location", gateway.location) +
                "</Gateway>";
  }
  return Element("Gateways", elements);
}

std::string Services(const std::vector<StoreText>& stores, const std::string& attributes) {
  std::string services;
  for (const StoreText& store : stores) {
    services += "<Service" + attributes + " type=\"store\">" + Element("SRID", store.id) +
                Element("Name", store.name) + Element("Address", store.url) + Gateways(store.gateways) +
                Beacons("Internal", store.internalBeacons) + Beacons("External", store.externalBeacons) +
                "</Service>\n";
  }
  return services;
}

}  // namespace

std::string ServiceRecordDocument(const std::vector<StoreText>& stores) {
  return std::string(kDeclaration) + "<Services xmlns=\"urn:morvane:servicerecord\"" + kInstance +
         " xsi:schemaLocation=\"urn:morvane:servicerecord serviceRecord.xsd\">\n" + Services(stores, "") +
         "</Services>\n";
}

std::string DiscoveryDocument(const std::vector<StoreText>& stores) {
  return std::string(kDeclaration) + "<Discovery xmlns=\"urn:morvane:discovery\"" + kInstance +
         " xsi:schemaLocation=\"urn:morvane:discovery discovery\">\n" +
         Services(stores, " xmlns=\"urn:morvane:servicerecord\"") + "</Discovery>\n";
}

}  // namespace TestSupport
