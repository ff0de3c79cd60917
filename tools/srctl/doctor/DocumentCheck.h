#pragma once

#include "SRLib/SRStore.h"

#include <string>

// A look at a document before the agent gets it, with the agent's own parser and schemas. Changes the
// process's current directory to the installed schemas. Any thread; one document at a time.
namespace Srctl::DocumentCheck {

struct Result {
  ServiceRecords::StoreMap stores;  // what the agent will find in the document
  std::string problem;              // why it will find nothing, and what to do; empty when there are stores
};

// The document is UTF-8.
[[nodiscard]] Result Check(const std::string& document);

}  // namespace Srctl::DocumentCheck
