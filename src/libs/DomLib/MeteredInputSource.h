#pragma once

#include "libs/DomLib/ParseMeter.h"

#include <xercesc/sax/InputSource.hpp>
#include <xercesc/util/BinInputStream.hpp>

#include <memory>

namespace DomLib {

// A document as the parser reads it: from time to time, and each time it looks whether a single tag or
// declaration has made too many blocks of memory, because what a tag costs is only seen when it has cost it.
// For one parse.
class MeteredInputSource : public xercesc::InputSource {
 public:
  // All outlive this object; the memory manager makes what the parser owns.
  MeteredInputSource(const xercesc::InputSource& document, ParseMeter& meter, xercesc::MemoryManager& memory);

  // Throws a std::runtime_error, and so does the stream, for too large a tag.
  [[nodiscard]] xercesc::BinInputStream* makeStream() const override;

 private:
  const std::unique_ptr<xercesc::BinInputStream> content_;
  ParseMeter& meter_;
};

}  // namespace DomLib
