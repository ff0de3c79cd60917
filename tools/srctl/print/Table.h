#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace Srctl::Printing {

using Row = std::vector<std::string>;

// Aligned columns. The rows have as many cells as the first; the cells must be fit for a terminal.
void PrintTable(std::ostream& out, const std::vector<Row>& rows);

}  // namespace Srctl::Printing
