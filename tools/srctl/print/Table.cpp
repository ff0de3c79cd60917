#include "print/Table.h"

#include "libs/Terminal/TerminalText.h"

#include <algorithm>
#include <ostream>

namespace Srctl::Printing {
namespace {

// Cells are padded to their column; nothing follows the last one.
void PrintRow(std::ostream& out, const Row& row, const std::vector<std::size_t>& widths) {
  for (std::size_t column = 0; column < row.size(); ++column) {
    out << row[column];
    if (column + 1 == row.size()) break;
    out << std::string(widths[column] - Terminal::Width(row[column]) + 2, ' ');
  }
  out << '\n';
}

}  // namespace

void PrintTable(std::ostream& out, const std::vector<Row>& rows) {
  std::vector<std::size_t> widths(rows.front().size(), 0);
  for (const Row& row : rows) {
    for (std::size_t column = 0; column < row.size(); ++column) {
      widths[column] = std::max(widths[column], Terminal::Width(row[column]));
    }
  }
  for (const Row& row : rows) PrintRow(out, row, widths);
}

}  // namespace Srctl::Printing
