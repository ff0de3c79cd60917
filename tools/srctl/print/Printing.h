#pragma once

#include "bus/StoreInfo.h"

#include <iosfwd>
#include <vector>

// What srctl prints: aligned text for people, JSON for programs. The text never carries a control character
// of a document to the terminal; JSON is ASCII throughout.
namespace Srctl::Printing {

// JsonLines: what else is told in one object at the end is told in a line for each part, as soon as it is
// known.
enum class Format { Text, Json, JsonLines };

void PrintStores(std::ostream& out, const std::vector<StoreInfo>& stores, Format format);
void PrintStore(std::ostream& out, const StoreInfo& store, Format format);
void PrintLogging(std::ostream& out, bool on, Format format);

}  // namespace Srctl::Printing
