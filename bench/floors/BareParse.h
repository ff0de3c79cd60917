#pragma once

#include <string>

namespace Bench {

// Parses the service-record document with the XML library alone: with the same schema and switches as the
// agent, and without its bounds. The library is initialised, the schema in the current directory. Throws
// std::runtime_error when the document is not valid.
void BareParse(const std::string& utf8);

}  // namespace Bench
