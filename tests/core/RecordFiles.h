#pragma once

namespace TestSupport {

// The files whose names the core's records bear.
inline constexpr char kDocParserFile[] = "SRDocParser.cpp";
inline constexpr char kDomServicesFile[] = "DomServices.cpp";
inline constexpr char kProviderFile[] = "SRProvider.cpp";
inline constexpr char kSSLValidationFile[] = "SSLValidation.cpp";
inline constexpr char kStoreFile[] = "SRStore.cpp";
inline constexpr char kTrustedRequestFile[] = "SRTrustedHTTPRequest.cpp";
inline constexpr char kXMLProviderFile[] = "SRXMLProvider.cpp";

}  // namespace TestSupport
