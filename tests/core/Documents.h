#pragma once

#include <cstddef>
#include <string>

namespace TestSupport {

// A service-record document that names its schema.
inline std::wstring ServiceRecord(const std::wstring& services) {
  return L"<Services xmlns=\"urn:morvane:servicerecord\" "
         L"xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
         L"xsi:schemaLocation=\"urn:morvane:servicerecord serviceRecord.xsd\">" +
         services + L"</Services>";
}

// A discovery document that names its schema.
inline std::wstring DiscoveryDocument(const std::wstring& services) {
  return L"<Discovery xmlns=\"urn:morvane:discovery\" "
         L"xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
         L"xsi:schemaLocation=\"urn:morvane:discovery discovery\">" +
         services + L"</Discovery>";
}

// A service at an address of its own.
inline std::wstring ServiceAt(const std::wstring& id, const std::wstring& address,
                              const std::wstring& lists = L"", const std::wstring& attributes = L"") {
  return L"<Service type=\"store\"" + attributes + L"><SRID>" + id + L"</SRID><Name>Name of " + id +
         L"</Name><Address>" + address + L"</Address>" + lists + L"</Service>";
}

// A service; `lists` holds its gateways and beacons, `attributes` whatever stands beside its type.
inline std::wstring Service(const std::wstring& id, const std::wstring& lists = L"",
                            const std::wstring& attributes = L"") {
  return ServiceAt(id, L"https://" + id + L".example/store/discovery", lists, attributes);
}

inline std::wstring InServiceRecordNamespace() {
  return L" xmlns=\"urn:morvane:servicerecord\"";
}

// A gateway that the schema allows.
inline std::wstring GatewayElement(const std::wstring& name, bool isDefault = false) {
  return L"<Gateway Name=\"" + name + L"\" Edition=\"Enterprise\" Auth=\"Domain\" RewriteMode=\"SG_RW\"" +
         (isDefault ? L" Default=\"true\"" : L"") + L"><Location>https://" + name +
         L".example</Location></Gateway>";
}

inline std::wstring Repeated(const std::wstring& text, std::size_t times) {
  std::wstring result;
  result.reserve(text.size() * times);
  for (std::size_t i = 0; i < times; ++i) result += text;
  return result;
}

}  // namespace TestSupport
