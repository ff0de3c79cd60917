#pragma once

namespace DomLib {

// One reference on the XML library for as long as it lives. The library counts its initialisations but does
// not guard the count, so all of them go through one process-wide lock. Throws the library's XMLException
// when the library cannot be initialised. Any thread.
class XercesPlatform {
 public:
  XercesPlatform();
  // An exception from the library ends the process.
  ~XercesPlatform();
  XercesPlatform(const XercesPlatform&) = delete;
  XercesPlatform& operator=(const XercesPlatform&) = delete;
};

}  // namespace DomLib
